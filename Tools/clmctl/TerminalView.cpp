#include "TerminalView.h"

#include "BoardTime.h"
#include "Output.h"
#include "Screen.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

namespace clmctl {
namespace {

constexpr std::string_view kEnter = "\x1b[?1049h\x1b[?25l\x1b[2J";
constexpr std::string_view kLeave = "\x1b[?25h\x1b[?1049l";

/// How long a note stays at least, so that it can be read while indications come quickly.
constexpr std::chrono::seconds kNoteTime{10};

}  // namespace

bool OutputIsTerminal() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

TerminalView::TerminalView(Dashboard dashboard) : m_dashboard(std::move(dashboard)) {
  WriteRaw(kEnter);
  Paint();
}

TerminalView::~TerminalView() {
  std::string last(kLeave);
  for (const std::string& line : m_dashboard.Draw(CurrentScreen(), FanTable::Clock::now())) last += line + "\n";
  WriteRaw(last);
}

bool TerminalView::Show(const TempIndication& indication) {
  if (m_dashboard.temperatures) m_dashboard.temperatures->Add(indication, LocalTimeOfDay());
  ForgetOldNote();
  return Paint();
}

bool TerminalView::Show(const FanIndication& indication) {
  if (m_dashboard.fans) m_dashboard.fans->Add(indication, LocalTimeOfDay(), FanTable::Clock::now());
  ForgetOldNote();
  return Paint();
}

void TerminalView::Note(std::string_view text) {
  m_dashboard.note = text;
  m_noted = FanTable::Clock::now();
  Paint();
}

void TerminalView::ForgetOldNote() {
  if (FanTable::Clock::now() - m_noted >= kNoteTime) m_dashboard.note.clear();
}

void TerminalView::Redraw() { Paint(); }

bool TerminalView::Paint() {
  // The last row is for what is no part of the dashboard.
  Screen screen = CurrentScreen();
  if (screen.rows > 1) --screen.rows;
  std::string frame = "\x1b[H";
  for (const std::string& line : m_dashboard.Draw(screen, FanTable::Clock::now())) frame += line + "\x1b[K\r\n";
  return WriteRaw(frame + Cut("(^C stops)", screen.columns) + "\x1b[J");
}

}  // namespace clmctl
