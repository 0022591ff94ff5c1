/// @file
/// A process that simulates the board's hardware.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs a piece of work in a child process, which stays until it is told to end. Make it before this process uses the
/// drivers: the child must open them for itself.
class Simulator {
 public:
  /// Returns when the work is done.
  template <typename Work>
  explicit Simulator(Work work) {
    int done[2];
    if (pipe(done) != 0) return;
    m_pid = fork();
    if (m_pid == 0) {
      const char ok = work() ? 1 : 0;
      if (write(done[1], &ok, 1) != 1) _exit(1);
      for (;;) pause();
    }
    char ok = 0;
    m_up = m_pid > 0 && read(done[0], &ok, 1) == 1 && ok == 1;
    close(done[0]);
    close(done[1]);
  }
  Simulator(const Simulator&) = delete;
  Simulator& operator=(const Simulator&) = delete;
  ~Simulator() { Kill(); }

  /// @return whether the work succeeded
  bool Up() const { return m_up; }
  /// @return whether the process has not died meanwhile
  bool Alive() const { return m_pid > 0 && waitpid(m_pid, nullptr, WNOHANG) == 0; }
  /// Ends the process without any chance to tidy up, and waits until it is gone.
  void Kill() {
    if (m_pid <= 0) return;
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
    m_pid = -1;
  }

 private:
  pid_t m_pid = -1;
  bool m_up = false;
};
