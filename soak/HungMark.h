/// @file
/// How the soak program and the library HangingChip.cpp in the daemon understand each other.
#pragma once

#include <sys/stat.h>

namespace soak {

/// Bit in the mode of a file whose accesses wait until its lock (flock) is given back.
inline constexpr mode_t kHungMark = S_ISVTX;

}  // namespace soak
