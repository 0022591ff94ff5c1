#include "Values.h"

#include "Arguments.h"
#include "Fans.h"
#include "SimError.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace boardsim {

using commandline::NumberFrom;
using commandline::SignedFrom;

namespace {

using Milliseconds = std::chrono::sys_time<std::chrono::milliseconds>;

struct TimeUnit {
  std::string_view suffix;
  std::chrono::milliseconds length;
};

constexpr std::array kTimeUnits = {
    TimeUnit{.suffix = "ms", .length = std::chrono::milliseconds(1)},
    TimeUnit{.suffix = "s", .length = std::chrono::seconds(1)},
    TimeUnit{.suffix = "min", .length = std::chrono::minutes(1)},
    TimeUnit{.suffix = "h", .length = std::chrono::hours(1)},
    TimeUnit{.suffix = "d", .length = std::chrono::hours(24)},
};

[[noreturn]] void Refuse(std::string_view text, const char* why) {
  throw SimError(ExitCode::Usage, "'" + std::string(text) + "' " + why);
}

Milliseconds FromCalendar(const SAaTime& time) {
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(time.year)), std::chrono::month(time.month),
                                        std::chrono::day(time.day));
  return Milliseconds(std::chrono::sys_days(day)) + std::chrono::hours(time.hour) + std::chrono::minutes(time.minute) +
         std::chrono::seconds(time.second) + std::chrono::milliseconds(time.millisec);
}

SAaTime ToCalendar(Milliseconds time) {
  const auto days = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day day(days);
  const std::chrono::hh_mm_ss clock(time - days);
  return {.year = static_cast<u32>(static_cast<int>(day.year())),
          .month = static_cast<unsigned>(day.month()),
          .day = static_cast<unsigned>(day.day()),
          .hour = static_cast<u32>(clock.hours().count()),
          .minute = static_cast<u32>(clock.minutes().count()),
          .second = static_cast<u32>(clock.seconds().count()),
          .millisec = static_cast<u32>(clock.subseconds().count())};
}

std::optional<std::chrono::milliseconds> ShiftFrom(std::string_view text) {
  std::int64_t amount = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), amount);
  if (error != std::errc{} || amount < 0 || amount > 1'000'000) return std::nullopt;
  for (const TimeUnit& unit : kTimeUnits) {
    if (unit.suffix == std::string_view(end, static_cast<std::size_t>(text.data() + text.size() - end))) {
      return amount * unit.length;
    }
  }
  return std::nullopt;
}

std::optional<SAaTime> CalendarFrom(const std::string& text) {
  SAaTime time{};
  int length = 0;
  const int fields = std::sscanf(text.c_str(), "%4u-%2u-%2uT%2u:%2u:%2uZ%n", &time.year, &time.month, &time.day,
                                 &time.hour, &time.minute, &time.second, &length);
  if (fields != 6 || static_cast<std::size_t>(length) != text.size()) return std::nullopt;
  return time;
}

struct NamedFanChange {
  std::string_view prefix;
  FanChange change;
};

constexpr std::array kFanChanges = {
    NamedFanChange{.prefix = "rpm=", .change = FanChange::Stick},
    NamedFanChange{.prefix = "fail=", .change = FanChange::Fail},
    NamedFanChange{.prefix = "fail-read=", .change = FanChange::FailRead},
    NamedFanChange{.prefix = "fail-write=", .change = FanChange::FailWrite},
};

constexpr u32 kLastFanId = 15;
constexpr i32 kFastestFan = 100'000;  // revolutions a minute

std::optional<u32> FanIdFrom(std::string_view text) {
  const std::optional<u32> number = NumberFrom(text);
  if (number && *number <= kLastFanId) return number;
  for (const commandline::NamedFan& fan : commandline::kServedFans) {
    if (number == fan.unit || text == fan.name) return fan.id;
  }
  return std::nullopt;
}

/// @param whole the argument that @p code is the end of
i32 ParseFailure(std::string_view whole, std::string_view code) {
  const std::optional<i32> value = SignedFrom(code);
  if (!value || *value >= 0) {
    Refuse(whole, "is no failure: give the driver's error code, such as fail=-2; all of them are below 0");
  }
  return *value;
}

