/// @file
/// How long to wait before a program that ended is started again.
#pragma once

#include <algorithm>
#include <chrono>

namespace boardsim {

/// Pauses between the starts of a program that ends again and again: at first they double up to a second, then the
/// starts come far apart, but they never cease. After a good run it is all as at first.
class RestartPause {
 public:
  static constexpr std::chrono::milliseconds kShortest{100};
  /// The longest of the first pauses.
  static constexpr std::chrono::milliseconds kSoon{1'000};
  /// How many they are.
  static constexpr unsigned kSoonStarts = 10;
  /// Every further pause.
  static constexpr std::chrono::milliseconds kLongest{10'000};
  /// A run of this length is a good one.
  static constexpr std::chrono::milliseconds kGoodRun{60'000};

  /// @param ran how long the program ran
  /// @return the pause before its next start
  std::chrono::milliseconds Next(std::chrono::milliseconds ran) {
    if (ran >= kGoodRun) *this = {};
    if (m_starts >= kSoonStarts) return kLongest;
    ++m_starts;
    const std::chrono::milliseconds pause = m_next;
    m_next = std::min(m_next * 2, kSoon);
    return pause;
  }

 private:
  unsigned m_starts = 0;  ///< since the last good run, as far as they came soon
  std::chrono::milliseconds m_next = kShortest;
};

}  // namespace boardsim
