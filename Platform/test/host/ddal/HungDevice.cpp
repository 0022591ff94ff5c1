#include "HungDevice.h"

#include "HeldAccess.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>

#include <cstdint>
#include <new>

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

}  // namespace

/// Async-signal-safe once a HungDevice was made: a fan guard comes here, too.
void BeforeAccess(int fd) {
  Hang& hang = TheHang();
  struct stat file {};
  if (hang.file == 0 || fstat(fd, &file) != 0 || hang.file != file.st_ino) return;
  ++hang.accesses;
  while (hang.file == file.st_ino) {
    if (!hang.working) Pause();
  }
  --hang.accesses;
}

HungDevice::HungDevice(const std::filesystem::path& path, bool working) {
  struct stat file {};
  TheHang().working = working;
  TheHang().file = stat(path.c_str(), &file) == 0 ? file.st_ino : 0;
}

void HungDevice::Answer() { TheHang().file = 0; }

void HungDevice::AwaitAccess() const {
  while (TheHang().accesses == 0) Pause();
}
