/// @file
/// Timers that send messages.
#pragma once

#include "AaSysTime.h"
#include "Message.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>

namespace hwapi::qis {

/// The grid of a timer: its next expiry after some time, on a grid that begins at the first one.
/// @param dueUs    the expiry that has just been served
/// @param periodUs its period, above 0
/// @param nowUs    at or after @p dueUs
/// @return the first grid point behind @p nowUs
std::int64_t NextExpiry(std::int64_t dueUs, std::int64_t periodUs, std::int64_t nowUs);

/// All timers of this process, served by one thread that is started with the first one. Times inside are microseconds
/// of board time since this object was made, or since the clock was, if that stands still.
class Timers {
 public:
  static Timers& Own();

  /// As AaSysTimermCreate.
  i32 Start(TAaSysTimerId* id, u32 firstUs, u32 periodUs, Message* message);
  /// As AaSysTimerDelete.
  void Delete(TAaSysTimerId id);

 private:
  struct Timer {
    std::int64_t dueUs;
    std::int64_t periodUs;
    MessagePtr message;
  };
  using Order = std::set<std::pair<std::int64_t, TAaSysTimerId>>;

  Timers();
  static void* Run(void* timers);
  void Serve();
  void Expire(TAaSysTimerId id, std::int64_t nowUs);
  std::int64_t NowUs() const;
  std::chrono::steady_clock::time_point RealTime(std::int64_t boardUs) const;
  TAaSysTimerId NewId();

  const std::chrono::steady_clock::time_point m_origin;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_running = false;
  TAaSysTimerId m_lastId = 0;
  std::map<TAaSysTimerId, Timer> m_timers;
  Order m_order;  ///< expiries, earliest first
};

}  // namespace hwapi::qis
