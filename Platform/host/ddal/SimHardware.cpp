#include "SimHardware.h"

#include "ddal_error.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace hwapi::ddal {
namespace {

/// The simulator's lock covers the file's first byte and belongs to an open file, not to a process: the kernel drops it
/// with the last descriptor, and a look at it from within the simulator sees it too.
struct flock SimulatorLock(short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_len = 1;
  return lock;
}

}  // namespace

SimHardware& SimHardware::Own() {
  static SimHardware* const own = new SimHardware;
  return *own;
}

SimHardware::SimHardware() : m_path(board::RunDirectory() + "/hardware") {
  Open();
  if (m_fd < 0) return;
  while (flock(m_fd, LOCK_EX) != 0 && errno == EINTR) {
  }
  SetUp();
  flock(m_fd, LOCK_UN);
}

void SimHardware::Open() {
  mkdir(board::RunDirectory().c_str(), 0755);
  m_fd = open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0660);
  if (m_fd < 0) Refuse("cannot be opened", std::strerror(errno));
}

void SimHardware::SetUp() {
  struct stat file {};
  if (fstat(m_fd, &file) != 0 || (file.st_size == 0 && ftruncate(m_fd, sizeof(SimRegisters)) != 0)) {
    return Refuse("cannot be set up", std::strerror(errno));
  }
  if (file.st_size != 0 && file.st_size != static_cast<off_t>(sizeof(SimRegisters))) {
    return Refuse("has another layout", "it was made by another version");
  }
  void* mapped = mmap(nullptr, sizeof(SimRegisters), PROT_READ | PROT_WRITE, MAP_SHARED, m_fd, 0);
  if (mapped == MAP_FAILED) return Refuse("cannot be mapped", std::strerror(errno));
  auto* registers = static_cast<SimRegisters*>(mapped);
  if (registers->magic != 0 && registers->magic != kSimMagic) {
    munmap(mapped, sizeof(SimRegisters));
    return Refuse("has another layout", "it was made by another version");
  }
  if (!AddDevices(*registers, board::OwnBoard())) {
    munmap(mapped, sizeof(SimRegisters));
    return Refuse("is full", "it holds the sensors of other descriptions");
  }
  registers->magic = kSimMagic;
  m_registers = registers;
}

void SimHardware::Refuse(const char* what, const char* why) {
  m_problem = "the simulated hardware " + m_path + ' ' + what + ": " + why +
              "; let HWAPI_RUN name a folder that the service may write, or remove the file";
}

bool SimHardware::Running() const {
  struct flock lock = SimulatorLock(F_WRLCK);
  return m_registers != nullptr && fcntl(m_fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

int SimHardware::Start() {
  if (m_registers == nullptr) return DDAL_ERR_IO;
  const std::lock_guard guard(m_starting);
  if (m_simulatorFd >= 0) return DDAL_OK;
  const int fd = open(m_path.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) return DDAL_ERR_IO;
  struct flock lock = SimulatorLock(F_WRLCK);
  if (fcntl(fd, F_OFD_SETLK, &lock) != 0) {
    close(fd);
    return DDAL_ERR_IO;
  }
  m_simulatorFd = fd;
  return DDAL_OK;
}

void SimHardware::Stop() {
  const std::lock_guard guard(m_starting);
  if (m_simulatorFd < 0) return;
  struct flock lock = SimulatorLock(F_UNLCK);
  fcntl(m_simulatorFd, F_OFD_SETLK, &lock);
  close(m_simulatorFd);
  m_simulatorFd = -1;
}

SimRegisters* RunningRegisters(int* error) {
  SimHardware& hardware = SimHardware::Own();
  if (hardware.Registers() == nullptr) {
    *error = DDAL_ERR_IO;
    return nullptr;
  }
  *error = DDAL_ERR_NOT_RUNNING;
  return hardware.Running() ? hardware.Registers() : nullptr;
}

SimFanRegisters* FindSimFan(u32 id, int* error) {
  const auto& fans = board::OwnBoard().fans;
  const auto fan = std::find_if(fans.begin(), fans.end(), [id](const board::Fan& f) { return f.id == id; });
  *error = fan == fans.end() ? DDAL_ERR_NO_DEVICE : DDAL_ERR_NOT_SUPPORTED;
  if (fan == fans.end() || !std::holds_alternative<board::SimFan>(fan->source)) return nullptr;
  *error = DDAL_ERR_IO;
  SimRegisters* registers = SimHardware::Own().Registers();
  return registers != nullptr ? &registers->fans[id] : nullptr;
}

}  // namespace hwapi::ddal
