/// @file
/// One life of the service's process, from its start to its end.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace flash {

/// Writes the description of the board that the lives have: a Kela with both file systems writable.
void DescribeBoard();

/// Lives in a child process with a platform of its own whose time stands still, so that texts can be compared, and ends
/// it without a farewell, as a power cut does.
/// @param life what is done; its result is handed on
/// @return the result; none when the process ended otherwise
std::optional<std::string> Live(const std::function<std::string()>& life);

/// @return what the service and the platform have logged in this life
std::string Log();

/// Takes the black box into use. Once in a life.
/// @return whether that worked
bool StartBlackBox();

}  // namespace flash
