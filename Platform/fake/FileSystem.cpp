#include "FileSystem.h"

#include <cerrno>

namespace fake::internal {
namespace {

/// What the paths of all that lies below a directory begin with.
std::string Below(const std::string& directory) { return directory == "/" ? directory : directory + "/"; }

}  // namespace

std::string NormalPath(const std::string& path) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string part = path.substr(begin, end - begin);
    if (part == ".." && !parts.empty()) parts.pop_back();
    if (!part.empty() && part != "." && part != "..") parts.push_back(part);
    begin = end + 1;
  }
  std::string normal;
  for (const std::string& part : parts) normal += "/" + part;
  return normal.empty() ? "/" : normal;
}

std::string ParentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool FileSystem::IsReadOnly(const std::string& path) const {
  for (const std::string& directory : readOnly) {
    if (path == directory || path.starts_with(Below(directory))) return true;
  }
  return false;
}

int FileSystem::CheckWritable(const std::string& path) const {
  if (IsDirectory(path)) return EISDIR;
  const std::string parent = ParentOf(path);
  if (IsFile(parent)) return ENOTDIR;
  if (!IsDirectory(parent)) return ENOENT;
  return IsReadOnly(path) ? EROFS : 0;
}

int FileSystem::CreateDirectory(const std::string& path) {
  if (IsDirectory(path)) return 0;
  if (IsFile(path)) return EEXIST;
  const std::string parent = ParentOf(path);
  if (IsFile(parent)) return ENOTDIR;
  if (const int problem = CreateDirectory(parent); problem != 0) return problem;
  if (IsReadOnly(path)) return EROFS;
  directories.insert(path);
  return 0;
}

int FileSystem::Remove(const std::string& path) {
  if (IsDirectory(path)) return EISDIR;
  if (!IsFile(path)) return ENOENT;
  if (IsReadOnly(path)) return EROFS;
  files.erase(path);
  return 0;
}

std::vector<std::string> FileSystem::Names(const std::string& directory) const {
  const std::string below = Below(directory);
  std::set<std::string> names;
  const auto add = [&](const std::string& path) {
    if (path != "/" && ParentOf(path) == directory) names.insert(path.substr(below.size()));
  };
  for (const auto& [path, content] : files) add(path);
  for (const std::string& path : directories) add(path);
  return {names.begin(), names.end()};
}

}  // namespace fake::internal
