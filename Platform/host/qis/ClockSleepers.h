/// @file
/// Those who sleep until a clock that stands still is moved, by a process of the board.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace hwapi::qis {

/// The sleepers of this process. A thread of the platform, started with the first of them, watches the clock's file;
/// where that cannot be done, sleepers look again every now and then. Never destroyed.
class ClockSleepers {
 public:
  /// @param file the clock's file, which stays open; -1 when only this process moves the clock
  explicit ClockSleepers(int file) : m_file(file) {}

  /// Changes with every move of the clock and every Wake.
  std::uint32_t Moves();
  /// Waits until Moves() is not @p seen; may return early.
  void SleepUntilMoved(std::uint32_t seen);
  /// Lets everybody who sleeps in this process look again.
  void Wake();

 private:
  static void* Run(void* sleepers);
  int Watch() const;
  void Serve();

  const int m_file;
  std::mutex m_mutex;
  std::condition_variable m_moved;
  std::uint32_t m_moves = 0;
  bool m_started = false;
  bool m_watching = false;  ///< or nothing has to be watched
  int m_inotify = -1;
};

}  // namespace hwapi::qis
