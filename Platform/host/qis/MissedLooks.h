/// @file
/// Whether the looks at the threads (AaProAllAlive) go on.
#pragma once

#include "EventLoop.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>

namespace hwapi::qis {

/// Whoever looks at the threads, and the thread of the timers that lets it, cannot report that they hang themselves.
/// The platform's thread for connections does, once, when a look is late by a quarter of the time between two looks,
/// and the thread has not gone on for another quarter. As long as looks come, it is not even woken.
class MissedLooks : public EventHandler, public std::enable_shared_from_this<MissedLooks> {
 public:
  static const std::shared_ptr<MissedLooks>& Own();

  /// The calling thread looks at the threads now.
  void Looked();
  /// The next look is late, or late for longer.
  void Missed();
  void OnReady(std::uint64_t key) override;

 private:
  using Clock = std::chrono::steady_clock;

  void Expect(std::chrono::nanoseconds period);

  std::mutex m_mutex;
  Clock::time_point m_lookedAt{};  ///< the epoch: never
  Fd m_timer;
  bool m_isReported = false;  ///< since the last look
};

}  // namespace hwapi::qis
