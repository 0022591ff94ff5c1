#include "Canvas.h"

namespace clmctl {

std::string PaddedRight(const std::string& text, unsigned width) {
  return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

std::string PaddedLeft(const std::string& text, unsigned width) {
  return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

std::string Cut(const std::string& text, unsigned width) { return text.substr(0, width); }

std::string Coloured(const std::string& text, std::string_view code, const Canvas& canvas) {
  return canvas.colours ? "\x1b[" + std::string(code) + "m" + text + "\x1b[0m" : text;
}

std::string CountText(unsigned count, const std::string& lastTime) {
  if (count == 0) return "waiting for the first indication";
  return std::to_string(count) + (count == 1 ? " indication" : " indications") + ", last at " + lastTime;
}

std::vector<std::string> TableHead(const std::string& title, const std::string& status, const std::string& header,
                                   const Canvas& canvas) {
  return {Coloured(Cut(title, canvas.columns), "1", canvas), Cut(status, canvas.columns), "",
          Coloured(Cut(header, canvas.columns), "4", canvas)};
}

}  // namespace clmctl
