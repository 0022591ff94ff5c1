// Files and directories.
#include "AaFile.h"

#include "Export.h"
#include "Replacement.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using hwapi::qis::Fd;
using hwapi::qis::Replacement;

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

struct TAaFile {
  std::unique_ptr<Replacement> replacement;  ///< null when it is read
  Stream stream;
  int error = 0;  ///< of the first write that failed
};

namespace {

struct CloseDir {
  void operator()(DIR* dir) const { ::closedir(dir); }
};

TAaFile* OpenToRead(const char* path) {
  Fd fd(::open(path, O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!fd || ::fstat(fd.Get(), &status) != 0 || S_ISDIR(status.st_mode)) {
    return nullptr;
  }
  Stream stream(::fdopen(fd.Get(), "r"));
  if (!stream) {
    return nullptr;
  }
  static_cast<void>(fd.Release());  // the stream closes it
  return new TAaFile{.replacement = nullptr, .stream = std::move(stream)};
}

TAaFile* OpenToReplace(const char* path) {
  std::unique_ptr<Replacement> replacement = Replacement::Begin(path);
  if (!replacement) {
    return nullptr;
  }
  Fd fd(::fcntl(replacement->File(), F_DUPFD_CLOEXEC, 0));
  Stream stream(fd ? ::fdopen(fd.Get(), "w") : nullptr);
  if (!stream) {
    return nullptr;
  }
  static_cast<void>(fd.Release());  // the stream closes it
  return new TAaFile{.replacement = std::move(replacement), .stream = std::move(stream)};
}

/// @return 0, else an errno value
int WriteAll(int file, const char* bytes, std::size_t size) {
  while (size != 0) {
    const ssize_t written = ::write(file, bytes, size);
    if (written < 0 && errno != EINTR) {
      return errno;
    }
    const std::size_t done = written < 0 ? 0 : static_cast<std::size_t>(written);
    bytes += done;
    size -= done;
  }
  return 0;
}

int CopyAll(int source, int target) {
  std::array<char, 16 * 1024> buffer;
  for (;;) {
    const ssize_t size = ::read(source, buffer.data(), buffer.size());
    if (size < 0 && errno == EINTR) {
      continue;
    }
    if (size <= 0) {
      return size < 0 ? errno : 0;
    }
    if (const int error = WriteAll(target, buffer.data(), static_cast<std::size_t>(size)); error != 0) {
      return error;
    }
  }
}

bool IsOfType(const char* path, mode_t type) {
  struct stat status {};
  return path != nullptr && ::stat(path, &status) == 0 && (status.st_mode & S_IFMT) == type;
}

int MakeDirectory(const std::string& path) {
  if (::mkdir(path.c_str(), 0755) == 0) {
    return 0;
  }
  const int error = errno;
  return IsOfType(path.c_str(), S_IFDIR) ? 0 : error;
}

int ReadNames(const char* path, std::vector<std::string>& names) {
  const std::unique_ptr<DIR, CloseDir> dir(::opendir(path));
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

QIS_EXPORT TAaFile* AaFileOpen(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) {
    return nullptr;
  }
  if (std::string_view(mode) == "r") {
    return OpenToRead(path);
  }
  return std::string_view(mode) == "w" ? OpenToReplace(path) : nullptr;
}

QIS_EXPORT i32 AaFileClose(TAaFile* file) {
  const std::unique_ptr<TAaFile> owned(file);
  if (!owned) {
    return EINVAL;
  }
  if (!owned->replacement) {
    return 0;
  }
  if (owned->error == 0 && std::fflush(owned->stream.get()) != 0) {
    owned->error = errno;
  }
  return owned->error != 0 ? owned->error : owned->replacement->Commit();
}

QIS_EXPORT char* AaFileReadLine(char* buffer, u32 size, TAaFile* file) {
  if (buffer == nullptr || size == 0) {
    return nullptr;
  }
  constexpr u32 kMost = 0x7FFFFFFF;
  char* const line =
      file != nullptr ? std::fgets(buffer, static_cast<int>(std::min(size, kMost)), file->stream.get()) : nullptr;
  if (line == nullptr) {
    *buffer = '\0';
  }
  return line;
}

QIS_EXPORT u32 AaFileWrite(const void* data, u32 size, u32 count, TAaFile* file) {
  if (file == nullptr || !file->replacement || data == nullptr || size == 0 || count == 0 || file->error != 0) {
    return 0;
  }
  std::size_t bytes = 0;
  if (__builtin_mul_overflow(std::size_t{size}, std::size_t{count}, &bytes)) {
    file->error = EFBIG;
    return 0;
  }
  errno = 0;
  const std::size_t taken = std::fwrite(data, size, count, file->stream.get());
  if (taken != count) {
    file->error = errno != 0 ? errno : EIO;
  }
  return static_cast<u32>(taken);
}

QIS_EXPORT i32 AaFileCopy(const char* source, const char* target) {
  if (source == nullptr || target == nullptr) {
    return EINVAL;
  }
  const Fd from(::open(source, O_RDONLY | O_CLOEXEC));
  if (!from) {
    return errno;
  }
  const std::unique_ptr<Replacement> to = Replacement::Begin(target);
  if (!to) {
    return errno;
  }
  const int error = CopyAll(from.Get(), to->File());
  return error != 0 ? error : to->Commit();
}

QIS_EXPORT i32 AaFileRemove(const char* path) {
  if (path == nullptr) {
    return EINVAL;
  }
  return ::unlink(path) == 0 ? 0 : errno;
}

QIS_EXPORT TBoolean AaFileExists(const char* path) { return IsOfType(path, S_IFREG) ? GLO_TRUE : GLO_FALSE; }

QIS_EXPORT TBoolean AaFileDirExists(const char* path) { return IsOfType(path, S_IFDIR) ? GLO_TRUE : GLO_FALSE; }

QIS_EXPORT i32 AaFileCreateDir(const char* path) {
  if (path == nullptr || *path == '\0') {
    return EINVAL;
  }
  const std::string whole = path;
  for (std::size_t slash = whole.find('/', 1); slash != std::string::npos; slash = whole.find('/', slash + 1)) {
    if (const int error = MakeDirectory(whole.substr(0, slash)); error != 0) {
      return error;
    }
  }
  return MakeDirectory(whole);
}

QIS_EXPORT i32 AaFileListDir(const char* path, char*** names, u32* count) {
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
}

QIS_EXPORT void AaFileFreeListDirArray(char** names, u32) { std::free(names); }
