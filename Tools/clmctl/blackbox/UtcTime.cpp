#include "UtcTime.h"

#include <cstdio>

namespace clmctl {
namespace {

constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:dd.dddZ";
static_assert(kShape.size() == kUtcTimeLength);

unsigned Digits(std::string_view text, std::size_t begin, std::size_t count) {
  unsigned value = 0;
  for (const char digit : text.substr(begin, count)) value = value * 10 + static_cast<unsigned>(digit - '0');
  return value;
}

struct Parts {
  std::chrono::year_month_day day;
  std::chrono::hh_mm_ss<std::chrono::milliseconds> time;
};

Parts PartsOf(UtcTime time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  return {.day = day, .time = std::chrono::hh_mm_ss(time - day)};
}

std::string SpanText(std::chrono::milliseconds span) {
  const auto minutes = std::chrono::round<std::chrono::minutes>(span).count();
  if (minutes < 60) return std::to_string(minutes) + " min";
  return std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

}  // namespace

bool LooksLikeUtcTime(std::string_view text) {
  if (text.size() != kShape.size()) return false;
  for (std::size_t i = 0; i < kShape.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (kShape[i] == 'd' ? !digit : text[i] != kShape[i]) return false;
  }
  return true;
}

std::optional<UtcTime> ParseUtcTime(std::string_view text) {
  if (!LooksLikeUtcTime(text)) return std::nullopt;
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(Digits(text, 0, 4))),
                                        std::chrono::month(Digits(text, 5, 2)), std::chrono::day(Digits(text, 8, 2)));
  const unsigned hour = Digits(text, 11, 2), minute = Digits(text, 14, 2), second = Digits(text, 17, 2);
  // A leap second is written as the 60th one.
  if (!day.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
  return std::chrono::sys_days(day) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second) + std::chrono::milliseconds(Digits(text, 20, 3));
}

bool ClockWasSet(UtcTime time) { return PartsOf(time).day.year() >= std::chrono::year(2010); }

std::string UtcSeconds(UtcTime time) {
  const Parts parts = PartsOf(time);
  char text[48];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(parts.day.year()),
                static_cast<unsigned>(parts.day.month()), static_cast<unsigned>(parts.day.day()),
                static_cast<int>(parts.time.hours().count()), static_cast<int>(parts.time.minutes().count()),
                static_cast<int>(parts.time.seconds().count()));
  return text;
}

std::string UtcText(UtcTime time) {
  std::string text = UtcSeconds(time);
  text[10] = 'T';
  char rest[16];
  std::snprintf(rest, sizeof rest, ".%03dZ", static_cast<int>(PartsOf(time).time.subseconds().count()));
  return text + rest;
}

std::string RangeText(UtcTime first, UtcTime last) {
  const std::string begin = UtcSeconds(first), end = UtcSeconds(last);
  if (begin == end) return begin + " UTC";
  const bool sameDay = begin.substr(0, 10) == end.substr(0, 10);
  return begin + " to " + (sameDay ? end.substr(11) : end) + " UTC (" + SpanText(last - first) + ")";
}

}  // namespace clmctl
