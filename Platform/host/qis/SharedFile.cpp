#include "SharedFile.h"

#include "AaSysLog.h"
#include "ComLog.h"
#include "FileKind.h"
#include "Replacement.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <climits>
#include <mutex>
#include <set>

namespace hwapi::qis {
namespace {

/// @return whether this path was not reported before
bool IsNew(const std::string& path) {
  constexpr std::size_t kMaxKnown = 256;
  static auto* const mutex = new std::mutex;
  static auto* const reported = new std::set<std::string>;
  const std::lock_guard lock(*mutex);
  if (reported->size() >= kMaxKnown) {
    reported->clear();
  }
  return reported->insert(path).second;
}

}  // namespace

std::string PathIn(int folder, const char* name) {
  std::array<char, PATH_MAX> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(folder);
  const ssize_t size = ::readlink(link.c_str(), path.data(), path.size());
  return (size > 0 ? std::string(path.data(), static_cast<std::size_t>(size)) + "/" : std::string()) + name;
}

bool ReportIfNot(mode_t type, int folder, const char* name) {
  struct stat status {};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0 || (status.st_mode & S_IFMT) == type) {
    return false;
  }
  const std::string path = PathIn(folder, name);
  if (IsNew(path)) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature, "%s is %s, not %s: remove it", path.c_str(),
                   board::KindOfFile(status.st_mode).c_str(), board::KindOfFile(type).c_str());
  }
  return true;
}

Fd OpenSharedFile(int folder, const char* name, int flags, mode_t mode) {
  Fd file(Uninterrupted(
      [&] { return ::openat(folder, name, flags | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC, mode); }));
  const int error = file ? 0 : errno;
  struct stat status {};
  if (file && ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode)) {
    return file;
  }
  file.Reset();
  const bool isOther = error != ENOENT && error != EEXIST && ReportIfNot(S_IFREG, folder, name);
  const int otherError = S_ISDIR(status.st_mode) || error == EISDIR ? EISDIR : EINVAL;
  errno = isOther || error == 0 ? otherError : error;
  return file;
}

}  // namespace hwapi::qis
