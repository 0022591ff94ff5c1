#include "Values.h"

#include "SimError.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>

namespace boardsim {
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

}  // namespace

std::optional<u32> NumberFrom(std::string_view text) {
  const bool hex = text.starts_with("0x");
  if (hex) text.remove_prefix(2);
  u32 value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, hex ? 16 : 10);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

TempReq ParseTemp(std::string_view device, std::string_view value) {
  constexpr const char* kHint = "is no temperature: give degrees Celsius such as 45.5, or fail=-2, or auto";
  const std::optional<u32> id = NumberFrom(device);
  if (!id) Refuse(device, "is no device: give its number such as 0x10000; `boardsim status` lists them");
  if (value == "auto") return {.device = *id, .mode = SensorMode::Auto, .value = 0};
  const bool fail = value.starts_with("fail=");
  std::string_view number = fail ? value.substr(5) : value;
  if (!fail && number.ends_with("C")) number.remove_suffix(1);
  double amount = 0;
  const auto [end, error] =
      std::from_chars(number.data(), number.data() + number.size(), amount, std::chars_format::fixed);
  if (error != std::errc{} || end != number.data() + number.size()) Refuse(value, kHint);
  if (fail) {
    if (amount == 0 || std::abs(amount) > 1e9 || amount != std::floor(amount)) {
      Refuse(value, "is no failure: give the driver's error code, such as fail=-2; 0 is none");
    }
    return {.device = *id, .mode = SensorMode::Failing, .value = static_cast<i32>(amount)};
  }
  if (!(std::abs(amount) <= 1'000'000)) Refuse(value, kHint);
  return {.device = *id, .mode = SensorMode::Pinned, .value = static_cast<i32>(std::lround(amount * 1000))};
}

std::string ParseTagValue(std::string_view text) {
  constexpr std::string_view kForced = "text:";
  if (text.starts_with(kForced)) return std::string(text.substr(kForced.size()));
  if (const std::optional<u32> number = NumberFrom(text)) {
    return {reinterpret_cast<const char*>(&*number), sizeof *number};
  }
  if (!text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos) {
    Refuse(text, "does not fit 4 bytes: give at most 4294967295, or text:... to set the characters");
  }
  return std::string(text);
}

SAaTime ParseClock(std::string_view text, const SAaTime& now) {
  if (text.starts_with('+') || text.starts_with('-')) {
    if (const auto shift = ShiftFrom(text.substr(1))) {
      return ToCalendar(text.front() == '+' ? FromCalendar(now) + *shift : FromCalendar(now) - *shift);
    }
  } else if (const std::optional<SAaTime> time = CalendarFrom(std::string(text))) {
    return *time;
  }
  Refuse(text, "is no time: give a step such as +1h, -10min, +30s, +2d, or a UTC time such as 2030-01-01T00:00:00Z");
}

}  // namespace boardsim
