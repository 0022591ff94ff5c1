/// @file
/// Lines that other processes can cause: each cause has a limit for each sender, so that nobody floods the log.
///
/// Limited is what a thread logs while it handles a message of another process, and what the platform's own threads
/// log, observers of tags among them: whatever they do, others caused it, though not always one known sender. A cause
/// is the place that logs (its format), at its level, for its feature. A cause may log 100 lines at once and 10 a
/// second in the long run; all of them together may log 5000 at once and 500 a second. What is left out is counted, and
/// reported when the cause may log again: before its next line, or with the next message that is handled.
#pragma once

#include "AaSysCom.h"
#include "AaSysLog.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace hwapi::qis {

/// Says whose message the calling thread handles from here on: to be called with every message that a receive returns,
/// before it does, and with (0, true) when it returns none.
/// @param sender     address of the message's sender
/// @param ownProcess whether this process sent it: what it causes is not limited
void HandlingMessageFrom(TAaSysComSicad sender, bool ownProcess);

/// The calling thread is one of the platform: all its lines are limited.
void LimitLinesOfThisThread();

/// @return whether the calling thread may log this line now; if not, it is counted. Says before how many were left out.
bool MayLog(EAaSysLogSeverityLevel level, u32 feature, const char* format);

/// What may happen @p Burst times at once and @p Rate times a second in the long run.
template <std::int64_t Burst, std::int64_t Rate>
class TokenBucket {
 public:
  /// @return how often it may happen now
  std::int64_t Left(std::int64_t nowNs) const {
    return Burst - (std::max(m_fullAtNs, nowNs) - nowNs + kCost - 1) / kCost;
  }
  /// Takes one that is left.
  void Take(std::int64_t nowNs) { m_fullAtNs = std::max(m_fullAtNs, nowNs) + kCost; }

 private:
  static constexpr std::int64_t kCost = 1'000'000'000 / Rate;  ///< nanoseconds until one is there again

  std::int64_t m_fullAtNs = 0;  ///< when all are there again
};

/// Who causes which line.
struct LogCause {
  const char* format = nullptr;
  u32 feature = 0;
  EAaSysLogSeverityLevel level{};
  TAaSysComSicad sender = 0;  ///< 0: nobody in particular

  friend bool operator==(const LogCause&, const LogCause&) = default;
};

/// The limits of all causes, in a bounded table. Not synchronised. Times are monotonic, in nanoseconds. All zero at
/// first: it takes memory only where it is used.
class LogLimit {
 public:
  static constexpr std::int64_t kBurst = 100;
  static constexpr std::int64_t kRate = 10;

  /// Lines of one cause that were left out.
  struct LeftOut {
    LogCause cause;
    std::uint64_t lines = 0;
    std::array<char, 48> begin{};  ///< of their format, zero-terminated
  };

  /// @return whether a line of this cause may be logged now; if not, it is counted
  bool MayLog(const LogCause& cause, std::int64_t nowNs);
  /// Hands over what was left out of a cause that may log again.
  /// @return false when there is none
  bool TakeLeftOut(LeftOut& leftOut, std::int64_t nowNs);
  /// @return whether there is something to be told, now or later
  bool HasLeftOut() const { return m_silenced != 0; }

 private:
  struct Entry {
    LeftOut leftOut;
    TokenBucket<kBurst, kRate> bucket;
    bool silenced = false;  ///< until it may log a second's lines at once: one report is then for ten of them
  };
  static constexpr std::size_t kSets = 64;
  static constexpr std::size_t kWays = 8;

  Entry& EntryOf(const LogCause& cause, std::int64_t nowNs);
  bool MaySpeakAgain(const Entry& entry, std::int64_t nowNs) const;

  std::array<std::array<Entry, kWays>, kSets> m_entries;
  Entry m_others;  ///< of causes that find no room in the table
  TokenBucket<50 * kBurst, 50 * kRate> m_all;
  std::size_t m_silenced = 0;
  std::int64_t m_nextLookNs = 0;  ///< for causes that may log again: the table is not searched with each line
};

}  // namespace hwapi::qis
