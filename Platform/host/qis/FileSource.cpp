// Files that are read.
#include "FileSource.h"

#include "Replacement.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace hwapi::qis {
namespace {

/// @return 0 for a regular file, EISDIR for a folder, EINVAL for anything else, another errno value when that is
/// unknown
int CheckRegular(int fd) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) {
    return errno;
  }
  if (S_ISREG(status.st_mode)) {
    return 0;
  }
  return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
}

}  // namespace

Fd OpenSource(const char* path) {
  Fd source(Uninterrupted([path] { return ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
  if (!source) {
    return source;
  }
  if (const int error = CheckRegular(source.Get()); error != 0) {
    source.Reset();
    errno = error;
  }
  return source;
}

}  // namespace hwapi::qis
