/// @file
/// Files that belong to whoever holds their lock; the lock ends with its holder.
#pragma once

#include "Fd.h"

#include <sys/types.h>

#include <chrono>

namespace hwapi::qis {

/// What to do when somebody else holds the lock: wait for at most kLockPatience, or not at all.
enum class LockWait { Wait, Refuse };

/// Locks are held for microseconds: whoever holds one for so long has been stopped.
inline constexpr std::chrono::seconds kLockPatience{2};
/// How long a lock that was waited for in vain is only tried, not waited for, so that an attempt fails at once. Whoever
/// keeps a lock, or lets go of it only now and then, thus gets a thirtieth of our time at most; and each attempt finds
/// it free once its holder has gone on or ended.
inline constexpr std::chrono::minutes kLockPause{1};

/// Opens (creates) a file and takes its exclusive lock. The file locked is the one that has the name: a file that was
/// removed or replaced while its lock was waited for is given up for its successor, within the same patience. A lock
/// that was waited for in vain is reported with its holder.
/// @return the file; none with errno set (EWOULDBLOCK: somebody holds the lock and @p wait is Refuse; ETIMEDOUT:
/// somebody held it all the time, or holds it still in the pause after that; otherwise as OpenSharedFile)
Fd OpenLocked(int folder, const char* name, mode_t mode, LockWait wait);

/// Takes the exclusive lock of an open file, waiting for at most kLockPatience, and not at all in the pause after a
/// wait in vain.
/// @return 0; ETIMEDOUT, or another errno value
int LockInTime(int fd);
/// Takes the exclusive lock of an open file if nobody else has it.
/// @return 0, else an errno value
int LockAtOnce(int fd);
/// Reports that a lock was waited for in vain, and who holds it.
void ReportKeptLock(int fd, const char* path);

/// Gives the lock back before the file is closed.
void Unlock(int fd);

/// @return whether @p fd is the file that has this name now
bool HasName(int folder, const char* name, int fd);

}  // namespace hwapi::qis
