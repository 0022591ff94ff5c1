/// @file
/// A terminal that a live table is drawn on.
#pragma once

#include "TempTable.h"
#include "TempView.h"

namespace clmctl {

/// @return whether standard output is a terminal that understands cursor movement
bool OutputIsTerminal();

/// A TempTable on the terminal's second screen. At the end the first screen and the cursor are back, and the last state
/// of the table is left there.
class TempTerminalView : public TempView {
 public:
  explicit TempTerminalView(const std::string& title);
  ~TempTerminalView() override;
  bool Show(const Indication& indication) override;
  void Note(std::string_view text) override;
  void Redraw() override;

 private:
  bool Paint();

  TempTable m_table;
};

}  // namespace clmctl
