#include "TableHead.h"

namespace clmctl {

std::string CountText(unsigned count, const std::string& lastTime) {
  if (count == 0) return "waiting for the first indication";
  return Counted(count, "indication") + ", last at " + lastTime;
}

std::vector<std::string> TableHead(const std::string& title, const std::string& status, const std::string& header,
                                   const Screen& screen) {
  return {Coloured(Cut(title, screen.columns), "1", screen), Cut(status, screen.columns), "",
          Coloured(Cut(header, screen.columns), "4", screen)};
}

}  // namespace clmctl
