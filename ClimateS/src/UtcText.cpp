#include "UtcText.h"

#include <cstdio>

namespace ps::hwapi::common::climate {

SAaTime UtcNow() {
  SAaTime now{};
  AaUtcTimeGet(&now);
  return now;
}

std::string UtcText(const SAaTime& time) {
  const auto year = static_cast<int>(time.year), month = static_cast<int>(time.month), day = static_cast<int>(time.day);
  const auto hour = static_cast<int>(time.hour), minute = static_cast<int>(time.minute);
  const auto second = static_cast<int>(time.second), millisec = static_cast<int>(time.millisec);
  char date[49];
  std::snprintf(date, sizeof(date), "%.4d-%.2d-%.2dT", year, month, day);
  char clock[49];
  std::snprintf(clock, sizeof(clock), "%.2d:%.2d:%.2d.%.3dZ", hour, minute, second, millisec);
  return std::string(date) + clock;
}

std::string UtcDigits(const SAaTime& time) {
  const auto year = static_cast<int>(time.year), month = static_cast<int>(time.month), day = static_cast<int>(time.day);
  const auto hour = static_cast<int>(time.hour), minute = static_cast<int>(time.minute);
  const auto second = static_cast<int>(time.second);
  // The buffer takes 14 digits and a little more; of numbers that are no time, the rest is cut.
  char digits[19];
  std::snprintf(digits, sizeof(digits), "%.4d%.2d%.2d%.2d%.2d%.2d", year, month, day, hour, minute, second);
  return digits;
}

}  // namespace ps::hwapi::common::climate
