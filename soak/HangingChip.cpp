/// A library that the daemon is started with: lets whoever accesses the files of a hanging chip wait.
#include "HeldAccess.h"
#include "HungMark.h"

#include <sys/file.h>
#include <sys/stat.h>

/// Waits in the kernel, as in a driver: a thread that came back now and then to look would seem to lack a processor.
void BeforeAccess(int fd) {
  struct stat file {};
  if (fstat(fd, &file) != 0 || !S_ISREG(file.st_mode) || (file.st_mode & soak::kHungMark) == 0) return;
  flock(fd, LOCK_SH);
  flock(fd, LOCK_UN);
}
