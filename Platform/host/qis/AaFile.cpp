// Files, and whether there is one or a directory.
#include "AaFile.h"

#include "AaSysLog.h"
#include "ComLog.h"
#include "Export.h"
#include "FileSource.h"
#include "Replacement.h"
#include "StoreRoots.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

using hwapi::qis::Fd;
using hwapi::qis::kPlatformFeature;
using hwapi::qis::OpenSource;
using hwapi::qis::Remedy;
using hwapi::qis::Replacement;
using hwapi::qis::Uninterrupted;

namespace {

constexpr std::size_t kReadSize = 4 * 1024;
constexpr std::size_t kWriteSize = 16 * 1024;

}  // namespace

struct TAaFile {
  TAaFile(const char* itsPath, Fd&& itsSource)
      : path(itsPath), source(std::move(itsSource)), size(kReadSize), buffer(new char[kReadSize]) {}
  TAaFile(const char* itsPath, std::unique_ptr<Replacement>&& itsReplacement)
      : path(itsPath), replacement(std::move(itsReplacement)), size(kWriteSize), buffer(new char[kWriteSize]) {}

  std::string path;
  Fd source;                                 ///< none when it is written
  std::unique_ptr<Replacement> replacement;  ///< null when it is read
  int error = 0;                             ///< of the first read or write that failed
  /// Bytes from @p begin on, up to @p end, that are read but not given, or taken but not written.
  std::size_t size;
  std::unique_ptr<char[]> buffer;
  std::size_t begin = 0;
  std::size_t end = 0;
};

namespace {

bool MeansNotThere(int error) { return error == ENOENT || error == ENOTDIR; }

void LogNotReplaced(const char* path, int error) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature, "File %s is not written, what was there stays: %s%s",
                 path, std::strerror(error), Remedy(error));
}

void LogNotRead(const char* path, int error) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature, "File %s cannot be read: %s", path,
                 std::strerror(error));
}

TAaFile* OpenToRead(const char* path) try {
  Fd source = OpenSource(path);
  if (!source) {
    if (!MeansNotThere(errno) && errno != EISDIR) {
      LogNotRead(path, errno);
    }
    return nullptr;
  }
  return new TAaFile(path, std::move(source));
} catch (const std::bad_alloc&) {
  LogNotRead(path, ENOMEM);
  return nullptr;
}

TAaFile* OpenToReplace(const char* path) try {
  std::unique_ptr<Replacement> replacement = Replacement::Begin(path);
  if (!replacement) {
    LogNotReplaced(path, errno);
    return nullptr;
  }
  return new TAaFile(path, std::move(replacement));
} catch (const std::bad_alloc&) {
  LogNotReplaced(path, ENOMEM);
  return nullptr;
}

/// Fills the empty buffer.
/// @return false at the end of the file and after an error
bool Refill(TAaFile& file) {
  if (file.error != 0) {
    return false;
  }
  const ssize_t size = Uninterrupted([&file] { return ::read(file.source.Get(), file.buffer.get(), file.size); });
  if (size < 0) {
    file.error = errno;
    LogNotRead(file.path.c_str(), file.error);
  }
  file.begin = 0;
  file.end = size > 0 ? static_cast<std::size_t>(size) : 0;
  return size > 0;
}

/// Moves the rest of a line, or as much of it as there is room for, from the buffer to @p line.
/// @return number of bytes
std::size_t TakeOfLine(TAaFile& file, char* line, std::size_t room) {
  const char* const first = file.buffer.get() + file.begin;
  std::size_t size = std::min(room, file.end - file.begin);
  if (const void* const end = std::memchr(first, '\n', size); end != nullptr) {
    size = static_cast<std::size_t>(static_cast<const char*>(end) - first) + 1;
  }
  std::memcpy(line, first, size);
  file.begin += size;
  return size;
}

