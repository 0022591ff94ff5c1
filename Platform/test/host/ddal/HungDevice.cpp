// With bounds checks the C library's headers define these functions themselves.
#undef _FORTIFY_SOURCE

#include "HungDevice.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <new>
#include <thread>

namespace {

/// Shared by the processes of a test.
struct Hang {
  std::atomic<std::uint64_t> file{0};  ///< inode; 0: none hangs
  std::atomic<bool> working{false};    ///< without a wait in the kernel
  std::atomic<unsigned> accesses{0};   ///< that block
};

Hang& TheHang() {
  static Hang* const hang = [] {
    void* page = mmap(nullptr, sizeof(Hang), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return page != MAP_FAILED ? new (page) Hang : new Hang;
  }();
  return *hang;
}

void Pause() {
  const timespec millisecond{.tv_sec = 0, .tv_nsec = 1'000'000};
  nanosleep(&millisecond, nullptr);
}

/// Async-signal-safe once a HungDevice was made: a fan guard comes here, too.
void BlockWhileHung(int fd) {
  Hang& hang = TheHang();
  struct stat file {};
  if (hang.file == 0 || fstat(fd, &file) != 0 || hang.file != file.st_ino) return;
  ++hang.accesses;
  while (hang.file == file.st_ino) {
    if (!hang.working) Pause();
  }
  --hang.accesses;
}

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
  BlockWhileHung(fd);
  return Positioned(SYS_pread64, fd, buffer, size, offset);
}
ssize_t pwrite64(int fd, const void* buffer, size_t size, off64_t offset) {
  BlockWhileHung(fd);
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

HungDevice::HungDevice(const std::filesystem::path& path, bool working) {
  struct stat file {};
  TheHang().working = working;
  TheHang().file = stat(path.c_str(), &file) == 0 ? file.st_ino : 0;
}

void HungDevice::Answer() { TheHang().file = 0; }

void HungDevice::AwaitAccess() const {
  while (TheHang().accesses == 0) Pause();
}
