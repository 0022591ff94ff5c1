/// @file
/// A child process on the benchmark's processor core.
#pragma once

#include <sys/types.h>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// Keeps this process and its children on one core, so that a round trip is not a question of where they happen to run.
void StayOnOneCore();

/// A program that reports its readiness to NOTIFY_SOCKET, as under a supervisor. Killed with this object.
class Daemon {
 public:
  /// Starts the program and returns when it said READY=1. Ends the process with a message when it does not.
  Daemon(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment);
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  ~Daemon();

  pid_t Pid() const { return m_pid; }
  /// @return seconds from the start to the readiness
  double SecondsToReady() const { return m_secondsToReady; }

 private:
  pid_t m_pid = 0;
  double m_secondsToReady = 0;
};

/// Ends the process with a message.
[[noreturn]] void Die(const std::string& what);

}  // namespace bench
