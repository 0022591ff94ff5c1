/// @file
/// The file system in memory. All functions are called with the platform's mutex held; results are 0 or an errno value.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace fake::internal {

/// Files and directories by normalised path.
struct FileSystem {
  std::map<std::string, std::string> files;
  std::set<std::string> directories = {"/"};
  std::set<std::string> readOnly;

  bool IsFile(const std::string& path) const { return files.contains(path); }
  bool IsDirectory(const std::string& path) const { return directories.contains(path); }

  /// @return 0 when a file can be put there
  int CheckWritable(const std::string& path) const;
  int CreateDirectory(const std::string& path);
  int Remove(const std::string& path);
  /// @return names in a directory, in byte order
  std::vector<std::string> Names(const std::string& directory) const;

 private:
  bool IsReadOnly(const std::string& path) const;
};

/// @return absolute path without ".", "..", doubled or trailing slashes
std::string NormalPath(const std::string& path);
/// @return the directory that holds it
std::string ParentOf(const std::string& path);

}  // namespace fake::internal
