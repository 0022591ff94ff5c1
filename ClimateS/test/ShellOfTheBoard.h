/// @file
/// The shell that the board has, in place of this machine's own. Replaces system() of the whole program.
#pragma once

#include <string>
#include <vector>

namespace ps::hwapi::common::climate {

/// What the commands of the code under test meet: a shell whose `echo` knows -e. Whatever this machine has as its
/// /bin/sh hands them on unread. Made before the first command, in a test with files of its own.
class ShellOfTheBoard {
 public:
  ShellOfTheBoard();
  ShellOfTheBoard(const ShellOfTheBoard&) = delete;
  ShellOfTheBoard& operator=(const ShellOfTheBoard&) = delete;
  ~ShellOfTheBoard();

  /// @return the commands so far, word for word
  const std::vector<std::string>& Commands() const { return m_commands; }
  /// Lets every command from now on give a result, and do nothing.
  void AnswerWith(int result) {
    m_answers = true;
    m_answer = result;
  }

  /// Runs a command. @return what system() returns
  int Run(const char* command);

 private:
  std::vector<std::string> m_commands;
  bool m_answers = false;
  int m_answer = 0;
};

}  // namespace ps::hwapi::common::climate
