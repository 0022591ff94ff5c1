/// @file
/// Programs that a test runs: with a deadline for everything, and killed at the end.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace boardtest {

/// Longest wait for anything; generous, as the machine may be busy.
inline constexpr std::chrono::seconds kDeadline{30};

/// How a program ended and what it wrote.
struct Result {
  int status = -1;  ///< exit status; 128 and the signal's number when a signal ended it
  std::string out;
  std::string err;
};

/// A running program. What it writes is kept.
class Program {
 public:
  /// Starts it.
  /// @param environment variables that are set; an empty value unsets one
  Program(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment);
  /// Ends it with SIGTERM, or SIGKILL when that does not help.
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Reads until its output or diagnostics hold @p text @p times times.
  /// @return whether that came before the deadline and before the program's end
  bool WaitForText(const std::string& text, unsigned times = 1);
  /// Waits for the next line of its output, from the first one on.
  /// @return the line without its end; nothing when none came before the deadline or the program's end
  std::optional<std::string> NextLine();
  /// Sends a signal.
  void Signal(int number) const;
  /// Stops reading its output, as a pipe's reader that has seen enough.
  void CloseOutput();
  /// Reads until it ends. Kills it at the deadline.
  Result Wait();

  const Result& SoFar() const { return m_result; }
  /// @return how often its output holds @p text so far
  unsigned Count(const std::string& text) const;

 private:
  bool ReadSome(std::chrono::steady_clock::time_point deadline);
  void Reap();

  pid_t m_pid = -1;
  int m_out = -1;
  int m_err = -1;
  Result m_result;
  std::size_t m_nextLine = 0;  ///< where the line begins that NextLine returns next
};

/// Runs a program to its end.
Result Run(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment);

}  // namespace boardtest
