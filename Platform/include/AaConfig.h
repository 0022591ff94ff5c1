/// @file
/// Public configuration tags, debug-configuration (RAD) values, and memory that the platform hands out.
///
/// A tag is a named value of a few bytes that every process of the board can read, set and observe. Every function may
/// be called from every thread.
#pragma once

#include "GloTypes.h"

/// Called for a tag's value: once at registration when the tag has one, then once for each set, in order. Runs on a
/// platform thread; one observer's calls never overlap, and an observer that blocks delays nobody else's. The platform
/// may bound what it keeps for one that blocks; what that misses is logged. An exception that leaves it is caught and
/// logged. @p value is valid during the call only and is followed by a zero byte.
using TAaConfigTagObserver = void (*)(const char* name, const void* value, u32 size);

/// Largest size of a tag's value in bytes.
inline constexpr u32 AACONFIG_TAG_MAX_SIZE = 1024;

extern "C" {

/// Sets a tag for every process of the board and tells its observers.
/// @return 0 on success, else an errno value (EINVAL: empty name, a name with '/', or a value too large)
i32 AaConfigTagPublicSet(const char* name, const void* value, u32 size);
/// Registers an observer for the life of the process.
/// @return 0 on success, else an errno value
i32 AaConfigTagRegister(const char* name, TAaConfigTagObserver observer);
/// Reads a tag.
/// @param value out: a zero-terminated copy with one reference for the caller, who releases it with AaMemUnRefDbg;
///              null when the tag has no value
/// @return 0 on success, else an errno value (ENOENT: the tag has no value)
i32 AaConfigTagGet(const char* name, void** value);
/// Reads a 4-byte tag as a number.
/// @return 0 on success, else an errno value (ENOENT: no value, EINVAL: not 4 bytes); *value is untouched then
i32 AaConfigTagGetU32(const char* name, u32* value);

/// @return the debug-configuration value; 0 when it is unset
u32 AaConfigRadGetValue(u32 id);

/// Releases one reference to memory that the platform handed out. Null is ignored.
void AaMemUnRefDbg(void* memory, const char* file, u32 line);

}  // extern "C"
