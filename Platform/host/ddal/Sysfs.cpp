#include "Sysfs.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>

namespace hwapi::ddal {
namespace {

/// Parses a first line of "[-]digits".
bool ParseNumber(std::string_view text, int* number) {
  text = text.substr(0, text.find('\n'));
  const bool negative = !text.empty() && text.front() == '-';
  if (negative) text.remove_prefix(1);
  if (text.empty()) return false;
  unsigned value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9' || value > 214'748'364u) return false;
    value = value * 10 + static_cast<unsigned>(c - '0');
  }
  if (value > static_cast<unsigned>(std::numeric_limits<int>::max())) return false;
  *number = negative ? -static_cast<int>(value) : static_cast<int>(value);
  return true;
}

}  // namespace

const std::string& SysfsRoot() {
  static const std::string* const root = [] {
    const char* value = std::getenv("HWAPI_SYSFS");
    return new std::string(value != nullptr && *value != '\0' ? value : "/sys");
  }();
  return *root;
}

ReadResult ReadNumber(int fd, int* number) {
  char text[32];
  const ssize_t size = pread(fd, text, sizeof text, 0);
  if (size > 0) {
    return ParseNumber({text, static_cast<std::size_t>(size)}, number) ? ReadResult::Ok : ReadResult::Failed;
  }
  // An attribute always shows something; an empty one has lost its device.
  const bool gone = size == 0 || errno == ENODEV || errno == ENXIO || errno == ENOENT;
  return gone ? ReadResult::Gone : ReadResult::Failed;
}

int WriteNumber(int fd, int number) {
  char text[16];
  char* end = std::to_chars(text, text + sizeof text - 1, number).ptr;
  *end++ = '\n';
  const ssize_t size = end - text;
  const ssize_t written = pwrite(fd, text, static_cast<std::size_t>(size), 0);
  if (written == size) return 0;
  return written < 0 ? errno : EIO;
}

std::string ReadLine(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return {};
  char text[256];
  const ssize_t size = read(fd, text, sizeof text);
  close(fd);
  if (size <= 0) return {};
  const std::string_view all(text, static_cast<std::size_t>(size));
  return std::string(all.substr(0, all.find('\n')));
}

std::vector<std::string> ListFolder(const std::string& path, const std::string& prefix) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
  if (folder == nullptr) return names;
  while (const dirent* entry = readdir(folder.get())) {
    if (std::string_view(entry->d_name).starts_with(prefix)) names.emplace_back(entry->d_name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace hwapi::ddal
