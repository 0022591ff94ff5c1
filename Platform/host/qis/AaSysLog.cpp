// The log: one line a call on standard error.
#include "AaSysLog.h"

#include "Export.h"
#include "LogLimit.h"
#include "LogLine.h"
#include "LogOutput.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>

namespace {

constinit std::atomic<u32> g_threshold{EAaSysLogSeverityLevel_Info};

}  // namespace

QIS_EXPORT void AaSysLogPrintE(EAaSysLogSeverityLevel level, u32 feature, const char* format, ...) {
  if (level < g_threshold.load(std::memory_order_relaxed)) {
    return;
  }
  const int before = errno;  // callers print it, and look at it afterwards
  if (hwapi::qis::MayLog(level, feature, format)) {
    hwapi::qis::LogLine line(level, feature);
    std::va_list arguments;
    va_start(arguments, format);
    errno = before;
    line.PrintV(format, arguments);
    va_end(arguments);
    hwapi::qis::LogOutput::Own().Put(line);
  }
  errno = before;
}

QIS_EXPORT void AaSysLogSetThreshold(EAaSysLogSeverityLevel lowest) {
  g_threshold.store(lowest, std::memory_order_relaxed);
}

QIS_EXPORT void AaErrorAssertion(const char* expression, const char* file, u32 line) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 0, "Assertion failed: %s (file: %s, line: %u)", expression, file, line);
  std::abort();
}
