#include "Screen.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace clmctl {
namespace {

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// @return bytes of the printable UTF-8 character at the beginning of @p text; 0 when there is none
std::size_t PrintableLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return first >= 0x20 && first != 0x7F ? 1 : 0;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  if (!std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length), IsContinuation)) return 0;
  const auto second = static_cast<unsigned char>(text[1]);
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool surrogate = first == 0xED && second >= 0xA0;
  const bool beyond = first == 0xF4 && second >= 0x90;
  const bool control = first == 0xC2 && second < 0xA0;
  return overlong || surrogate || beyond || control ? 0 : length;
}

}  // namespace

Screen CurrentScreen() {
  Screen screen;
  std::setlocale(LC_CTYPE, "");
  screen.utf8 = std::string_view(nl_langinfo(CODESET)) == "UTF-8";
  if (isatty(STDOUT_FILENO) == 0) return screen;
  screen.columns = 80;
  screen.rows = 24;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 && size.ws_row != 0) {
    screen.columns = size.ws_col;
    screen.rows = size.ws_row;
  }
  const char* const noColour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  screen.colours =
      (noColour == nullptr || *noColour == '\0') && terminal != nullptr && std::string_view(terminal) != "dumb";
  return screen;
}

std::string Printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t length = PrintableLength(text);
    if (length == 0) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(text[0])));
      shown += escaped;
    } else {
      shown += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
}

std::size_t Width(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return !IsContinuation(byte); }));
}

std::string LeftAligned(std::string text, std::size_t width) {
  const std::size_t taken = Width(text);
  return taken < width ? text + std::string(width - taken, ' ') : text;
}

std::string RightAligned(std::string text, std::size_t width) {
  const std::size_t taken = Width(text);
  return taken < width ? std::string(width - taken, ' ') + text : text;
}

std::string Cut(const std::string& text, std::size_t width) { return text.substr(0, width); }

std::string Coloured(const std::string& text, std::string_view code, const Screen& screen) {
  return screen.colours ? "\x1b[" + std::string(code) + "m" + text + "\x1b[0m" : text;
}

std::string WithoutTrailingBlanks(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string Counted(std::size_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

}  // namespace clmctl
