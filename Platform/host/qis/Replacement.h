/// @file
/// Replacing a file whole or not at all.
#pragma once

#include "Fd.h"

#include <memory>
#include <string>

namespace hwapi::qis {

/// The new content of a file, written into a hidden temporary beside it (".NAME.new-PID-N"). The temporary is locked as
/// long as it is in use: one without a lock was left by a process that died, and is removed by the next replacement or
/// listing in that folder.
class Replacement {
 public:
  /// Begins to replace @p path; a symbolic link is followed. The mode of a file that is there is kept, a new one is
  /// 0644.
  /// @return null with errno set
  static std::unique_ptr<Replacement> Begin(const std::string& path);
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  /// Removes the temporary, unless it was committed.
  ~Replacement();

  /// The temporary, to be written.
  int File() const { return m_file.Get(); }
  /// Puts the new content in place and makes it last.
  /// @return 0, else an errno value: the old content is still there then
  int Commit();

 private:
  Replacement(Fd folder, std::string name) : m_folder(std::move(folder)), m_name(std::move(name)) {}
  int CreateTemporary();
  int TakeOverMode();

  Fd m_folder;
  std::string m_name;
  std::string m_temporary;
  Fd m_file;
};

/// @return whether a file of this name is such a temporary
bool IsTemporary(const std::string& name);
/// Removes a temporary whose process died.
void RemoveIfStray(int folder, const std::string& name);

}  // namespace hwapi::qis