/// @param whole the argument that @p rpm is the end of
i32 ParseRpm(std::string_view whole, std::string_view rpm) {
  const std::optional<i32> value = SignedFrom(rpm);
  if (!value || *value < 0 || *value > kFastestFan) {
    Refuse(whole, "is no speed: give revolutions a minute from 0 to 100000, such as rpm=0; 0 stands still");
  }
  return *value;
}

}  // namespace

TempReq ParseTemp(std::string_view device, std::string_view value) {
  constexpr const char* kHint = "is no temperature: give degrees Celsius such as 45.5, or fail=-2, or auto";
  const std::optional<u32> id = NumberFrom(device);
  if (!id) Refuse(device, "is no device: give its number such as 0x10000; `boardsim status` lists them");
  if (value == "auto") return {.device = *id, .mode = SensorMode::Auto, .value = 0};
  constexpr std::string_view kFail = "fail=";
  if (value.starts_with(kFail)) {
    return {.device = *id, .mode = SensorMode::Failing, .value = ParseFailure(value, value.substr(kFail.size()))};
  }
  std::string_view number = value;
  if (number.ends_with("C")) number.remove_suffix(1);
  double amount = 0;
  const auto [end, error] =
      std::from_chars(number.data(), number.data() + number.size(), amount, std::chars_format::fixed);
  if (error != std::errc{} || end != number.data() + number.size()) Refuse(value, kHint);
  if (!(std::abs(amount) <= 1'000'000)) Refuse(value, kHint);
  return {.device = *id, .mode = SensorMode::Pinned, .value = static_cast<i32>(std::lround(amount * 1000))};
}

FanReq ParseFan(std::string_view fan, std::string_view value) {
  const std::optional<u32> id = FanIdFrom(fan);
  if (!id) {
    Refuse(
        fan,
        "is no fan: give a driver id from 0 to 15 (`boardsim status` lists them), 201 to 203, or GAR_FAN1 to GAR_FAN3");
  }
  if (value == "auto") return {.fan = *id, .change = FanChange::Auto, .value = 0};
  const auto* known = std::find_if(kFanChanges.begin(), kFanChanges.end(),
                                   [value](const NamedFanChange& named) { return value.starts_with(named.prefix); });
  if (known == kFanChanges.end()) {
    Refuse(value,
           "is nothing a fan does: give rpm=N, fail=CODE, fail-read=CODE, fail-write=CODE such as fail=-2, or auto");
  }
  const std::string_view number = value.substr(known->prefix.size());
  const bool rpm = known->change == FanChange::Stick;
  return {.fan = *id, .change = known->change, .value = rpm ? ParseRpm(value, number) : ParseFailure(value, number)};
}

std::string ParseTagValue(std::string_view text) {
  const std::optional<std::string> bytes = commandline::TagBytes(text);
  if (!bytes) throw SimError(ExitCode::Usage, commandline::TagBytesRefusal(text));
  return *bytes;
}

u32 ParsePartition(std::string_view text) {
  const std::optional<u32> number = NumberFrom(text);
  if (!number || *number < 1 || *number > 2) Refuse(text, "is no file system: give 1 for /ffs/fs1 or 2 for /ffs/fs2");
  return *number;
}

i32 ParseCounter(std::string_view text) {
  const std::optional<i32> number = SignedFrom(text);
  if (!number) Refuse(text, "is no counter of resets: give a number such as 0; 7 and more let the boot fall back");
  return *number;
}

SAaTime ParseClock(std::string_view text, const SAaTime& now) {
  if (text == "unset") return ToCalendar(Milliseconds{});
  if (text == "now") return ToCalendar(std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()));
  if (text.starts_with('+') || text.starts_with('-')) {
    if (const auto shift = ShiftFrom(text.substr(1))) {
      return ToCalendar(text.front() == '+' ? FromCalendar(now) + *shift : FromCalendar(now) - *shift);
    }
  } else if (const std::optional<SAaTime> time = CalendarFrom(std::string(text))) {
    return *time;
  }
  Refuse(
      text,
      "is no time: give a step such as +1h, -10min, +30s, +2d, a UTC time such as 2030-01-01T00:00:00Z, now, or unset");
}

}  // namespace boardsim
