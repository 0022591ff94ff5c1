/// @file
/// How long to wait before a program that ended is started again.
#pragma once

#include <algorithm>
#include <chrono>

namespace boardsim {

/// Pauses that double from one quick end to the next, and start anew after a good run.
class RestartPause {
 public:
  static constexpr std::chrono::milliseconds kShortest{100};
  static constexpr std::chrono::milliseconds kLongest{30'000};
  /// A run of this length is a good one.
  static constexpr std::chrono::milliseconds kGoodRun{60'000};

  /// @param ran how long the program ran
  /// @return the pause before its next start
  std::chrono::milliseconds Next(std::chrono::milliseconds ran) {
    if (ran >= kGoodRun) m_next = kShortest;
    const std::chrono::milliseconds pause = m_next;
    m_next = std::min(m_next * 2, kLongest);
    return pause;
  }

 private:
  std::chrono::milliseconds m_next = kShortest;
};

}  // namespace boardsim
