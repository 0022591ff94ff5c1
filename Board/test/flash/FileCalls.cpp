#include "FileCalls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <utility>

namespace flash {
namespace {

constexpr const char* kObserved = "/ffs";

thread_local FileCallObserver* t_observer = nullptr;

/// The C library's own function behind one of ours.
/// @param function ours, for its type
template <typename Function>
Function* Next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Of functions with 64-bit offsets or times a 32-bit C library has a second version; the headers choose that one.
constexpr bool kLargeOffsets = sizeof(off_t) > sizeof(long);
constexpr bool kLargeTimes = sizeof(time_t) > sizeof(long);

std::string PathOf(int fd) {
  char path[PATH_MAX];
  const ssize_t size = readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path, sizeof path);
  return size > 0 ? std::string(path, static_cast<std::size_t>(size)) : "";
}

/// @return the path without symbolic links in its folder part
std::string PathOf(int folder, const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string above = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const int fd = openat(folder, above.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  if (fd < 0) return path;
  std::string whole = PathOf(fd);
  if (!name.empty() && name != ".") whole += "/" + name;
  close(fd);
  return whole;
}

FileId IdOf(int folder, const std::string& path) {
  struct stat status {};
  return fstatat(folder, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? status.st_ino : 0;
}

FileId IdOf(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 ? status.st_ino : 0;
}

/// One call on its way through the observer. What it does itself is not observed.
class Passage {
 public:
  Passage() : m_observer(std::exchange(t_observer, nullptr)) {}
  Passage(const Passage&) = delete;
  Passage& operator=(const Passage&) = delete;
  ~Passage() { t_observer = m_observer; }

  /// @param path where the call acts
  /// @return whether the call is to be made; errno is set when not
  bool Begin(CallKind kind, const std::string& path) {
    m_seen = m_observer != nullptr && path.starts_with(kObserved);
    m_verdict = m_seen ? m_observer->Before(kind) : 0;
    errno = m_verdict > 0 ? m_verdict : 0;
    return m_verdict <= 0;
  }
  bool IsSeen() const { return m_seen; }
  bool IsShort() const { return m_verdict == FileCallObserver::kOneByteOnly; }
  void End(const Operation& operation) const {
    const int error = errno;
    if (m_seen) m_observer->After(operation);
    errno = error;
  }

 private:
  FileCallObserver* const m_observer;
  bool m_seen = false;
  int m_verdict = 0;
};

bool IsObserving() { return t_observer != nullptr; }

/// A call that the observer only counts or lets fail.
template <typename Result, typename Path, typename Call>
Result Pass(CallKind kind, Result failed, Path path, Call call) {
  if (!IsObserving()) return call();
  Passage passage;
  return passage.Begin(kind, path()) ? call() : failed;
}

int Open(int folder, const char* path, int flags, mode_t mode) {
  static const auto real = Next(&::openat, kLargeOffsets ? "openat64" : "openat");
  if (!IsObserving()) return real(folder, path, flags, mode);
  Passage passage;
  const bool creates = (flags & O_CREAT) != 0 && IdOf(folder, path) == 0;
  if (!passage.Begin(creates ? CallKind::Create : CallKind::Open, PathOf(folder, path))) return -1;
  const int fd = real(folder, path, flags, mode);
  if (fd >= 0 && creates) {
    passage.End({.kind = Operation::Kind::Create, .path = PathOf(fd), .file = IdOf(fd), .mode = mode});
  } else if (fd >= 0 && (flags & O_TRUNC) != 0) {
    passage.End({.kind = Operation::Kind::Truncate, .file = IdOf(fd)});
  }
  return fd;
}

int Remove(int folder, const char* path, int (*call)(int, const char*, int), int flags) {
  if (!IsObserving()) return call(folder, path, flags);
  Passage passage;
  const Operation operation{.kind = Operation::Kind::Remove, .path = PathOf(folder, path)};
  if (!passage.Begin(CallKind::Remove, operation.path)) return -1;
  const int result = call(folder, path, flags);
  if (result == 0) passage.End(operation);
  return result;
}

int Rename(int folder, const char* path, int newFolder, const char* newPath) {
  static const auto real = Next(&::renameat, "renameat");
  if (!IsObserving()) return real(folder, path, newFolder, newPath);
  Passage passage;
  const Operation operation{.kind = Operation::Kind::Rename,
                            .path = PathOf(folder, path),
                            .newPath = PathOf(newFolder, newPath),
                            .file = IdOf(folder, path)};
  if (!passage.Begin(CallKind::Rename, operation.path)) return -1;
  const int result = real(folder, path, newFolder, newPath);
  if (result == 0) passage.End(operation);
  return result;
}

}  // namespace

Observation::Observation(FileCallObserver& observer) { t_observer = &observer; }

Observation::~Observation() { t_observer = nullptr; }

std::vector<std::string> OpenFiles() {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    const std::string path = PathOf(std::stoi(entry.path().filename().string()));
    if (path.starts_with(kObserved)) paths.push_back(path);
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

}  // namespace flash

using flash::CallKind;
using flash::Operation;

#define C_LIBRARY_CALL extern "C" __attribute__((visibility("default")))

C_LIBRARY_CALL int open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return flash::Open(AT_FDCWD, path, flags, mode);
}

C_LIBRARY_CALL int openat(int folder, const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return flash::Open(folder, path, flags, mode);
}

C_LIBRARY_CALL ssize_t read(int fd, void* bytes, size_t size) {
  static const auto real = flash::Next(&::read, "read");
  return flash::Pass(
      CallKind::Read, ssize_t{-1}, [&] { return flash::PathOf(fd); }, [&] { return real(fd, bytes, size); });
}

C_LIBRARY_CALL ssize_t write(int fd, const void* bytes, size_t size) {
  static const auto real = flash::Next(&::write, "write");
  if (!flash::IsObserving()) return real(fd, bytes, size);
  flash::Passage passage;
  if (!passage.Begin(CallKind::Write, flash::PathOf(fd))) return -1;
  const off_t offset = passage.IsSeen() ? lseek(fd, 0, SEEK_CUR) : 0;
  const ssize_t written = real(fd, bytes, passage.IsShort() ? 1 : size);
  if (written > 0 && passage.IsSeen()) {
    passage.End({.kind = Operation::Kind::Write,
                 .file = flash::IdOf(fd),
                 .offset = static_cast<std::size_t>(offset),
                 .data = std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(written))});
  }
  return written;
}

