/// @file
/// A process that drives fans, and the fan guard it leaves behind.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

/// Processes by what the kernel tells of them.
namespace process {

/// Makes this process the parent of what its children leave behind, so that it can wait for that.
inline void AdoptOrphans() { EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); }

/// @return one field of a process's status, e.g. "Name"; "" when there is none
inline std::string Status(pid_t pid, const std::string& field) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(field + ":\t")) return line.substr(field.size() + 2);
  }
  return {};
}

/// @return a child of a process by its name; -1 when there is none
inline pid_t ChildOf(pid_t parent, const std::string& name) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string number = entry.path().filename();
    if (number.find_first_not_of("0123456789") != number.npos) continue;
    const pid_t pid = std::stoi(number);
    if (Status(pid, "PPid") == std::to_string(parent) && Status(pid, "Name") == name) return pid;
  }
  return -1;
}

/// Waits until something holds that the kernel does not announce. @return whether it does
template <typename Condition>
bool Await(Condition holds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

/// Waits until a process has a child of that name. @return the child; -1 when none comes
inline pid_t AwaitChildOf(pid_t parent, const std::string& name) {
  pid_t child = -1;
  Await([&] { return (child = ChildOf(parent, name)) > 0; });
  return child;
}

/// Ends a child of somebody else, and waits until nothing of it is left but its status: its first thread may be gone
/// while another one, of a sanitizer, still keeps descriptors open.
inline void KillOthersChild(pid_t pid) {
  kill(pid, SIGKILL);
  EXPECT_TRUE(Await([pid] { return Status(pid, "State").starts_with('Z') && Status(pid, "Threads") == "1"; }));
}

/// Waits until a child of this process is gone. @return its exit status; -1 when a signal ended it
inline int AwaitEnd(pid_t pid) {
  int status = 0;
  EXPECT_EQ(waitpid(pid, &status, 0), pid);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Waits until a child of this process is stopped.
inline void AwaitStop(pid_t pid) {
  int status = 0;
  EXPECT_EQ(waitpid(pid, &status, WUNTRACED), pid);
  EXPECT_TRUE(WIFSTOPPED(status));
}

}  // namespace process

/// Runs a piece of work in a child process, and then another one when it is told to. Make it before this process uses
/// the drivers: the child must open them for itself.
class Daemon {
 public:
  /// Returns when the work is done.
  /// @param work returns an int, which is Result()
  /// @param then called after Go(); the process ends with status 0 when it returns
  template <typename Work, typename Then>
  Daemon(Work work, Then then) {
    int done[2], go[2];
    if (pipe(done) != 0 || pipe(go) != 0) return;
    std::fflush(nullptr);
    m_pid = fork();
    if (m_pid == 0) {
      const rlimit none{0, 0};
      setrlimit(RLIMIT_CORE, &none);
      close(go[1]);
      const int result = work();
      if (write(done[1], &result, sizeof result) != sizeof result) _exit(1);
      char ignored = 0;
      if (read(go[0], &ignored, 1) == 1) then();
      exit(0);
    }
    close(done[1]);
    close(go[0]);
    m_go = go[1];
    if (read(done[0], &m_result, sizeof m_result) != sizeof m_result) ADD_FAILURE() << "the work was not done";
    close(done[0]);
  }
  /// A process that does nothing after its work.
  template <typename Work>
  explicit Daemon(Work work) : Daemon(work, [] {}) {}
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  ~Daemon() {
    if (m_pid > 0) Kill();
    close(m_go);
  }

  int Result() const { return m_result; }
  pid_t Pid() const { return m_pid; }
  /// @return its fan guard, once that has let go of what it inherited
  pid_t Guard() const { return process::AwaitChildOf(m_pid, "fan-guard"); }

  /// Lets it go on and waits until it is gone. @return its exit status; -1 when a signal ended it
  int Go() {
    EXPECT_EQ(write(m_go, "g", 1), 1);
    return Wait();
  }
  /// Ends it by a signal and waits until it is gone.
  void Kill(int signal = SIGKILL) {
    kill(m_pid, signal);
    Wait();
  }

 private:
  int Wait() { return process::AwaitEnd(std::exchange(m_pid, -1)); }

  pid_t m_pid = -1;
  int m_go = -1;
  int m_result = -1;
};
