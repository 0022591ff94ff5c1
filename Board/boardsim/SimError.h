/// @file
/// How a boardsim command ends when it cannot do what it was asked.
#pragma once

#include <stdexcept>
#include <string>

namespace boardsim {

/// Exit status of the program.
enum class ExitCode : int {
  Done = 0,
  Refused = 1,      ///< the board answered no, or is up already
  Usage = 2,        ///< the command line or the board description is wrong
  Unreachable = 3,  ///< no board is up, or it did not come up
};

/// Ends a command with an exit status and a text that says what happened, where, and what to do.
class SimError : public std::runtime_error {
 public:
  SimError(ExitCode code, const std::string& text) : std::runtime_error(text), m_code(code) {}
  ExitCode Code() const { return m_code; }

 private:
  ExitCode m_code;
};

}  // namespace boardsim
