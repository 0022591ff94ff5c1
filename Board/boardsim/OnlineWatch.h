/// @file
/// Waiting until endpoints are online, told by their tags.
#pragma once

#include "GloTypes.h"

#include <vector>

namespace boardsim {

/// From here on the process observes the online tags of @p tasks. Called once a process.
/// @return a descriptor that becomes readable when one of them changes; read 8 bytes to wait for the next change
int WatchOnlineTags(const std::vector<u32>& tasks);
/// @return those of the watched tasks that are not online
std::vector<u32> TasksNotOnline();

}  // namespace boardsim
