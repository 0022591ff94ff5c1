/// @file
/// Child processes and processes that are waited for.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace boardsim {

/// A file descriptor that is closed at the end.
class Fd {
 public:
  explicit Fd(int fd = -1) : m_fd(fd) {}
  Fd(Fd&& other) noexcept : m_fd(other.Release()) {}
  Fd& operator=(Fd&& other) noexcept;
  ~Fd() { Close(); }
  int Get() const { return m_fd; }
  bool Open() const { return m_fd >= 0; }
  int Release();
  void Close();

 private:
  int m_fd;
};

/// @return the command line of a program that was built with this one. The words of the variable BOARDSIM_EMULATOR come
///         first: without them the host could not run a board's program of another processor
std::vector<std::string> OwnProgram(const std::string& file, const std::vector<std::string>& arguments = {});

/// How a child is started.
struct SpawnSettings {
  std::vector<std::string> command;  ///< program (found through PATH when it has no '/') and its arguments
  std::string logFile;               ///< receives its output, appended; empty: the caller's output
  bool ownSession = false;           ///< no terminal signals reach it
  int inheritedFd = -1;              ///< a descriptor that it gets under the same number
};

/// Starts a child: no signals blocked, standard input empty.
/// @return its process id
/// @throw SimError (unreachable) when it cannot be started
pid_t Spawn(const SpawnSettings& settings);

/// A process that may not be a child.
class ProcessHandle {
 public:
  /// @param pid the handle is not Open() when there is no such process
  explicit ProcessHandle(pid_t pid);
  bool Open() const { return m_fd.Open(); }
  /// A descriptor that is readable once the process has ended.
  int Descriptor() const { return m_fd.Get(); }
  void Signal(int number) const;
  /// @return whether the process ended within the time
  bool WaitForEnd(std::chrono::milliseconds longest) const;
  /// SIGTERM, and SIGKILL when that does not end it within @p patience.
  void Terminate(std::chrono::milliseconds patience) const;

 private:
  Fd m_fd;
};

/// @return what WaitForChild says of a child that ended by itself with a status: "exit status 1"
std::string ExitText(int status);
/// Waits for a child and takes its status.
/// @return as ExitText, or "signal 9 (Killed)"
std::string WaitForChild(pid_t pid);

}  // namespace boardsim
