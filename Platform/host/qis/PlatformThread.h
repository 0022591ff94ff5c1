/// @file
/// Threads of the platform itself.
#pragma once

#include <cstddef>

namespace hwapi::qis {

/// Smallest stack of a thread.
inline constexpr std::size_t kMinimumStack = 256 * 1024;

/// Starts a detached thread.
/// @param stackSize rounded up to kMinimumStack
/// @return 0, else an errno value
int StartThread(std::size_t stackSize, void* (*entry)(void*), void* argument);

/// Starts a detached thread in which every signal is blocked, so that signals reach the program's own threads, and
/// whose log lines are limited (LogLimit.h). @return 0, else an errno value
int StartPlatformThread(void* (*entry)(void*), void* argument);

/// Names the calling thread.
/// @param name cut to 15 characters
void NameThread(const char* name);

}  // namespace hwapi::qis
