/// @file
/// A terminal that live tables are drawn on.
#pragma once

#include "Dashboard.h"
#include "View.h"

namespace clmctl {

/// @return whether standard output is a terminal that understands cursor movement
bool OutputIsTerminal();

/// A dashboard on the terminal's second screen. At the end the first screen and the cursor are back, and the last state
/// of the dashboard is left there.
class TerminalView : public View {
 public:
  explicit TerminalView(Dashboard dashboard);
  ~TerminalView() override;
  bool Show(const TempIndication& indication) override;
  bool Show(const FanIndication& indication) override;
  void Note(std::string_view text) override;
  void Redraw() override;
  bool Ages() const override { return m_dashboard.fans.has_value(); }

 private:
  void ForgetOldNote();
  bool Paint();

  Dashboard m_dashboard;
  FanTable::Clock::time_point m_noted;
};

}  // namespace clmctl
