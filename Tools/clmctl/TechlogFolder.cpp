#include "TechlogFolder.h"

#include "CommandError.h"
#include "FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace clmctl {
namespace {

std::string Problem(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

/// @return "", or what is wrong with a name
std::string CheckName(const std::string& name) {
  if (name.empty() || name == "." || name == "..") return "its name is none for a file";
  if (name.find('/') != std::string::npos) return "its name is a path, and files are stored in this folder only";
  return "";
}

Stored CopyAll(int from, int to) {
  char bytes[16 * 1024];
  Stored stored;
  while (true) {
    const ssize_t size = read(from, bytes, sizeof bytes);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return {.problem = Problem("it cannot be read")};
    if (size == 0) break;
    if (!WriteAll(to, {bytes, static_cast<std::size_t>(size)})) return {.problem = Problem("it cannot be written")};
    stored.sizeBytes += size;
  }
  return fsync(to) == 0 ? stored : Stored{.problem = Problem("it cannot be written")};
}

}  // namespace

TechlogFolder::TechlogFolder(const std::string& path) {
  std::error_code making;
  std::filesystem::create_directories(path, making);
  m_fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (m_fd >= 0) return;
  const int error = errno == ENOENT && making ? making.value() : errno;
  throw CommandError(ExitCode::Usage, "cannot use the folder " + path + ": " + std::strerror(error) +
                                          "; name one that exists, or that can be made");
}

TechlogFolder::~TechlogFolder() { close(m_fd); }

Stored TechlogFolder::Store(const std::string& name, int content) const {
  if (std::string problem = CheckName(name); !problem.empty()) return {.problem = std::move(problem)};
  const std::string fresh = ".techlog-" + std::to_string(getpid()) + ".new";
  unlinkat(m_fd, fresh.c_str(), 0);  // left by a process of that number
  const int file = openat(m_fd, fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
  if (file < 0) return {.problem = Problem("it cannot be written")};
  Stored stored = CopyAll(content, file);
  if (close(file) != 0 && stored.problem.empty()) stored.problem = Problem("it cannot be written");
  if (stored.problem.empty() && renameat(m_fd, fresh.c_str(), m_fd, name.c_str()) != 0) {
    stored.problem = Problem("it cannot be put in place");
  }
  if (!stored.problem.empty()) unlinkat(m_fd, fresh.c_str(), 0);
  return stored;
}

}  // namespace clmctl
