#include "LateProblem.h"

#include "AaSysLog.h"

namespace hwapi::ddal {

std::string LateProblem(const std::string& name, const std::string& late, const std::string& attribute) {
  constexpr u32 kDriverFeature = 2;  // id of the drivers' own log lines
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kDriverFeature, "%s: %s", name.c_str(), late.c_str());
  return late + " at \"" + attribute + "\"; check its wiring, give it a longer deadline_ms, or write optional = true";
}

}  // namespace hwapi::ddal
