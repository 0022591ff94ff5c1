/// @file
/// A daemon that is attacked, and what is seen of it from outside.
#pragma once

#include "BenchBoard.h"
#include "Child.h"
#include "Process.h"
#include "Report.h"
#include "Rows.h"

#include <atomic>
#include <cstddef>
#include <string>

namespace soak {

/// Board seconds a second: what the board does once a minute comes every second.
inline constexpr unsigned kClockSpeed = 60;
/// The boards of all rows.
inline constexpr bench::BoardExtras kBoard{.fans = true, .clockSpeed = kClockSpeed};
/// Real seconds between two of the daemon's signs of life.
inline constexpr double kSignPeriod = 1;

/// What the daemon of a scene is started with.
struct SceneNeeds {
  rlim_t descriptors = 0;  ///< its limit; 0: as this process has
  bool log = false;        ///< whether its log is kept
  std::string library{};   ///< one that takes the place of functions of the C library; "": none
};

class Scene {
 public:
  /// @param board outlives the scene
  Scene(const bench::BenchBoard& board, const Settings& settings, const SceneNeeds& needs = {});

  bool IsAlive() const { return m_daemon.IsAlive(); }
  /// @return processor time that the daemon used
  double CpuSeconds() const;
  double ResidentMiB() const;
  std::size_t Descriptors() const;
  std::size_t LogLines() const;
  /// @return path of the socket at which a task of the daemon is reached
  std::string SocketOf(unsigned task) const;

  /// From here on growth and silences count.
  void StartWatching();
  /// Puts what was seen since StartWatching into the report.
  /// @param where ends the name of each figure
  void ReportWatched(Report& report, const std::string& where);

 private:
  /// What the watching process sees; its times are those of Now.
  struct Seen {
    std::atomic<double> maxResidentMiB{0};
    std::atomic<double> lastSign{0};
    std::atomic<double> maxSilence{0};
    std::atomic<unsigned> signs{0};
  };

  void Watch() const;

  const bench::BenchBoard& m_board;
  std::string m_log;
  bench::Daemon m_daemon;
  Shared<Seen> m_seen;
  Child m_watcher;
  double m_residentAtStart = 0;
};

}  // namespace soak