C_LIBRARY_CALL int fsync(int fd) {
  static const auto real = flash::Next(&::fsync, "fsync");
  if (!flash::IsObserving()) return real(fd);
  flash::Passage passage;
  const std::string path = flash::PathOf(fd);
  if (!passage.Begin(CallKind::Sync, path)) return -1;
  const int result = real(fd);
  if (result == 0) {
    const bool isFolder = std::filesystem::is_directory(path);
    const auto kind = isFolder ? Operation::Kind::SyncFolder : Operation::Kind::Sync;
    passage.End({.kind = kind, .path = path, .file = flash::IdOf(fd)});
  }
  return result;
}

C_LIBRARY_CALL int fchmod(int fd, mode_t mode) noexcept {
  static const auto real = flash::Next(&::fchmod, "fchmod");
  if (!flash::IsObserving()) return real(fd, mode);
  flash::Passage passage;
  if (!passage.Begin(CallKind::SetMode, flash::PathOf(fd))) return -1;
  const int result = real(fd, mode);
  if (result == 0) passage.End({.kind = Operation::Kind::SetMode, .file = flash::IdOf(fd), .mode = mode});
  return result;
}

C_LIBRARY_CALL int fchown(int fd, uid_t user, gid_t group) noexcept {
  static const auto real = flash::Next(&::fchown, "fchown");
  return flash::Pass(
      CallKind::SetOwner, -1, [&] { return flash::PathOf(fd); }, [&] { return real(fd, user, group); });
}

C_LIBRARY_CALL int flock(int fd, int operation) noexcept {
  static const auto real = flash::Next(&::flock, "flock");
  return flash::Pass(
      CallKind::Lock, -1, [&] { return flash::PathOf(fd); }, [&] { return real(fd, operation); });
}

C_LIBRARY_CALL int renameat(int folder, const char* path, int newFolder, const char* newPath) noexcept {
  return flash::Rename(folder, path, newFolder, newPath);
}

C_LIBRARY_CALL int rename(const char* path, const char* newPath) noexcept {
  return flash::Rename(AT_FDCWD, path, AT_FDCWD, newPath);
}

