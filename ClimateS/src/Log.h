/// @file
/// The service's log line: AaSysLogPrintE under the service's own feature.
#pragma once

#include "AaSysLog.h"
#include "RadIds.h"

/// CLM_LOG(Debug, "format", ...) with a level of EAaSysLogSeverityLevel. A macro so that the compiler checks the
/// format.
#define CLM_LOG(level, ...) AaSysLogPrintE(EAaSysLogSeverityLevel_##level, ERadHwapi_PrintClimateService, __VA_ARGS__)
