#include "AaSysTime.h"

#include "Execution.h"
#include "Internal.h"
#include "MessagePool.h"
#include "MessageQueues.h"
#include "fake/Time.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>
#include <optional>
#include <thread>

namespace fake {
namespace {

using namespace internal;
namespace chrono = std::chrono;
using UtcTime = chrono::sys_time<chrono::microseconds>;

/// 2024-06-15 12:00:00.
constexpr UtcTime kFirstUtc = chrono::sys_days(chrono::year(2024) / 6 / 15) + chrono::hours(12);

/// A sleep shorter than this is a wait for another thread within a step of the sleeper, and does not end its run.
constexpr std::uint64_t kShortestStep = 100'000;
/// Between two looks at what another thread does, in microseconds, or more: that thread runs meanwhile.
constexpr std::uint64_t kPause = 10'000;

struct Running {
  Timer timer;
  std::uint64_t due;
};

struct Action {
  std::uint64_t due;
  std::function<void()> run;
};

struct Clock {
  std::uint64_t now = 0;
  UtcTime utcAtStart = kFirstUtc;
  chrono::minutes localOffset{0};
  TAaSysTimerId lastTimer = 0;
  std::vector<Running> timers;
  std::vector<Action> actions;
  std::function<void()> onUtcRead;
};

Clock& TheClock() {
  static auto& clock = *new Clock;
  return clock;
}

SAaTime ToCalendar(UtcTime time) {
  const auto day = chrono::floor<chrono::days>(time);
  const chrono::year_month_day date(day);
  const chrono::hh_mm_ss clock(chrono::floor<chrono::milliseconds>(time - day));
  return {.year = static_cast<u32>(static_cast<int>(date.year())),
          .month = static_cast<unsigned>(date.month()),
          .day = static_cast<unsigned>(date.day()),
          .hour = static_cast<u32>(clock.hours().count()),
          .minute = static_cast<u32>(clock.minutes().count()),
          .second = static_cast<u32>(clock.seconds().count()),
          .millisec = static_cast<u32>(clock.subseconds().count())};
}

/// @return the time; nothing when it is no calendar time
std::optional<UtcTime> FromCalendar(const SAaTime& time) {
  if (time.year > 9999 || time.month > 12 || time.day > 31 || time.hour > 23) return std::nullopt;
  if (time.minute > 59 || time.second > 59 || time.millisec > 999) return std::nullopt;
  const chrono::year_month_day date(chrono::year(static_cast<int>(time.year)), chrono::month(time.month),
                                    chrono::day(time.day));
  if (!date.ok()) return std::nullopt;
  return chrono::sys_days(date) + chrono::hours(time.hour) + chrono::minutes(time.minute) +
         chrono::seconds(time.second) + chrono::milliseconds(time.millisec);
}

void SetClock(UtcTime utc) {
  TheClock().utcAtStart = utc - chrono::microseconds(static_cast<std::int64_t>(TheClock().now));
}

i32 ReadClock(const char* function, SAaTime* now, chrono::minutes offset) {
  if (const auto failure = Record({function})) return *failure;
  if (now == nullptr) return EINVAL;
  const Clock& clock = TheClock();
  *now = ToCalendar(clock.utcAtStart + offset + chrono::microseconds(static_cast<std::int64_t>(clock.now)));
  return 0;
}

/// Takes the timer out, or lets it wait for its next expiry, and sends a copy of its message.
void Expire(std::vector<Running>::iterator running) {
  Message message = running->timer.message;
  if (running->timer.periodUs == 0) {
    TheClock().timers.erase(running);
  } else {
    running->due += running->timer.periodUs;
  }
  Route(std::move(message));
}

}  // namespace

std::uint64_t Now() {
  const Lock lock;
  return TheClock().now;
}

void AdvanceTime(std::uint64_t microseconds) { PassTimeTo(Now() + microseconds); }

void After(std::uint64_t microseconds, std::function<void()> action) {
  const Lock lock;
  TheClock().actions.push_back({TheClock().now + microseconds, std::move(action)});
}

void OnUtcRead(std::function<void()> action) {
  const Lock lock;
  TheClock().onUtcRead = std::move(action);
}

std::vector<Timer> Timers() {
  const Lock lock;
  std::vector<Timer> timers;
  for (const Running& running : TheClock().timers) timers.push_back(running.timer);
  return timers;
}

void SetUtc(const SAaTime& utc) {
  const Lock lock;
  SetClock(FromCalendar(utc).value());
}

void SetLocalOffset(int minutes) {
  const Lock lock;
  TheClock().localOffset = chrono::minutes(minutes);
}

namespace internal {

bool PassTimeToNextEvent(std::uint64_t limit) {
  std::function<void()> run;
  {
    const Lock lock;
    Clock& clock = TheClock();
    const auto timer = std::ranges::min_element(clock.timers, {}, &Running::due);
    const auto action = std::ranges::min_element(clock.actions, {}, &Action::due);
    constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t timerDue = timer != clock.timers.end() ? timer->due : kNever;
    const std::uint64_t actionDue = action != clock.actions.end() ? action->due : kNever;
    const std::uint64_t due = std::min(timerDue, actionDue);
    if (due == kNever || due > limit) return false;
    clock.now = std::max(clock.now, due);
    if (actionDue <= timerDue) {
      run = std::move(action->run);
      clock.actions.erase(action);
    } else {
      Expire(timer);
    }
  }
  if (run) run();
  return true;
}

void PassTimeTo(std::uint64_t time) {
  while (PassTimeToNextEvent(time)) {
  }
  const Lock lock;
  TheClock().now = std::max(TheClock().now, time);
}

void ResetTime() { TheClock() = Clock(); }

}  // namespace internal
}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

