/// @file
/// Timers that send messages.
#pragma once

#include "AaSysTime.h"
#include "Message.h"

#include <chrono>
#include <compare>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>

namespace hwapi::qis {

/// The grid of a timer: its next expiry after some time, on a grid that begins at the first one.
/// @param dueUs    the expiry that has just been served
/// @param periodUs its period, above 0
/// @param nowUs    at or after @p dueUs
/// @return the first grid point behind @p nowUs
std::int64_t NextExpiry(std::int64_t dueUs, std::int64_t periodUs, std::int64_t nowUs);

/// @param realNs how long a clock has run
/// @param speed  board microseconds a real microsecond, not 0
/// @return the board time that has passed, in microseconds; never less for more
std::int64_t BoardUsOf(std::int64_t realNs, std::int64_t speed);

/// All timers of this process, served by one thread that is started with the first one. Times inside are microseconds
/// of board time since this object was made, or since the clock was, if that stands still.
class Timers {
 public:
  static Timers& Own();

  /// As AaSysTimermCreate.
  /// @throw std::bad_alloc: the message is still the caller's
  i32 Start(TAaSysTimerId* id, u32 firstUs, u32 periodUs, Message* message);
  /// As AaSysTimerDelete.
  void Delete(TAaSysTimerId id);

 private:
  /// When a timer expires next, and which one it is: the order in which they are served.
  struct Expiry {
    std::int64_t dueUs;
    TAaSysTimerId id;
    auto operator<=>(const Expiry&) const = default;
  };
  struct Timer {
    std::int64_t periodUs = 0;
    MessagePtr message;
  };
  using Running = std::map<Expiry, Timer>;

  Timers();
  static void* Run(void* timers);
  void Serve();
  void Expire(std::int64_t nowUs);
  std::int64_t NowUs() const;
  std::chrono::steady_clock::time_point RealTime(std::int64_t boardUs) const;
  Running::iterator Find(TAaSysTimerId id);
  TAaSysTimerId NewId();

  const std::chrono::steady_clock::time_point m_origin;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_running = false;
  TAaSysTimerId m_lastId = 0;
  Running m_timers;  ///< earliest first; a process has too few to search them in another way
};

}  // namespace hwapi::qis