/// @return number of bytes of the line, or of a piece that fits; 0 at the end of the file and after an error
std::size_t ReadLine(TAaFile& file, char* line, std::size_t room) {
  std::size_t size = 0;
  while (size < room && (size == 0 || line[size - 1] != '\n')) {
    if (file.begin == file.end && !Refill(file)) {
      break;
    }
    size += TakeOfLine(file, line + size, room - size);
  }
  return file.error == 0 ? size : 0;
}

/// Writes what is in the buffer.
/// @return 0, else an errno value
int Flush(TAaFile& file) {
  if (file.error == 0) {
    file.error = file.replacement->Write(file.buffer.get(), file.end);
  }
  file.end = 0;
  return file.error;
}

/// @return 0, else an errno value
int Append(TAaFile& file, const char* bytes, std::size_t size) {
  if (size > file.size - file.end && Flush(file) != 0) {
    return file.error;
  }
  if (size >= file.size) {
    return file.error = file.replacement->Write(bytes, size);
  }
  std::memcpy(file.buffer.get() + file.end, bytes, size);
  file.end += size;
  return 0;
}

/// @return 0, else an errno value
int CopyAll(int source, Replacement& target) {
  std::array<char, 16 * 1024> buffer;
  for (;;) {
    const ssize_t size = Uninterrupted([&] { return ::read(source, buffer.data(), buffer.size()); });
    if (size <= 0) {
      return size < 0 ? errno : 0;
    }
    if (const int error = target.Write(buffer.data(), static_cast<std::size_t>(size)); error != 0) {
      return error;
    }
  }
}

/// @param why out: why it may not be copied, if that is so
/// @return 0, else an errno value
int Copy(const char* source, const char* target, std::optional<std::string>& why) try {
  const Fd from = OpenSource(source);
  struct stat status {};
  if (!from || ::fstat(from.Get(), &status) != 0) {
    return errno;
  }
  why = hwapi::qis::WhyNotToStore(from.Get());
  if (why) {
    return EACCES;
  }
  const std::unique_ptr<Replacement> to = Replacement::BeginCopy(target, status);
  if (!to) {
    return errno;
  }
  const int error = CopyAll(from.Get(), *to);
  return error != 0 ? error : to->Commit();
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

bool IsOfType(const char* path, mode_t type) {
  struct stat status {};
  if (path == nullptr) {
    return false;
  }
  if (::stat(path, &status) == 0) {
    return (status.st_mode & S_IFMT) == type;
  }
  if (!MeansNotThere(errno)) {
    LogNotRead(path, errno);
  }
  return false;
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
  const int error = Flush(*owned) != 0 ? owned->error : owned->replacement->Commit();
  if (error != 0) {
    LogNotReplaced(owned->path.c_str(), error);
  }
  return error;
}

QIS_EXPORT char* AaFileReadLine(char* buffer, u32 size, TAaFile* file) {
  if (buffer == nullptr || size == 0) {
    return nullptr;
  }
  const std::size_t length = file != nullptr && file->source ? ReadLine(*file, buffer, size - 1) : 0;
  buffer[length] = '\0';
  return length != 0 ? buffer : nullptr;
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
  return Append(*file, static_cast<const char*>(data), bytes) == 0 ? count : 0;
}

QIS_EXPORT i32 AaFileCopy(const char* source, const char* target) {
  if (source == nullptr || target == nullptr) {
    return EINVAL;
  }
  std::optional<std::string> why;
  const int error = Copy(source, target, why);
  if (error != 0) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "File %s is not copied to %s, what was there stays: %s%s", source, target,
                   why ? why->c_str() : std::strerror(error), Remedy(error));
  }
  return error;
}

QIS_EXPORT i32 AaFileRemove(const char* path) {
  if (path == nullptr) {
    return EINVAL;
  }
  return ::unlink(path) == 0 ? 0 : errno;
}

QIS_EXPORT TBoolean AaFileExists(const char* path) { return IsOfType(path, S_IFREG) ? GLO_TRUE : GLO_FALSE; }

QIS_EXPORT TBoolean AaFileDirExists(const char* path) { return IsOfType(path, S_IFDIR) ? GLO_TRUE : GLO_FALSE; }
