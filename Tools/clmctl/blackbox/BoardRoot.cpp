#include "BoardRoot.h"

#include "CommandError.h"
#include "Screen.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string_view>
#include <vector>

namespace clmctl {
namespace {

/// No file of the black box comes near; what does is something else.
constexpr std::size_t kLargestFile = std::size_t{4} << 20;
constexpr int kMostLinks = 40;  ///< on the way to a file, as in the kernel

/// Puts the parts of a path before those that are left.
void Prepend(std::string_view path, std::deque<std::string>& parts) {
  std::deque<std::string> added;
  while (!path.empty()) {
    const std::size_t end = path.find('/');
    const std::string_view part = path.substr(0, end);
    if (!part.empty() && part != ".") added.emplace_back(part);
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
  }
  parts.insert(parts.begin(), added.begin(), added.end());
}

/// @return the target of an opened link; nothing when it is none
std::string LinkTarget(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0 || !S_ISLNK(status.st_mode)) return "";
  char target[PATH_MAX];
  const ssize_t length = readlinkat(fd, "", target, sizeof target);
  return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : "";
}

/// @return the whole file
/// @throw CommandError with @p code
std::string ReadAll(int fd, const std::string& path, ExitCode code) {
  std::string text;
  char piece[16384];
  while (true) {
    const ssize_t got = read(fd, piece, sizeof piece);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw CommandError(code, "cannot read " + Printable(path) + ": " + std::strerror(errno));
    if (got == 0) return text;
    text.append(piece, static_cast<std::size_t>(got));
    if (text.size() > kLargestFile) {
      throw CommandError(code, Printable(path) + " is no file of a black box: it is larger than 4 MiB");
    }
  }
}

std::string RunDirectory() {
  const char* const run = std::getenv("HWAPI_RUN");
  return run != nullptr && *run != '\0' ? run : "/run/hwapi";
}

}  // namespace

UniqueFd OpenInRoot(int root, const std::string& path) {
  open_how how{};
  how.flags = O_RDONLY | O_CLOEXEC | O_NOCTTY;
  how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
  const long fd = syscall(SYS_openat2, root, path.c_str(), &how, sizeof how);
  // A container's filter may say EPERM to calls that it does not know.
  if (fd < 0 && (errno == ENOSYS || errno == EPERM)) return OpenInRootByHand(root, path);
  return UniqueFd(static_cast<int>(fd));
}

UniqueFd OpenInRootByHand(int root, const std::string& path) {
  std::vector<UniqueFd> way;  // what was gone through, from the root on
  std::deque<std::string> left;
  Prepend(path, left);
  int links = 0;
  while (!left.empty()) {
    const int here = way.empty() ? root : way.back().Get();
    const std::string part = left.front();
    left.pop_front();
    if (part == "..") {
      if (!way.empty()) way.pop_back();
      continue;
    }
    UniqueFd next(openat(here, part.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (next.Get() < 0) return next;
    const std::string target = LinkTarget(next.Get());
    if (target.empty()) {
      way.push_back(std::move(next));
      continue;
    }
    if (++links > kMostLinks) {
      errno = ELOOP;
      return UniqueFd();
    }
    if (target.front() == '/') way.clear();
    Prepend(target, left);
  }
  const std::string self = "/proc/self/fd/" + std::to_string(way.empty() ? root : way.back().Get());
  return UniqueFd(open(self.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
}

std::string ReadBoardsFile(const std::string& path) {
  const std::string link = RunDirectory() + "/root";
  struct stat status {};
  const bool ownRoot = lstat(link.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  const UniqueFd root(open(ownRoot ? link.c_str() : "/", O_PATH | O_DIRECTORY | O_CLOEXEC));
  UniqueFd file;
  if (root.Get() >= 0)
    file = ownRoot ? OpenInRoot(root.Get(), path) : UniqueFd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.Get() >= 0) return ReadAll(file.Get(), path, ExitCode::Refused);
  const int error = errno;
  const std::string where = ownRoot ? " (in the board's own root, " + link + ")" : "";
  throw CommandError(ExitCode::Refused,
                     "cannot open the board's " + Printable(path) + where + ": " + std::strerror(error) +
                         (error == ENOENT ? "; `clmctl blackbox store` lets the service write it" : ""));
}

std::string ReadLocalFile(const std::string& path) {
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (file.Get() < 0) {
    throw CommandError(ExitCode::Usage, "cannot open " + Printable(path) + ": " + std::strerror(errno));
  }
  return ReadAll(file.Get(), path, ExitCode::Usage);
}

}  // namespace clmctl
