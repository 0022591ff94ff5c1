/// @file
/// A watch as a command: signals, the output that fits where it goes, the end.
#pragma once

#include "Commands.h"
#include "Dashboard.h"
#include "FanRequest.h"
#include "Watch.h"

#include <string>

namespace clmctl {

/// Blocks the signals first: made before the platform is used. Then sources are added to `watch` and their tables to
/// `dashboard`, and it is run.
class WatchCommand {
 public:
  /// @param count    value of --count; "" for none
  /// @param settings outlives the command
  /// @throw CommandError (usage) when that is no number of indications
  WatchCommand(const std::string& count, const Settings& settings);

  /// Adds the speed reports of the fans.
  void AddFans(FanSpeedRequest request);
  /// Starts the watch and shows it until its end.
  /// @throw CommandError as Watch
  void Run();

  Watch watch;
  Dashboard dashboard;  ///< for a terminal

 private:
  const Settings& m_settings;
};

}  // namespace clmctl
