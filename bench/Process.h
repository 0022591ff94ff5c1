/// @file
/// A child process on the benchmark's processor core.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// Keeps this process and its children on one core, so that a round trip is not a question of where they happen to run.
void StayOnOneCore();

/// What a program is started with beside its command line.
struct Surroundings {
  std::map<std::string, std::string> environment;
  std::string log = "/dev/null";  ///< file that its standard error is appended to
  rlim_t descriptors = 0;         ///< its limit of open descriptors; 0: as this process has
};

/// A program that reports its readiness to NOTIFY_SOCKET, as under a supervisor. Killed with this object.
class Daemon {
 public:
  /// Starts the program and returns when it said READY=1. Ends the process with a message when it does not.
  Daemon(const std::vector<std::string>& command, const Surroundings& surroundings);
  Daemon(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment)
      : Daemon(command, Surroundings{.environment = environment}) {}
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  ~Daemon();

  pid_t Pid() const { return m_pid; }
  /// @return whether it has not ended
  bool IsAlive() const;
  /// Where its signs of life arrive, if WATCHDOG_USEC asks for them.
  int NotifySocket() const { return m_notifySocket; }
  /// @return seconds from the start to the readiness
  double SecondsToReady() const { return m_secondsToReady; }

 private:
  pid_t m_pid = 0;
  int m_notifySocket = -1;
  double m_secondsToReady = 0;
};

/// Ends the process with a message.
[[noreturn]] void Die(const std::string& what);

}  // namespace bench
