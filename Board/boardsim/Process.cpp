#include "Process.h"

#include "SimError.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <utility>

// The C library's header lacks this in its older versions.
extern "C" {
#include <sys/pidfd.h>
}

extern char** environ;

namespace boardsim {
namespace {

/// Attributes and file actions of a spawn, freed at the end.
class SpawnPlan {
 public:
  explicit SpawnPlan(const SpawnSettings& settings) {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (!settings.logFile.empty()) {
      constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND;
      posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, settings.logFile.c_str(), kFlags, 0644);
      posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    }
    // A dup2 to itself lets a descriptor stay open in the child.
    if (settings.inheritedFd >= 0) {
      posix_spawn_file_actions_adddup2(&actions, settings.inheritedFd, settings.inheritedFd);
    }
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    const int session = settings.ownSession ? POSIX_SPAWN_SETSID : 0;
    posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | session));
  }
  ~SpawnPlan() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

}  // namespace

Fd& Fd::operator=(Fd&& other) noexcept {
  Close();
  m_fd = other.Release();
  return *this;
}

int Fd::Release() { return std::exchange(m_fd, -1); }

void Fd::Close() {
  if (m_fd >= 0) close(Release());
}

std::vector<std::string> OwnProgram(const std::string& file, const std::vector<std::string>& arguments) {
  std::vector<std::string> command;
  const char* const emulator = std::getenv("BOARDSIM_EMULATOR");
  std::istringstream words(emulator != nullptr ? emulator : "");
  for (std::string word; words >> word;) command.push_back(word);
  command.push_back(file);
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

pid_t Spawn(const SpawnSettings& settings) {
  std::vector<char*> arguments;
  for (const std::string& argument : settings.command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const SpawnPlan plan(settings);
  pid_t pid = 0;
  const int error = posix_spawnp(&pid, arguments.front(), &plan.actions, &plan.attributes, arguments.data(), environ);
  if (error != 0) {
    throw SimError(ExitCode::Unreachable, "cannot start " + settings.command.front() + ": " + std::strerror(error));
  }
  return pid;
}

ProcessHandle::ProcessHandle(pid_t pid) : m_fd(pid > 0 ? pidfd_open(pid, 0) : -1) {
  if (m_fd.Open()) fcntl(m_fd.Get(), F_SETFD, FD_CLOEXEC);
}

void ProcessHandle::Signal(int number) const {
  if (m_fd.Open()) pidfd_send_signal(m_fd.Get(), number, nullptr, 0);
}

bool ProcessHandle::WaitForEnd(std::chrono::milliseconds longest) const {
  if (!m_fd.Open()) return true;
  const auto deadline = std::chrono::steady_clock::now() + longest;
  while (true) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    pollfd ended{.fd = m_fd.Get(), .events = POLLIN, .revents = 0};
    const int result = poll(&ended, 1, left > 0 ? static_cast<int>(left) : 0);
    if (result > 0) return true;
    if (result == 0 || errno != EINTR) return false;
  }
}

void ProcessHandle::Terminate(std::chrono::milliseconds patience) const {
  Signal(SIGTERM);
  if (WaitForEnd(patience)) return;
  Signal(SIGKILL);
  WaitForEnd(patience);
}

std::string ExitText(int status) { return "exit status " + std::to_string(status); }

std::string WaitForChild(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) return std::string("unknown status: ") + std::strerror(errno);
  }
  if (!WIFSIGNALED(status)) return ExitText(WEXITSTATUS(status));
  return "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
}

}  // namespace boardsim
