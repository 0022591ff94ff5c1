/// @file
/// The process that hands the fans back.
#pragma once

namespace hwapi::ddal {

/// Is the fan guard: takes records of fans until the other side of @p socket is gone, then writes what they say back,
/// removes the fans' notes, and ends. Each chip is handed back by a process of its own, which is killed when it takes
/// longer than 1 s: its fans stay on record. Called in a forked child of a process with threads, hence
/// async-signal-safe throughout. All signals are blocked by the caller.
/// @param socket where the records come from, and an end of file with the death of the process that sends them
/// @param lock   held until the fans are handed back; every other descriptor is closed
/// @param run    the run folder
[[noreturn]] void RunFanGuard(int socket, int lock, const char* run);

}  // namespace hwapi::ddal
