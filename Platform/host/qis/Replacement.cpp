#include "Replacement.h"

#include "LockedFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string_view>

namespace hwapi::qis {
namespace {

constexpr std::string_view kMark = ".new-";
constexpr mode_t kNewFileMode = 0644;
/// Longest part of the name that a temporary repeats: its own name has a limit, too.
constexpr std::size_t kLongestStem = 200;

struct CFree {
  void operator()(void* memory) const { std::free(memory); }
};
struct CloseDir {
  void operator()(DIR* dir) const { ::closedir(dir); }
};

std::string Resolved(const std::string& path) {
  const std::unique_ptr<char, CFree> real(::realpath(path.c_str(), nullptr));
  return real ? real.get() : path;
}

std::string NextTemporaryName(const std::string& name) {
  static std::atomic<unsigned> number = 0;
  return "." + name.substr(0, kLongestStem) + std::string(kMark) + std::to_string(::getpid()) + "-" +
         std::to_string(++number);
}

void RemoveStrays(int folder) {
  const std::unique_ptr<DIR, CloseDir> dir(::fdopendir(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
  if (!dir) {
    return;
  }
  while (const dirent* const entry = ::readdir(dir.get())) {
    RemoveIfStray(folder, entry->d_name);
  }
}

/// @return 0, EISDIR, or EINVAL for what is no regular file; nothing there is fine
int CheckTarget(int folder, const std::string& name) {
  struct stat target {};
  if (::fstatat(folder, name.c_str(), &target, 0) != 0) {
    return errno == ENOENT ? 0 : errno;
  }
  if (S_ISDIR(target.st_mode)) {
    return EISDIR;
  }
  return S_ISREG(target.st_mode) ? 0 : EINVAL;
}

}  // namespace

bool IsTemporary(const std::string& name) {
  const std::size_t mark = name.rfind(kMark);
  if (name.empty() || name.front() != '.' || mark == std::string::npos || mark == 0) {
    return false;
  }
  const std::string_view numbers = std::string_view(name).substr(mark + kMark.size());
  return numbers.find('-') != std::string_view::npos &&
         numbers.find_first_not_of("0123456789-") == std::string_view::npos;
}

void RemoveIfStray(int folder, const std::string& name) {
  if (!IsTemporary(name)) {
    return;
  }
  const Fd file(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (file && ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
      ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0 && HasName(folder, name.c_str(), file.Get())) {
    ::unlinkat(folder, name.c_str(), 0);
  }
}

std::unique_ptr<Replacement> Replacement::Begin(const std::string& path) {
  const std::string target = Resolved(path);
  const std::size_t slash = target.rfind('/');
  const std::string folderPath = slash == std::string::npos ? "." : target.substr(0, slash + 1);
  std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
  Fd folder(::open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) {
    return nullptr;
  }
  int error = name.empty() ? EISDIR : CheckTarget(folder.Get(), name);
  std::unique_ptr<Replacement> replacement(new Replacement(std::move(folder), std::move(name)));
  if (error == 0) {
    RemoveStrays(replacement->m_folder.Get());
    error = replacement->CreateTemporary();
  }
  if (error == 0) {
    error = replacement->TakeOverMode();
  }
  if (error != 0) {
    replacement.reset();
    errno = error;
  }
  return replacement;
}

int Replacement::CreateTemporary() {
  for (;;) {
    std::string name = NextTemporaryName(m_name);
    Fd file(::openat(m_folder.Get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode));
    if (!file) {
      if (errno == EEXIST) {
        continue;
      }
      return errno;
    }
    // Before the lock somebody may have taken it for a stray one.
    if (::flock(file.Get(), LOCK_EX) == 0 && HasName(m_folder.Get(), name.c_str(), file.Get())) {
      m_temporary = std::move(name);
      m_file = std::move(file);
      return 0;
    }
  }
}

int Replacement::TakeOverMode() {
  struct stat old {};
  if (::fstatat(m_folder.Get(), m_name.c_str(), &old, 0) != 0) {
    return ::fchmod(m_file.Get(), kNewFileMode) == 0 ? 0 : errno;
  }
  if (::fchown(m_file.Get(), old.st_uid, old.st_gid) != 0 && errno != EPERM) {
    return errno;  // not root: the new file is the writer's
  }
  return ::fchmod(m_file.Get(), old.st_mode & 07777) == 0 ? 0 : errno;
}

int Replacement::Commit() {
  if (::fsync(m_file.Get()) != 0 ||
      ::renameat(m_folder.Get(), m_temporary.c_str(), m_folder.Get(), m_name.c_str()) != 0) {
    return errno;
  }
  m_temporary.clear();
  // The new content is in place; that the folder cannot be synced would not bring the old one back.
  ::fsync(m_folder.Get());
  return 0;
}

Replacement::~Replacement() {
  if (!m_temporary.empty()) {
    ::unlinkat(m_folder.Get(), m_temporary.c_str(), 0);
  }
}

}  // namespace hwapi::qis
