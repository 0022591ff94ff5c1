/// @file
/// Replacing a file whole or not at all.
#pragma once

#include "Fd.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <string>

namespace hwapi::qis {

/// @return what can be done about an error of writing, to follow its text: "; DO THIS", or nothing
const char* Remedy(int error);

struct CloseDir {
  void operator()(DIR* dir) const { ::closedir(dir); }
};

/// The new content of a file, written into a hidden temporary beside it (".NAME.new-PID-N"). The temporary is locked as
/// long as it is in use: one without a lock was left by a process that died, and is removed by the next replacement or
/// listing in that folder.
class Replacement {
 public:
  /// Begins to replace @p path; a symbolic link is followed. The mode of a file that is there is kept, a new one is
  /// 0644.
  /// @return null with errno set
  static std::unique_ptr<Replacement> Begin(const std::string& path);
  /// As Begin, for a copy: it can be read by nobody who may not read its source. The mode and the owner of a file that
  /// is there are kept only as far as that allows.
  static std::unique_ptr<Replacement> BeginCopy(const std::string& path, const struct stat& source);
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  /// Removes the temporary, unless it was committed.
  ~Replacement();

  /// Appends to the new content.
  /// @return 0, else an errno value: what has been written of it is not told
  int Write(const char* bytes, std::size_t size);
  /// Puts the new content in place and makes it last.
  /// @return 0, else an errno value: the old content is still there then
  int Commit();

 private:
  explicit Replacement(std::string path) : m_path(std::move(path)) {}
  int FindTarget();
  int OpenFolderOf(const std::string& path);
  void RemoveStrays();
  int CreateTemporary();
  static std::unique_ptr<Replacement> Begin(const std::string& path, const struct stat* source);
  int TakeOverOwnerAndMode(const struct stat* source);
  void MakeFolderLast();

  int Folder() const { return ::dirfd(m_folder.get()); }

  std::string m_path;  ///< as it was given
  std::unique_ptr<DIR, CloseDir> m_folder;
  std::string m_name;
  std::string m_temporary;
  Fd m_file;
  struct stat m_old {};  ///< of the file that is there; no mode when there is none
  struct stat m_new {};  ///< of the temporary when it was made
};

/// @return whether a file of this name is such a temporary
bool IsTemporary(const std::string& name);
/// Removes a temporary whose process died.
void RemoveIfStray(int folder, const std::string& name);

/// Repeats a system call for as long as signals interrupt it.
template <typename Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) {
    result = call();
  }
  return result;
}

}  // namespace hwapi::qis
