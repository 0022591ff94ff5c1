/// @file
/// Files of the run directory, in whose folders other processes may put anything.
#pragma once

#include "Fd.h"

#include <sys/stat.h>

#include <string>

namespace hwapi::qis {

/// Opens a file, and nothing else, without waiting. What has the name but is something else (a symbolic link, too) is
/// reported once.
/// @param flags as of open
/// @param mode  of a file that is made
/// @return none with errno set: EISDIR for a folder, EINVAL for another thing that is not a file
Fd OpenSharedFile(int folder, const char* name, int flags, mode_t mode = 0);

/// Reports once that something else has a name: "PATH is a FIFO, not a file: remove it".
/// @param type S_IFREG, S_IFDIR or S_IFSOCK: what has to have the name
/// @return whether something else has it; false when nothing has it
bool ReportIfNot(mode_t type, int folder, const char* name);

/// @return path of a name in an open folder, for people
std::string PathIn(int folder, const char* name);

}  // namespace hwapi::qis
