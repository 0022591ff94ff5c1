/// @file
/// How the indications of a watch are shown.
#pragma once

#include "FanRequest.h"
#include "TempRequest.h"

#include <string_view>

namespace clmctl {

/// Shows indications as they come.
class View {
 public:
  View() = default;
  View(const View&) = delete;
  View& operator=(const View&) = delete;
  virtual ~View() = default;

  /// @return false when nobody reads the output any more
  virtual bool Show(const TempIndication& indication) = 0;
  /// @return as above
  virtual bool Show(const FanIndication& indication) = 0;
  /// Tells something about the watch that is no indication.
  virtual void Note(std::string_view text) = 0;
  /// The terminal has another size, or what is shown has grown older.
  virtual void Redraw() {}
  /// @return whether what is shown tells its age, so that it is to be redrawn every second
  virtual bool Ages() const { return false; }
};

}  // namespace clmctl
