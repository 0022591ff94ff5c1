#include "Replacement.h"

#include "AaSysLog.h"
#include "ComLog.h"
#include "CopyRights.h"
#include "LockedFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace hwapi::qis {
namespace {

constexpr std::string_view kMark = ".new-";
constexpr mode_t kNewFileMode = 0644;
/// Until it is known who may read it.
constexpr mode_t kTemporaryMode = 0600;
/// Longest part of the name that a temporary repeats: its own name has a limit, too.
constexpr std::size_t kLongestStem = 200;

struct CFree {
  void operator()(void* memory) const { std::free(memory); }
};

std::string NextTemporaryName(const std::string& name) {
  static std::atomic<unsigned> number = 0;
  return "." + name.substr(0, kLongestStem) + std::string(kMark) + std::to_string(::getpid()) + "-" +
         std::to_string(++number);
}

std::string NameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

const char* Remedy(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return "; make room there";
    case EROFS:
      return "; mount its file system writable";
    default:
      return "";
  }
}

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

std::unique_ptr<Replacement> Replacement::Begin(const std::string& path) { return Begin(path, nullptr); }

std::unique_ptr<Replacement> Replacement::BeginCopy(const std::string& path, const struct stat& source) {
  return Begin(path, &source);
}

std::unique_ptr<Replacement> Replacement::Begin(const std::string& path, const struct stat* source) {
  std::unique_ptr<Replacement> replacement(new Replacement(path));
  int error = replacement->FindTarget();
  if (error == 0) {
    replacement->RemoveStrays();
    error = replacement->CreateTemporary();
  }
  if (error == 0) {
    error = replacement->TakeOverOwnerAndMode(source);
  }
  if (error != 0) {
    replacement.reset();
    errno = error;
  }
  return replacement;
}

int Replacement::FindTarget() {
  int error = OpenFolderOf(m_path);
  if (error == 0 && S_ISLNK(m_old.st_mode)) {
    const std::unique_ptr<char, CFree> real(::realpath(m_path.c_str(), nullptr));
    if (real) {
      error = OpenFolderOf(real.get());
    } else if (errno != ENOENT) {
      error = errno;
    } else {
      m_old.st_mode = 0;  // a link to nothing
    }
  }
  if (error != 0 || m_old.st_mode == 0) {
    return error;
  }
  if (S_ISDIR(m_old.st_mode)) {
    return EISDIR;
  }
  return S_ISREG(m_old.st_mode) ? 0 : EINVAL;
}

int Replacement::OpenFolderOf(const std::string& path) {
  m_name = NameIn(path);
  const std::string folder = path.substr(0, path.size() - m_name.size());
  m_folder.reset(::opendir(folder.empty() ? "." : folder.c_str()));
  if (!m_folder) {
    return errno;
  }
  if (m_name.empty()) {
    return EISDIR;
  }
  if (::fstatat(Folder(), m_name.c_str(), &m_old, AT_SYMLINK_NOFOLLOW) != 0) {
    m_old.st_mode = 0;
    return errno == ENOENT ? 0 : errno;
  }
  return 0;
}

/// What cannot be listed stays until the next time.
void Replacement::RemoveStrays() {
  while (const dirent* const entry = ::readdir(m_folder.get())) {
    RemoveIfStray(Folder(), entry->d_name);
  }
}

int Replacement::CreateTemporary() {
  for (;;) {
    std::string name = NextTemporaryName(m_name);
    Fd file(Uninterrupted(
        [&] { return ::openat(Folder(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kTemporaryMode); }));
    if (!file && errno == EEXIST) {
      continue;
    }
    if (!file) {
      return errno;
    }
    m_temporary = std::move(name);
    m_file = std::move(file);
    if (const int error = LockInTime(m_file.Get()); error != 0) {
      return error;
    }
    if (::fstat(m_file.Get(), &m_new) != 0) {
      return errno;
    }
    // Before the lock somebody may have taken it for a stray one and removed it.
    if (m_new.st_nlink != 0) {
      return 0;
    }
  }
}

int Replacement::TakeOverOwnerAndMode(const struct stat* source) {
  const bool isThere = m_old.st_mode != 0;
  const bool ownerDiffers = isThere && (m_old.st_uid != m_new.st_uid || m_old.st_gid != m_new.st_gid);
  if (ownerDiffers && (source == nullptr || MayOwnCopy(*source, m_old.st_uid)) &&
      ::fchown(m_file.Get(), m_old.st_uid, m_old.st_gid) != 0 && errno != EPERM) {
    return errno;  // not root: the new file is the writer's
  }
  mode_t mode = isThere ? m_old.st_mode & 07777 : kNewFileMode;
  if (source != nullptr) {
    if (::fstat(m_file.Get(), &m_new) != 0) {
      return errno;
    }
    mode = ModeOfCopy(*source, mode, m_new.st_gid);
  }
  return ::fchmod(m_file.Get(), mode) == 0 ? 0 : errno;  // after the owner, whose change takes bits away
}

int Replacement::Write(const char* bytes, std::size_t size) {
  while (size != 0) {
    const ssize_t written = Uninterrupted([&] { return ::write(m_file.Get(), bytes, size); });
    if (written < 0) {
      return errno;
    }
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return 0;
}

int Replacement::Commit() {
  if (Uninterrupted([&] { return ::fsync(m_file.Get()); }) != 0 ||
      ::renameat(Folder(), m_temporary.c_str(), Folder(), m_name.c_str()) != 0) {
    return errno;
  }
  m_temporary.clear();
  MakeFolderLast();
  return 0;
}

/// The new content is in place: that the folder cannot be synced would not bring the old one back.
void Replacement::MakeFolderLast() {
  if (Uninterrupted([&] { return ::fsync(Folder()); }) == 0 || errno == EINVAL) {
    return;  // EINVAL: a file system whose folders need no sync
  }
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "File %s is replaced, but a power cut may bring its old content back: its folder cannot be synced: %s",
                 m_path.c_str(), std::strerror(errno));
}

Replacement::~Replacement() {
  if (!m_temporary.empty()) {
    ::unlinkat(Folder(), m_temporary.c_str(), 0);
  }
}

}  // namespace hwapi::qis
