/// @file
/// What a program does to a file system.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace flash {

/// Identity of a file or folder, whatever its name is: its inode.
using FileId = std::uint64_t;

/// One change, or one sync. Which members have a meaning depends on the kind.
struct Operation {
  enum class Kind {
    Create,         ///< path, file, mode
    MakeDirectory,  ///< path, file, mode
    Write,          ///< file, offset, data
    Truncate,       ///< file
    SetMode,        ///< file, mode
    Sync,           ///< file
    SyncFolder,     ///< path
    Rename,         ///< path, newPath, file
    Remove,         ///< path
  };

  Kind kind{};
  std::string path{};  ///< absolute, without symbolic links
  std::string newPath{};
  FileId file = 0;
  std::size_t offset = 0;
  std::string data{};
  mode_t mode = 0;
};
using Operations = std::vector<Operation>;

/// @return the operations as a text for another process
std::string ToText(const Operations& operations);
Operations FromText(const std::string& text);

/// @return the folder part of an absolute path
std::string FolderOf(const std::string& path);

}  // namespace flash
