/// @file
/// The board's clock, shared by every process of the board through the file "clock" in the run directory.
///
/// Without a speed and a start in the board description it is the host's clock plus an offset. Otherwise it starts with
/// the first process (at the described time, or now) and runs at the described speed until the host boots anew or the
/// description changes. The offset is what AaUtcTimeSet moves.
///
/// A clock of speed 0 stands still. Setting it forward is how time passes then: for timers and sleeps of every process.
#pragma once

#include "ClockFile.h"
#include "ClockSleepers.h"

#include <cstdint>

namespace hwapi::qis {

/// A calendar-free time: microseconds since 1970 UTC.
using UtcUs = std::int64_t;

class Clock {
 public:
  static Clock& Own();
  /// @return whether the calling thread is just making the clock: what it logs then has no time
  static bool IsBeingMade();

  UtcUs Now() const;
  /// Sets it for every process of the board.
  /// @return 0, else an errno value, as ClockFile::Change
  int Set(UtcUs now);

  /// Board microseconds a real microsecond.
  unsigned Speed() const { return m_speed; }
  bool StandsStill() const { return m_speed == 0; }
  /// @return how many real nanoseconds a board time of @p boardUs takes; at least 1 unless that is 0; the
  /// same time when the clock stands still
  std::int64_t RealNsOf(std::uint64_t boardUs) const;

  /// Of a clock that stands still: the time that has passed since it was made.
  std::int64_t PassedUs() const;
  /// Of a clock that stands still: changes with every move of it and every call of WakeSleepers.
  std::uint32_t Moves() { return StandsStill() ? m_sleepers.Moves() : 0; }
  /// Waits until Moves() is not @p seen; may return early.
  void SleepUntilMoved(std::uint32_t seen) { m_sleepers.SleepUntilMoved(seen); }
  /// Lets everybody who sleeps in this process look again.
  void WakeSleepers() { m_sleepers.Wake(); }

 private:
  Clock();
  UtcUs WithoutOffset(const ClockState& state) const;

  unsigned m_speed;
  bool m_isHostClock;
  ClockFile m_file;
  ClockSleepers m_sleepers;
};

}  // namespace hwapi::qis
