/// @file
/// Keeps the daemon running, as the board's init does.
#pragma once

#include "Process.h"
#include "RestartPause.h"
#include "StateDirectory.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace boardsim {

/// Starts the daemon in its own root, and again whenever it ends.
class DaemonKeeper {
 public:
  /// @param daemon program file
  DaemonKeeper(StateDirectory state, std::string daemon);
  /// Ends the daemon and waits until it is gone.
  ~DaemonKeeper();
  DaemonKeeper(const DaemonKeeper&) = delete;
  DaemonKeeper& operator=(const DaemonKeeper&) = delete;

  /// @return the daemon's process id; 0 when it does not run just now
  pid_t Pid() const;
  /// @return how often it was started
  unsigned Starts() const;

 private:
  void Loop();
  /// Starts it and notes its process. @return the child to wait for
  pid_t Start();
  /// Waits before the next start. @return false when the board goes down
  bool Pause(const std::string& outcome, std::chrono::milliseconds ran);

  const StateDirectory m_state;
  const std::string m_daemon;
  RestartPause m_pause;

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_stopping = false;
  unsigned m_starts = 0;
  pid_t m_pid = 0;
  std::shared_ptr<ProcessHandle> m_process;

  std::thread m_thread;
};

}  // namespace boardsim
