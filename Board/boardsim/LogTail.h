/// @file
/// The end of a log, for a message about a board that does not come up.
#pragma once

#include <cstdint>
#include <string>

namespace boardsim {

/// What is written to a log from the construction on: earlier runs of the board wrote to it, too.
class LogTail {
 public:
  /// @param path the log; it need not exist
  explicit LogTail(std::string path);
  const std::string& Path() const { return m_path; }
  /// @return the last lines, indented; "" when there are none
  std::string Lines() const;

 private:
  std::string m_path;
  std::uintmax_t m_begin;
};

}  // namespace boardsim
