// Timers, sleeping and the board's clocks.
#include "AaSysTime.h"

#include "Clock.h"
#include "Export.h"
#include "Message.h"
#include "ThreadWatch.h"
#include "Timers.h"

#include <time.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <new>
#include <optional>

namespace {

using hwapi::qis::Clock;
using hwapi::qis::Timers;
using hwapi::qis::UtcUs;

constexpr u32 kLastYear = 9999;

std::optional<std::uint64_t> MicrosecondsOf(u32 amount, EAaSysTimeScale scale) {
  switch (scale) {
    case EAaSysTimeScale_Microsec:
      return amount;
    case EAaSysTimeScale_Millisec:
      return std::uint64_t{amount} * 1000;
    case EAaSysTimeScale_Sec:
      return std::uint64_t{amount} * 1'000'000;
  }
  return std::nullopt;
}

bool IsCalendarTime(const SAaTime& time) {
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(time.year)), std::chrono::month(time.month),
                                         std::chrono::day(time.day)};
  return time.year >= 1970 && time.year <= kLastYear && time.month <= 12 && time.day <= 31 && date.ok() &&
         time.hour <= 23 && time.minute <= 59 && time.second <= 59 && time.millisec <= 999;
}

/// Sleeps until a clock that stands still has been set forward by as much.
void SleepWhileStanding(std::int64_t us) {
  Clock& clock = Clock::Own();
  const std::int64_t end = clock.PassedUs() + us;
  while (true) {
    const std::uint32_t seen = clock.Moves();
    if (clock.PassedUs() >= end) return;
    clock.SleepUntilMoved(seen);
  }
}

i32 Read(tm* (*toCalendar)(const time_t*, tm*), SAaTime* now) {
  if (now == nullptr) {
    return EINVAL;
  }
  const UtcUs us = Clock::Own().Now();
  const auto seconds = static_cast<time_t>(us / 1'000'000);
  tm calendar{};
  if (us < 0 || toCalendar(&seconds, &calendar) == nullptr) {
    return EOVERFLOW;
  }
  *now = {.year = static_cast<u32>(calendar.tm_year + 1900),
          .month = static_cast<u32>(calendar.tm_mon + 1),
          .day = static_cast<u32>(calendar.tm_mday),
          .hour = static_cast<u32>(calendar.tm_hour),
          .minute = static_cast<u32>(calendar.tm_min),
          .second = static_cast<u32>(calendar.tm_sec),
          .millisec = static_cast<u32>(us / 1000 % 1000)};
  return 0;
}

}  // namespace

QIS_EXPORT i32 AaSysTimermCreate(TAaSysTimerId* id, u32 firstUs, u32 periodUs, void* msg) try {
  if (id == nullptr || msg == nullptr) {
    return EINVAL;
  }
  return Timers::Own().Start(id, firstUs, periodUs, static_cast<hwapi::qis::Message*>(msg));
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

QIS_EXPORT i32 AaSysTimerDelete(TAaSysTimerId id) {
  Timers::Own().Delete(id);
  return 0;
}

QIS_EXPORT i32 AaSysTimeSleep(u32 amount, EAaSysTimeScale scale) {
  const std::optional<std::uint64_t> us = MicrosecondsOf(amount, scale);
  if (!us) {
    return EINVAL;
  }
  const hwapi::qis::Rest rest;
  if (Clock::Own().StandsStill()) {
    SleepWhileStanding(static_cast<std::int64_t>(*us));
    return 0;
  }
  timespec end{};
  ::clock_gettime(CLOCK_MONOTONIC, &end);
  const std::int64_t ns = end.tv_nsec + Clock::Own().RealNsOf(*us);
  end.tv_sec += static_cast<decltype(end.tv_sec)>(ns / 1'000'000'000);
  end.tv_nsec = static_cast<decltype(end.tv_nsec)>(ns % 1'000'000'000);
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
  return 0;
}

QIS_EXPORT i32 AaUtcTimeGet(SAaTime* now) { return Read(&::gmtime_r, now); }

QIS_EXPORT i32 AaLocalTimeGet(SAaTime* now) { return Read(&::localtime_r, now); }

QIS_EXPORT i32 AaUtcTimeSet(const SAaTime* utc) {
  if (utc == nullptr || !IsCalendarTime(*utc)) {
    return EINVAL;
  }
  const std::chrono::sys_days day{std::chrono::year(static_cast<int>(utc->year)) / std::chrono::month(utc->month) /
                                  std::chrono::day(utc->day)};
  const std::int64_t seconds = std::int64_t{day.time_since_epoch().count()} * 86'400 + std::int64_t{utc->hour} * 3600 +
                               std::int64_t{utc->minute} * 60 + utc->second;
  return Clock::Own().Set(seconds * 1'000'000 + std::int64_t{utc->millisec} * 1000);
}
