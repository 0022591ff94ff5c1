#include "BoardTime.h"

#include <cstdio>

namespace clmctl {

std::string UtcNow() {
  SAaTime now{};
  AaUtcTimeGet(&now);
  char text[96];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", now.year, now.month, now.day, now.hour,
                now.minute, now.second, now.millisec);
  return text;
}

std::string LocalTimeOfDay() {
  SAaTime now{};
  AaLocalTimeGet(&now);
  char text[48];
  std::snprintf(text, sizeof text, "%02u:%02u:%02u", now.hour, now.minute, now.second);
  return text;
}

}  // namespace clmctl
