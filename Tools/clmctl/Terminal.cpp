#include "Terminal.h"

#include "BoardTime.h"
#include "Output.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace clmctl {
namespace {

constexpr std::string_view kEnter = "\x1b[?1049h\x1b[?25l\x1b[2J";
constexpr std::string_view kLeave = "\x1b[?25h\x1b[?1049l";

Canvas CurrentCanvas() {
  Canvas canvas;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 && size.ws_row != 0) {
    canvas.columns = size.ws_col;
    canvas.rows = size.ws_row;
  }
  const char* noColour = std::getenv("NO_COLOR");
  canvas.colours = noColour == nullptr || *noColour == '\0';
  std::setlocale(LC_CTYPE, "");
  canvas.utf8 = std::string_view(nl_langinfo(CODESET)) == "UTF-8";
  return canvas;
}

}  // namespace

bool OutputIsTerminal() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

TempTerminalView::TempTerminalView(const std::string& title) : m_table(title) {
  WriteRaw(kEnter);
  Paint();
}

TempTerminalView::~TempTerminalView() {
  std::string last(kLeave);
  for (const std::string& line : m_table.Draw(CurrentCanvas())) last += line + "\n";
  WriteRaw(last);
}

bool TempTerminalView::Show(const Indication& indication) {
  m_table.Add(indication, LocalTimeOfDay());
  return Paint();
}

void TempTerminalView::Note(std::string_view text) {
  m_table.SetNote(std::string(text));
  Paint();
}

void TempTerminalView::Redraw() { Paint(); }

bool TempTerminalView::Paint() {
  std::string frame = "\x1b[H";
  bool first = true;
  for (const std::string& line : m_table.Draw(CurrentCanvas())) {
    if (!first) frame += "\r\n";
    frame += line + "\x1b[K";
    first = false;
  }
  return WriteRaw(frame + "\x1b[J");
}

}  // namespace clmctl
