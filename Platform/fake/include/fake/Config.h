/// @file
/// Configuration tags, debug-configuration (RAD) values, and memory that the platform handed out.
#pragma once

#include "AaConfig.h"
#include "fake/Recorder.h"

#include <cstddef>
#include <optional>
#include <string>

namespace fake {

/// Sets a tag as another process of the board would: observers are called, nothing is recorded.
void SetTag(const std::string& name, const Bytes& value);
void SetTag(const std::string& name, const std::string& text);
void SetTag(const std::string& name, u32 number);
/// Takes the value of a tag away; observers are not called.
void RemoveTag(const std::string& name);
/// @return the value; nothing when the tag has none
std::optional<Bytes> TagValue(const std::string& name);

/// Makes AaConfigTagGet of a tag return @p result and a copy of @p text, null when there is none, whatever is set:
/// combinations that a well-behaved platform does not give.
void AnswerTagGet(const std::string& name, i32 result, std::optional<std::string> text);

/// Sets a debug-configuration value.
void SetRad(u32 id, u32 value);

/// @return number of references handed out by AaConfigTagGet and not yet released
std::size_t LiveMemory();

}  // namespace fake