i32 AaSysTimermCreate(TAaSysTimerId* id, u32 firstUs, u32 periodUs, void* msg) {
  const Lock lock;
  Envelope* envelope = FindEnvelope(msg, "AaSysTimermCreate");
  Call call("AaSysTimermCreate", firstUs, periodUs);
  call.arguments.emplace_back(envelope != nullptr ? Value(envelope->id) : Value(nullptr));
  if (envelope != nullptr) call.arguments.emplace_back(envelope->receiver);
  if (const auto failure = Record(std::move(call))) return *failure;
  if (id == nullptr || envelope == nullptr) return EINVAL;
  Clock& clock = TheClock();
  const Timer timer{
      .id = ++clock.lastTimer, .firstUs = firstUs, .periodUs = periodUs, .message = CloseEnvelope(*envelope)};
  clock.timers.push_back({timer, clock.now + firstUs});
  *id = timer.id;
  return 0;
}

i32 AaSysTimerDelete(TAaSysTimerId id) {
  const Lock lock;
  if (const auto failure = Record({"AaSysTimerDelete", id})) return *failure;
  std::erase_if(TheClock().timers, [&](const Running& running) { return running.timer.id == id; });
  return 0;
}

i32 AaSysTimeSleep(u32 amount, EAaSysTimeScale scale) {
  if (const auto failure = Record({"AaSysTimeSleep", amount, scale})) return *failure;
  constexpr std::uint64_t kMicroseconds[] = {1, 1000, 1000000};
  if (scale > EAaSysTimeScale_Sec) return EINVAL;
  const std::uint64_t microseconds = amount * kMicroseconds[scale];
  CountSleep(microseconds >= kShortestStep);
  if (microseconds >= kPause && microseconds < kShortestStep) std::this_thread::sleep_for(chrono::microseconds(200));
  AdvanceTime(microseconds);
  return 0;
}

i32 AaUtcTimeGet(SAaTime* now) {
  std::function<void()> action;
  {
    const Lock lock;
    if (const i32 result = ReadClock("AaUtcTimeGet", now, chrono::minutes(0)); result != 0) return result;
    action = TheClock().onUtcRead;
  }
  if (action) action();
  return 0;
}

i32 AaLocalTimeGet(SAaTime* now) {
  const Lock lock;
  return ReadClock("AaLocalTimeGet", now, TheClock().localOffset);
}

i32 AaUtcTimeSet(const SAaTime* utc) {
  const Lock lock;
  Call call("AaUtcTimeSet");
  if (utc != nullptr) {
    call = Call("AaUtcTimeSet", utc->year, utc->month, utc->day, utc->hour, utc->minute, utc->second, utc->millisec);
  }
  if (const auto failure = Record(std::move(call))) return *failure;
  const std::optional<UtcTime> time = utc != nullptr ? FromCalendar(*utc) : std::nullopt;
  if (!time) return EINVAL;
  SetClock(*time);
  return 0;
}

}  // extern "C"
