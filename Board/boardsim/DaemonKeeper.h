/// @file
/// Keeps the daemon running, as the board's init does.
#pragma once

#include "Process.h"
#include "RestartPause.h"
#include "StateDirectory.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace boardsim {

/// Starts the daemon in its own root, and again whenever it ends.
class DaemonKeeper {
 public:
  /// @param daemon  program file
  /// @param refused called on a thread of this object, at most once, when the daemon cannot use the board (it ends with
  ///                status 2) at its first start, which another one would not change: it is not started again then.
  ///                Later, what was there once may come back, and so may the daemon
  DaemonKeeper(StateDirectory state, std::string daemon, std::function<void()> refused);
  /// Ends the daemon and waits until it is gone.
  ~DaemonKeeper();
  DaemonKeeper(const DaemonKeeper&) = delete;
  DaemonKeeper& operator=(const DaemonKeeper&) = delete;

  /// @return the daemon's process id; 0 when it does not run just now
  pid_t Pid() const;
  /// @return how often it was started
  unsigned Starts() const;
  /// Kills the daemon, which learns nothing of it, as in a reset of the board; starts it again once @p change has
  /// returned. What that throws passes through, and the daemon is started all the same. One thread at a time.
  void Reset(const std::function<void()>& change);

 private:
  void Loop();
  /// Starts it and notes its process. @return the child to wait for
  pid_t Start();
  /// Waits before the next start: not at all after a reset. @return false when there is none
  bool Pause(const std::string& outcome, std::chrono::milliseconds ran);

  const StateDirectory m_state;
  const std::string m_daemon;
  const std::function<void()> m_refused;
  RestartPause m_pause;

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_stopping = false;
  bool m_held = false;  ///< the board is being reset: no start
  bool m_down = false;  ///< the daemon does not run, and is not being started
  unsigned m_starts = 0;
  pid_t m_pid = 0;
  std::shared_ptr<ProcessHandle> m_process;

  std::thread m_thread;
};

}  // namespace boardsim
