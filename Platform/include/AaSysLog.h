/// @file
/// The log. Every function may be called from every thread.
#pragma once

#include "GloTypes.h"

/// Severity of a log line, lowest first.
enum EAaSysLogSeverityLevel : u32 {
  EAaSysLogSeverityLevel_Debug = 1,
  EAaSysLogSeverityLevel_Info = 2,
  EAaSysLogSeverityLevel_Warning = 3,
  EAaSysLogSeverityLevel_Error = 4
};

extern "C" {

/// Writes one line. Nothing is formatted when @p level is below the threshold. A trailing line feed in the text is not
/// doubled; control characters inside it are shown, not written.
/// @param feature id of the part that speaks
/// @param format  printf format
void AaSysLogPrintE(EAaSysLogSeverityLevel level, u32 feature, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Sets the lowest level that is written, for this process; Info until then. Used by the hardware-API runtime.
void AaSysLogSetThreshold(EAaSysLogSeverityLevel lowest);

/// Reports a failed assertion at Error and ends the process abnormally.
[[noreturn]] void AaErrorAssertion(const char* expression, const char* file, u32 line);

}  // extern "C"
