/// @file
/// Where the black box lives.
#pragma once

namespace ps::hwapi::common::climate {

/// Must exist before anything is written; stored files are here too.
inline constexpr const char* kLifedataDirectory = "/ffs/run/config/lifedata/";
/// Tag with the path of the trace file.
inline constexpr const char* kTraceFileTag = "app.hwapi.blackbox.temperature.file";

}  // namespace ps::hwapi::common::climate
