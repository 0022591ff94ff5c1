/// @file
/// Files that belong to whoever holds their lock; the lock ends with its holder.
#pragma once

#include "Fd.h"

#include <sys/types.h>

namespace hwapi::qis {

/// What to do when somebody else holds the lock.
enum class LockWait { Wait, Refuse };

/// Opens (creates) a file and takes its exclusive lock. The file locked is the one that has the name: a file that was
/// removed or replaced while its lock was waited for is given up for its successor.
/// @return the file; none with errno set (EWOULDBLOCK: somebody holds the lock and @p wait is Refuse)
Fd OpenLocked(int folder, const char* name, mode_t mode, LockWait wait);

/// Gives the lock back before the file is closed.
void Unlock(int fd);

/// @return whether @p fd is the file that has this name now
bool HasName(int folder, const char* name, int fd);

}  // namespace hwapi::qis
