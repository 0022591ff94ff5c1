#include "LockedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace hwapi::qis {
namespace {

int Lock(int fd, LockWait wait) {
  int result = 0;
  do {
    result = ::flock(fd, wait == LockWait::Wait ? LOCK_EX : LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  return result;
}

Fd OpenOrCreate(int folder, const char* name, mode_t mode) {
  for (;;) {
    Fd created(::openat(folder, name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
    if (created) {
      ::fchmod(created.Get(), mode);  // the umask has no say
      return created;
    }
    if (errno != EEXIST) {
      return Fd();
    }
    Fd existing(::openat(folder, name, O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (existing || errno != ENOENT) {
      return existing;
    }
  }
}

}  // namespace

void Unlock(int fd) { ::flock(fd, LOCK_UN); }

bool HasName(int folder, const char* name, int fd) {
  struct stat named {};
  struct stat open {};
  return ::fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(fd, &open) == 0 &&
         named.st_ino == open.st_ino && named.st_dev == open.st_dev;
}

Fd OpenLocked(int folder, const char* name, mode_t mode, LockWait wait) {
  for (;;) {
    Fd file = OpenOrCreate(folder, name, mode);
    if (!file || Lock(file.Get(), wait) != 0) {
      return Fd();
    }
    if (HasName(folder, name, file.Get())) {
      return file;
    }
  }
}

}  // namespace hwapi::qis
