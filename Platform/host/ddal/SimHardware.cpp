#include "SimHardware.h"

#include "AaSysLog.h"
#include "FileKind.h"
#include "ddal_error.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace hwapi::ddal {
namespace {

constexpr u32 kDriverFeature = 2;  // id of the drivers' own log lines
constexpr std::chrono::milliseconds kLockPatience{2000};
constexpr std::chrono::milliseconds kLockPoll{5};

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
  m_problem = Open();
  if (!m_problem.empty()) return;
  if (Lock()) {
    m_problem = SetUp();
    flock(m_fd, LOCK_UN);
  } else {
    m_problem = Refused("is locked", "the process that has it does not let go of it");
  }
}

std::string SimHardware::Open() {
  mkdir(board::RunDirectory().c_str(), 0755);
  m_fd = open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY, 0660);
  struct stat file {};
  if (m_fd < 0 || fstat(m_fd, &file) != 0) return Refused("cannot be opened", std::strerror(errno));
  if (!S_ISREG(file.st_mode)) return Refused("cannot be used", "it is " + board::KindOfFile(file.st_mode));
  return {};
}

/// Waits for the others who set the file up, but not for ever. @return whether it has the file's lock
bool SimHardware::Lock() const {
  const auto deadline = std::chrono::steady_clock::now() + kLockPatience;
  while (flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR && (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline)) return false;
    std::this_thread::sleep_for(kLockPoll);
  }
  return true;
}

/// Reads the file. @return whether it is one of this version, or one that was cut
bool SimHardware::ReadFile(SimRegisters& registers, off_t size) const {
  constexpr auto kSize = static_cast<ssize_t>(sizeof registers);
  if (size > kSize || pread(m_fd, &registers, sizeof registers, 0) < 0) return false;
  const bool marked = size >= static_cast<off_t>(sizeof registers.magic) && registers.magic != 0;
  if (marked && registers.magic != kSimMagic) return false;
  if (size < kSize || !marked) std::memset(&registers, 0, sizeof registers);
  return true;
}

/// Writes the registers that were changed, from the last to the first: counters and marks come before what they are of.
bool SimHardware::WriteChanges(const SimRegisters& before, const SimRegisters& registers) const {
  constexpr std::size_t kCount = sizeof registers / sizeof(Register);
  Register was[kCount], is[kCount];
  std::memcpy(was, &before, sizeof was);
  std::memcpy(is, &registers, sizeof is);
  for (std::size_t i = kCount; i-- > 0;) {
    constexpr ssize_t kSize = sizeof(Register);
    if (was[i] != is[i] && pwrite(m_fd, &is[i], kSize, static_cast<off_t>(i * kSize)) != kSize) return false;
  }
  return true;
}

/// The caller has the file's lock.
std::string SimHardware::SetUp() const {
  struct stat file {};
  SimRegisters before{};
  if (fstat(m_fd, &file) != 0) return Refused("cannot be set up", std::strerror(errno));
  if (!ReadFile(before, file.st_size)) return Refused("has another layout", "it was made by another version");
  const bool cut = before.magic == 0;
  if (cut && (ftruncate(m_fd, 0) != 0 || ftruncate(m_fd, sizeof(SimRegisters)) != 0)) {
    return Refused("cannot be set up", std::strerror(errno));
  }
  SimRegisters registers = before;
  if (!AddDevices(registers, board::OwnBoard())) {
    return Refused("is full", "it holds the sensors of other descriptions");
  }
  registers.magic = kSimMagic;
  return WriteChanges(before, registers) ? std::string() : Refused("cannot be set up", std::strerror(errno));
}

std::string SimHardware::Refused(const char* what, const std::string& why) const {
  return "the simulated hardware " + m_path + ' ' + what + ": " + why +
         "; let HWAPI_RUN name a folder that the service may write, or remove the file";
}

int SimHardware::Repair() {
  const std::lock_guard guard(m_changing);
  if (!m_problem.empty() || flock(m_fd, LOCK_EX | LOCK_NB) != 0) return DDAL_ERR_IO;  // somebody else is at it
  const std::string problem = SetUp();
  const std::string line =
      problem.empty() ? "the simulated hardware " + m_path + " was cut; it is set up again" : problem;
  // What stays wrong is said once, however often it is met.
  if (problem.empty() || problem != m_said) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, kDriverFeature, "%s", line.c_str());
  }
  m_said = problem;
  flock(m_fd, LOCK_UN);
  return DDAL_ERR_IO;
}

int SimHardware::ReadBytes(u32 offset, void* value, std::size_t size) {
  if (!m_problem.empty()) return DDAL_ERR_IO;
  alignas(Register) char bytes[sizeof(SimRegisters)];
  if (pread(m_fd, bytes, size, offset) != static_cast<ssize_t>(size)) return Repair();
  std::memcpy(value, bytes, size);
  return DDAL_OK;
}

int SimHardware::WriteBytes(u32 offset, const void* value, std::size_t size) {
  if (!m_problem.empty()) return DDAL_ERR_IO;
  // A write would make a file that was cut longer again, without what it held.
  struct stat file {};
  if (fstat(m_fd, &file) != 0 || file.st_size != static_cast<off_t>(sizeof(SimRegisters))) return Repair();
  return pwrite(m_fd, value, size, offset) == static_cast<ssize_t>(size) ? DDAL_OK : DDAL_ERR_IO;
}

int SimHardware::Find(u32 device, Place<SimTemperatureRegisters>* sensor) {
  SimRegisters registers{};
  if (const int error = Read(kSimFile, &registers)) return error;
  const std::optional<u32> index = FindTemperature(registers, device);
  if (!index) return Repair();
  *sensor = (kSimFile->*&SimRegisters::temperatures)[*index];
  return DDAL_OK;
}

bool SimHardware::Running() const {
  struct flock lock = SimulatorLock(F_WRLCK);
  return m_problem.empty() && fcntl(m_fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

int SimHardware::Start() {
  if (!m_problem.empty()) return DDAL_ERR_IO;
  const std::lock_guard guard(m_changing);
  if (m_simulatorFd >= 0) return DDAL_OK;
  const int fd = open(m_path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY);
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
  const std::lock_guard guard(m_changing);
  if (m_simulatorFd < 0) return;
  struct flock lock = SimulatorLock(F_UNLCK);
  fcntl(m_simulatorFd, F_OFD_SETLK, &lock);
  close(m_simulatorFd);
  m_simulatorFd = -1;
}

int ErrorUnlessRunning() {
  SimHardware& hardware = SimHardware::Own();
  if (!hardware.Problem().empty()) return DDAL_ERR_IO;
  return hardware.Running() ? DDAL_OK : DDAL_ERR_NOT_RUNNING;
}

int FindSimFan(u32 id, Place<SimFanRegisters>* place) {
  const auto& fans = board::OwnBoard().fans;
  const auto fan = std::find_if(fans.begin(), fans.end(), [id](const board::Fan& f) { return f.id == id; });
  if (fan == fans.end()) return DDAL_ERR_NO_DEVICE;
  if (!std::holds_alternative<board::SimFan>(fan->source)) return DDAL_ERR_NOT_SUPPORTED;
  if (!SimHardware::Own().Problem().empty()) return DDAL_ERR_IO;
  *place = (kSimFile->*&SimRegisters::fans)[id];
  return DDAL_OK;
}

}  // namespace hwapi::ddal
