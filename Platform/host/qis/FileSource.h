/// @file
/// Files that are read.
#pragma once

#include "Fd.h"

namespace hwapi::qis {

/// Opens a regular file to read it, and nothing else: a pipe would wait for its writer, and a device may have no end.
/// @return none with errno set when it cannot be opened: EISDIR for a folder, EINVAL for another thing that is no file
Fd OpenSource(const char* path);

}  // namespace hwapi::qis
