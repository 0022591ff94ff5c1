/// @file
/// The folders below the board's run directory in which processes of the board meet.
#pragma once

#include <sys/types.h>

#include <string>

namespace hwapi::qis {

/// A folder below the run directory, open as long as the process lives. It is created with the permissions of the run
/// directory: who may write there may also serve tasks and set tags.
class RunFolder {
 public:
  /// Opens or creates the folder (the run directory itself, too); "" is the run directory.
  explicit RunFolder(const char* name);

  /// @return descriptor of the folder, -1 when it could not be opened
  int Get() const { return m_fd; }
  /// @return errno value of the failed opening, else 0
  int Error() const { return m_error; }
  /// @return full path
  const std::string& Path() const { return m_path; }
  /// @return mode for shared files in this folder: read and write for whom the folder is writable
  mode_t FileMode() const { return m_fileMode; }

 private:
  std::string m_path;
  int m_fd = -1;
  int m_error = 0;
  mode_t m_fileMode = 0644;
};

}  // namespace hwapi::qis
