#include "LockedFile.h"

#include "AaSysLog.h"
#include "ComLog.h"
#include "Replacement.h"
#include "SharedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace hwapi::qis {
namespace {

using SteadyClock = std::chrono::steady_clock;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

constexpr const char* kLocks = "/proc/locks";

/// @return the process that holds the exclusive lock of a file, by the kernel's list; 0 when that does not say, -1 when
/// it cannot be read: a service may see nothing of /proc but processes
int HolderOf(int fd) {
  struct stat status {};
  const std::unique_ptr<std::FILE, CloseFile> locks(std::fopen(kLocks, "re"));
  if (!locks || ::fstat(fd, &status) != 0) {
    return -1;
  }
  char line[256];
  while (std::fgets(line, sizeof line, locks.get()) != nullptr) {
    int pid = 0;
    unsigned major = 0;
    unsigned minor = 0;
    unsigned long long inode = 0;
    if (std::sscanf(line, "%*d: FLOCK ADVISORY %*s %d %x:%x:%llu", &pid, &major, &minor, &inode) == 4 &&
        inode == status.st_ino && makedev(major, minor) == status.st_dev) {
      return std::max(pid, 0);
    }
  }
  return 0;
}

Fd OpenOrCreate(int folder, const char* name, mode_t mode) {
  for (;;) {
    Fd created = OpenSharedFile(folder, name, O_RDWR | O_CREAT | O_EXCL, mode);
    if (created) {
      ::fchmod(created.Get(), mode);  // the umask has no say
      return created;
    }
    if (errno != EEXIST) {
      return Fd();
    }
    Fd existing = OpenSharedFile(folder, name, O_RDWR);
    if (existing || errno != ENOENT) {
      return existing;
    }
  }
}

/// The files, by path, whose locks were waited for in vain.
class KeptLocks {
 public:
  static KeptLocks& Own() {
    static auto* const locks = new KeptLocks;  // threads outlive the end of main
    return *locks;
  }
  bool MayWaitFor(const std::string& path) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_pauseEnds.find(path);
    return found == m_pauseEnds.end() || found->second <= SteadyClock::now();
  }
  void WaitedInVainFor(const std::string& path) {
    constexpr std::size_t kMaxKnown = 64;
    const std::lock_guard lock(m_mutex);
    if (m_pauseEnds.size() >= kMaxKnown) {
      m_pauseEnds.clear();
    }
    m_pauseEnds[path] = SteadyClock::now() + kLockPause;
  }

 private:
  std::mutex m_mutex;
  std::map<std::string, SteadyClock::time_point> m_pauseEnds;
};

/// @return 0; ETIMEDOUT: it was held all the time; EWOULDBLOCK: it was not waited for; or another errno value
int WaitForLock(int fd, const std::string& path, SteadyClock::time_point end) {
  constexpr std::chrono::microseconds kMaxPause{2000};
  if (!KeptLocks::Own().MayWaitFor(path)) {
    return EWOULDBLOCK;
  }
  std::chrono::microseconds pause{50};
  for (;;) {
    const int error = LockAtOnce(fd);
    if (error != EWOULDBLOCK) {
      return error;
    }
    if (SteadyClock::now() >= end) {
      KeptLocks::Own().WaitedInVainFor(path);
      return ETIMEDOUT;
    }
    std::this_thread::sleep_for(pause);
    pause = std::min(2 * pause, kMaxPause);
  }
}

}  // namespace

int LockAtOnce(int fd) {
  return Uninterrupted([fd] { return ::flock(fd, LOCK_EX | LOCK_NB); }) == 0 ? 0 : errno;
}

int LockInTime(int fd) {
  int error = LockAtOnce(fd);
  if (error == EWOULDBLOCK) {
    error = WaitForLock(fd, PathIn(fd, ""), SteadyClock::now() + kLockPatience);
  }
  return error == EWOULDBLOCK ? ETIMEDOUT : error;
}

void ReportKeptLock(int fd, const char* path) {
  const int holder = HolderOf(fd);
  if (holder > 0) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "%s is kept locked by process %d: continue or end that process", path, holder);
  } else if (holder < 0) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "%s is kept locked by another process, and %s, which names it, is not to be read from here: "
                   "look there from a shell, and continue or end that process",
                   path, kLocks);
  } else {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "%s is kept locked by another process: continue or end that process", path);
  }
}

void Unlock(int fd) { ::flock(fd, LOCK_UN); }

bool HasName(int folder, const char* name, int fd) {
  struct stat named {};
  struct stat open {};
  return ::fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(fd, &open) == 0 &&
         named.st_ino == open.st_ino && named.st_dev == open.st_dev;
}

Fd OpenLocked(int folder, const char* name, mode_t mode, LockWait wait) {
  const auto end = SteadyClock::now() + kLockPatience;
  for (;;) {
    Fd file = OpenOrCreate(folder, name, mode);
    if (!file) {
      return file;
    }
    int error = LockAtOnce(file.Get());
    if (error == EWOULDBLOCK && wait == LockWait::Wait) {
      const std::string path = PathIn(folder, name);
      error = WaitForLock(file.Get(), path, end);
      if (error == ETIMEDOUT) {
        ReportKeptLock(file.Get(), path.c_str());
      }
      error = error == EWOULDBLOCK ? ETIMEDOUT : error;
    }
    if (error != 0) {
      file.Reset();
      errno = error;
      return file;
    }
    if (HasName(folder, name, file.Get())) {
      return file;
    }
  }
}

}  // namespace hwapi::qis
