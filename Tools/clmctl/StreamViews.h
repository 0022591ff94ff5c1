/// @file
/// Indications as lines that another program or a file takes.
#pragma once

#include "View.h"

namespace clmctl {

/// One line a sensor or fan, in columns that do not move; notes as diagnostics.
class LineView : public View {
 public:
  bool Show(const TempIndication& indication) override;
  bool Show(const FanIndication& indication) override;
  void Note(std::string_view text) override;
};

/// One JSON object a sensor or fan; notes as diagnostics.
class JsonView : public View {
 public:
  bool Show(const TempIndication& indication) override;
  bool Show(const FanIndication& indication) override;
  void Note(std::string_view text) override;

 private:
  u32 m_tempCount = 0;
  u32 m_fanCount = 0;
};

}  // namespace clmctl
