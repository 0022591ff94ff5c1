// With bounds checks the C library's headers define these functions themselves.
#undef _FORTIFY_SOURCE

#include "HeldAccess.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// The offsets of the drivers fit into a register; a 32-bit kernel takes them as two, the first of an even number.
long Positioned(long number, int fd, const void* text, size_t size, off64_t offset) {
#if defined(__arm__)
  return syscall(number, fd, text, size, 0, static_cast<long>(offset), 0);
#else
  return syscall(number, fd, text, size, offset);
#endif
}

}  // namespace

extern "C" {

#pragma GCC visibility push(default)

ssize_t pread64(int fd, void* buffer, size_t size, off64_t offset) {
  BeforeAccess(fd);
  return Positioned(SYS_pread64, fd, buffer, size, offset);
}
ssize_t pwrite64(int fd, const void* buffer, size_t size, off64_t offset) {
  BeforeAccess(fd);
  return Positioned(SYS_pwrite64, fd, buffer, size, offset);
}
#if !defined(__USE_FILE_OFFSET64)
ssize_t pread(int fd, void* buffer, size_t size, off_t offset) { return pread64(fd, buffer, size, offset); }
ssize_t pwrite(int fd, const void* buffer, size_t size, off_t offset) { return pwrite64(fd, buffer, size, offset); }
#endif
ssize_t __pread_chk(int fd, void* buffer, size_t size, off_t offset, size_t) {
  return pread64(fd, buffer, size, offset);
}
ssize_t __pread64_chk(int fd, void* buffer, size_t size, off64_t offset, size_t) {
  return pread64(fd, buffer, size, offset);
}

#pragma GCC visibility pop

}  // extern "C"