C_LIBRARY_CALL int unlinkat(int folder, const char* path, int flags) noexcept {
  static const auto real = flash::Next(&::unlinkat, "unlinkat");
  return flash::Remove(folder, path, real, flags);
}

C_LIBRARY_CALL int unlink(const char* path) noexcept {
  static const auto real = flash::Next(&::unlink, "unlink");
  return flash::Remove(
      AT_FDCWD, path, [](int, const char* file, int) { return real(file); }, 0);
}

C_LIBRARY_CALL int remove(const char* path) noexcept {
  static const auto real = flash::Next(static_cast<int (*)(const char*)>(&::remove), "remove");
  return flash::Remove(
      AT_FDCWD, path, [](int, const char* file, int) { return real(file); }, 0);
}

C_LIBRARY_CALL int mkdir(const char* path, mode_t mode) noexcept {
  static const auto real = flash::Next(&::mkdir, "mkdir");
  if (!flash::IsObserving()) return real(path, mode);
  flash::Passage passage;
  const std::string whole = flash::PathOf(AT_FDCWD, path);
  if (!passage.Begin(CallKind::MakeDirectory, whole)) return -1;
  const int result = real(path, mode);
  if (result == 0) {
    passage.End(
        {.kind = Operation::Kind::MakeDirectory, .path = whole, .file = flash::IdOf(AT_FDCWD, whole), .mode = mode});
  }
  return result;
}

C_LIBRARY_CALL char* realpath(const char* path, char* resolved) noexcept {
  static const auto real = flash::Next(&::realpath, "realpath");
  return flash::Pass(
      CallKind::Examine, static_cast<char*>(nullptr), [&] { return std::string(path); },
      [&] { return real(path, resolved); });
}

C_LIBRARY_CALL int stat(const char* path, struct stat* status) noexcept {
  static const auto real = flash::Next(static_cast<int (*)(const char*, struct stat*)>(&::stat),
                                       flash::kLargeTimes ? "__stat64_time64" : "stat");
  return flash::Pass(
      CallKind::Examine, -1, [&] { return std::string(path); }, [&] { return real(path, status); });
}

C_LIBRARY_CALL int fstat(int fd, struct stat* status) noexcept {
  static const auto real = flash::Next(&::fstat, flash::kLargeTimes ? "__fstat64_time64" : "fstat");
  return flash::Pass(
      CallKind::Examine, -1, [&] { return flash::PathOf(fd); }, [&] { return real(fd, status); });
}

C_LIBRARY_CALL int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  static const auto real = flash::Next(&::fstatat, flash::kLargeTimes ? "__fstatat64_time64" : "fstatat");
  return flash::Pass(
      CallKind::Examine, -1, [&] { return flash::PathOf(folder, path); },
      [&] { return real(folder, path, status, flags); });
}

C_LIBRARY_CALL DIR* opendir(const char* path) {
  static const auto real = flash::Next(&::opendir, "opendir");
  return flash::Pass(
      CallKind::List, static_cast<DIR*>(nullptr), [&] { return std::string(path); }, [&] { return real(path); });
}

C_LIBRARY_CALL DIR* fdopendir(int fd) {
  static const auto real = flash::Next(&::fdopendir, "fdopendir");
  return flash::Pass(
      CallKind::List, static_cast<DIR*>(nullptr), [&] { return flash::PathOf(fd); }, [&] { return real(fd); });
}

C_LIBRARY_CALL dirent* readdir(DIR* folder) {
  static const auto real = flash::Next(&::readdir, flash::kLargeOffsets ? "readdir64" : "readdir");
  return flash::Pass(
      CallKind::List, static_cast<dirent*>(nullptr), [&] { return flash::PathOf(dirfd(folder)); },
      [&] { return real(folder); });
}

/// The descriptor is gone also when it fails, as with the kernel's own.
C_LIBRARY_CALL int close(int fd) {
  static const auto real = flash::Next(&::close, "close");
  if (!flash::IsObserving()) return real(fd);
  flash::Passage passage;
  const bool succeeds = passage.Begin(CallKind::Close, flash::PathOf(fd));
  const int error = errno;
  const int result = real(fd);
  if (!succeeds) errno = error;
  return succeeds ? result : -1;
}
