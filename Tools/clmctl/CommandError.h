/// @file
/// How a command ends when it cannot do what it was asked.
#pragma once

#include <stdexcept>
#include <string>

namespace clmctl {

/// Exit status of the program.
enum class ExitCode : int {
  Done = 0,
  Refused = 1,      ///< the service (or the platform) answered no
  Usage = 2,        ///< the command line is wrong
  Unreachable = 3,  ///< nobody serves the endpoint, or no answer came in time
};

/// Ends a command with an exit status and a text that says what happened, where, and what to do.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode code, const std::string& text) : std::runtime_error(text), m_code(code) {}
  ExitCode Code() const { return m_code; }

 private:
  ExitCode m_code;
};

}  // namespace clmctl
