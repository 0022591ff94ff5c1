// Directories.
#include "AaFile.h"
#include "AaSysLog.h"
#include "ComLog.h"
#include "Export.h"
#include "Replacement.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

using hwapi::qis::Fd;
using hwapi::qis::kPlatformFeature;
using hwapi::qis::Uninterrupted;

namespace {

/// Makes a new directory last: without that one power cut would take what is synced inside with it.
void SyncFolderOf(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  const Fd fd(
      Uninterrupted([&] { return ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if ((fd && Uninterrupted([&] { return ::fsync(fd.Get()); }) == 0) || errno == EINVAL) {
    return;  // EINVAL: a file system whose folders need no sync
  }
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "Directory %s is made, but a power cut may take it away: the one above cannot be synced: %s",
                 path.c_str(), std::strerror(errno));
}

/// @return 0, also when it is there already, else an errno value
int MakeDirectory(const std::string& path) {
  if (::mkdir(path.c_str(), 0755) == 0) {
    SyncFolderOf(path);
    return 0;
  }
  const int error = errno;
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
  }
  return error == EEXIST ? errno : error;
}

int MakeDirectories(const char* name) try {
  const std::string path = name;
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    if (const int error = MakeDirectory(path.substr(0, slash)); error != 0) {
      return error;
    }
  }
  return path.back() == '/' ? 0 : MakeDirectory(path);
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

int ReadNames(const char* path, std::vector<std::string>& names) {
  const std::unique_ptr<DIR, hwapi::qis::CloseDir> dir(::opendir(path));
  if (!dir) {
    return errno;
  }
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(dir.get());
    if (entry == nullptr) {
      return errno;
    }
    std::string name = entry->d_name;
    if (hwapi::qis::IsTemporary(name)) {
      hwapi::qis::RemoveIfStray(::dirfd(dir.get()), name);
    } else if (name != "." && name != "..") {
      names.push_back(std::move(name));
    }
  }
}

/// One block: the array, then its texts.
char** ToArray(const std::vector<std::string>& names) {
  std::size_t size = names.size() * sizeof(char*);
  for (const std::string& name : names) {
    size += name.size() + 1;
  }
  auto** const array = static_cast<char**>(std::malloc(size));
  if (array == nullptr) {
    return nullptr;
  }
  char* text = reinterpret_cast<char*>(array + names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    array[i] = text;
    std::memcpy(text, names[i].c_str(), names[i].size() + 1);
    text += names[i].size() + 1;
  }
  return array;
}

}  // namespace

QIS_EXPORT i32 AaFileCreateDir(const char* path) {
  if (path == nullptr || *path == '\0') {
    return EINVAL;
  }
  const int error = MakeDirectories(path);
  if (error != 0) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature, "Directory %s cannot be made: %s%s", path,
                   std::strerror(error), hwapi::qis::Remedy(error));
  }
  return error;
}

QIS_EXPORT i32 AaFileListDir(const char* path, char*** names, u32* count) try {
  if (path == nullptr || names == nullptr || count == nullptr) {
    return EINVAL;
  }
  *names = nullptr;
  *count = 0;
  std::vector<std::string> found;
  const int error = ReadNames(path, found);
  if (error != 0 || found.empty()) {
    return error;
  }
  std::ranges::sort(found);
  *names = ToArray(found);
  if (*names == nullptr) {
    return ENOMEM;
  }
  *count = static_cast<u32>(found.size());
  return 0;
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

QIS_EXPORT void AaFileFreeListDirArray(char** names, u32) { std::free(names); }
