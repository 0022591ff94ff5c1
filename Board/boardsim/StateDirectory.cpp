#include "StateDirectory.h"

#include "SimError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace boardsim {
namespace {

namespace fs = std::filesystem;

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

[[noreturn]] void Fail(const std::string& what, int error) {
  throw SimError(ExitCode::Unreachable, what + ": " + std::strerror(error) + "; --state DIR chooses another folder");
}

/// A folder below /tmp could have been put there by someone else.
void RequireOwnFolder(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) Fail("cannot use the state folder " + path, errno);
  if (S_ISDIR(status.st_mode) && status.st_uid == geteuid()) return;
  throw SimError(ExitCode::Unreachable, "the state folder " + path +
                                            " is no folder of this user; --state DIR chooses "
                                            "another one");
}

std::optional<pid_t> ReadPid(int fd) {
  char text[16] = {};
  const ssize_t length = pread(fd, text, sizeof text - 1, 0);
  pid_t pid = 0;
  if (length <= 0 || std::from_chars(text, text + length, pid).ec != std::errc{}) return std::nullopt;
  return pid;
}

}  // namespace

StateDirectory StateDirectory::FromOption(const std::string& option) {
  if (!option.empty()) return StateDirectory(fs::absolute(option).lexically_normal());
  if (const std::string run = Environment("HWAPI_RUN"); !run.empty()) {
    return StateDirectory(fs::absolute(run).lexically_normal().parent_path());
  }
  const std::string base = Environment("XDG_RUNTIME_DIR");
  return StateDirectory(fs::path(base.empty() ? "/tmp" : base) / ("clm-" + std::to_string(geteuid())));
}

Fd StateDirectory::Lock() const {
  std::error_code error;
  fs::create_directories(m_root.parent_path(), error);
  if (mkdir(Root().c_str(), 0700) != 0 && errno != EEXIST) Fail("cannot make the state folder " + Root(), errno);
  RequireOwnFolder(Root());
  Fd lock(open(LockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!lock.Open()) Fail("cannot open " + LockFile(), errno);
  if (flock(lock.Get(), LOCK_EX | LOCK_NB) == 0) return lock;
  const std::optional<pid_t> pid = ReadPid(lock.Get());
  throw SimError(ExitCode::Refused,
                 "a board is up in " + Root() + (pid ? " already (process " + std::to_string(*pid) + ")" : " already") +
                     ": end it with `boardsim down --state " + Root() + "`, or choose another folder with --state");
}

void StateDirectory::NotePid(const Fd& lock, pid_t pid) const {
  const std::string text = std::to_string(pid) + "\n";
  if (ftruncate(lock.Get(), 0) != 0 || pwrite(lock.Get(), text.data(), text.size(), 0) < 0) {
    Fail("cannot write " + LockFile(), errno);
  }
}

std::optional<pid_t> StateDirectory::RunningPid() const {
  const Fd lock(open(LockFile().c_str(), O_RDWR | O_CLOEXEC));
  if (!lock.Open() || flock(lock.Get(), LOCK_SH | LOCK_NB) == 0) return std::nullopt;
  return ReadPid(lock.Get());
}

void StateDirectory::Prepare(bool fresh) const {
  std::error_code error;
  // Tags, sockets and registers are memory that a restart of a board clears.
  fs::remove_all(Run(), error);
  if (fresh) {
    for (const std::string& path : {Ffs(), Rom(), ResetAnswer(), SimulatorLog(), DaemonLog()})
      fs::remove_all(path, error);
  }
  for (const std::string& path : {Run(), Ffs(), Rom()}) {
    fs::create_directories(path, error);
    if (error) Fail("cannot make " + path, error.value());
  }
  fs::create_directory_symlink("..", DaemonRoot(), error);
  if (error) Fail("cannot make " + DaemonRoot(), error.value());
}

void StateDirectory::Join() const {
  if (!RunningPid()) {
    throw SimError(
        ExitCode::Unreachable,
        "no board is up in " + Root() + "; bring one up with `boardsim up FILE`, or name its folder with --state");
  }
  SetEnvironment();
}

void StateDirectory::SetEnvironment() const {
  setenv("HWAPI_RUN", Run().c_str(), 1);
  setenv("HWAPI_BOARD", Description().c_str(), 1);
}

}  // namespace boardsim
