#include "Sysfs.h"

#include "FileKind.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

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

/// A number as attributes take it.
class NumberLine {
 public:
  explicit NumberLine(int number) {
    char* end = std::to_chars(m_text, m_text + sizeof m_text - 1, number).ptr;
    *end++ = '\n';
    m_size = static_cast<std::size_t>(end - m_text);
  }
  std::string_view Text() const { return {m_text, m_size}; }

 private:
  char m_text[16];
  std::size_t m_size;
};

int ErrorOfWrite(const NumberLine& line, ssize_t written) {
  if (written == static_cast<ssize_t>(line.Text().size())) return 0;
  return written < 0 ? errno : EIO;
}

/// Reads files whose chip is not known yet. A file that hangs keeps its thread, and is left alone until it answers.
class LineReaders {
 public:
  static LineReaders& Own() {
    static auto* const own = new LineReaders;
    return *own;
  }

  /// @return bytes read; -1 also when there was no answer in time, or all threads wait for one; errno says it
  ssize_t Read(const std::string& path, char* text, std::size_t size) {
    const std::lock_guard lock(m_mutex);
    Reader* idle = nullptr;
    for (Reader& reader : m_readers) {
      if (!reader.thread.Hangs()) {
        if (idle == nullptr) idle = &reader;
      } else if (reader.path == path) {
        idle = nullptr;
        break;
      }
    }
    if (idle == nullptr) {
      errno = EALREADY;
      return -1;
    }
    Descriptor file = OpenAttribute(path, O_RDONLY);
    if (!file.Open()) return -1;
    idle->path = path;
    return idle->thread.ReadOnce(std::move(file), text, size, kLineDeadline);
  }

 private:
  static constexpr DeviceThread::Duration kLineDeadline{100};
  struct Reader {
    DeviceThread thread{"line reader"};
    std::string path{};  ///< last read
  };

  std::mutex m_mutex;
  std::array<Reader, 8> m_readers;
};

}  // namespace

const std::string& SysfsRoot() {
  static const std::string* const root = [] {
    const char* value = std::getenv("HWAPI_SYSFS");
    return new std::string(value != nullptr && *value != '\0' ? value : "/sys");
  }();
  return *root;
}

Descriptor OpenAttribute(const std::string& path, int access, std::string* why) {
  Descriptor opened(open(path.c_str(), access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat file {};
  if (opened.Open() && fstat(opened.Get(), &file) == 0 && S_ISREG(file.st_mode)) return opened;
  const int error = opened.Open() ? EINVAL : errno;
  if (why != nullptr) *why = opened.Open() ? "it is " + board::KindOfFile(file.st_mode) : std::strerror(error);
  errno = error;
  return Descriptor();
}

ReadResult ReadNumber(DeviceThread& thread, int fd, DeviceThread::Duration deadline, int* number) {
  char text[32];
  const ssize_t size = thread.Read(fd, text, sizeof text, deadline);
  if (size > 0) {
    return ParseNumber({text, static_cast<std::size_t>(size)}, number) ? ReadResult::Ok : ReadResult::Failed;
  }
  // An attribute always shows something; an empty one has lost its device.
  if (size == 0 || errno == ENODEV || errno == ENXIO || errno == ENOENT) return ReadResult::Gone;
  if (errno == ETIME) return ReadResult::Late;
  return errno == EALREADY ? ReadResult::Busy : ReadResult::Failed;
}

int WriteNumber(DeviceThread& thread, int fd, DeviceThread::Duration deadline, int number) {
  const NumberLine line(number);
  return ErrorOfWrite(line, thread.Write(fd, line.Text(), deadline));
}

int WriteNumberHere(int fd, int number) {
  const NumberLine line(number);
  return ErrorOfWrite(line, pwrite(fd, line.Text().data(), line.Text().size(), 0));
}

std::string ReadLine(const std::string& path, int* error) {
  char text[DeviceThread::kMaxSize];
  const ssize_t size = LineReaders::Own().Read(path, text, sizeof text);
  if (error != nullptr) *error = size < 0 ? errno : 0;
  if (size <= 0) return {};
  const std::string_view all(text, static_cast<std::size_t>(size));
  return std::string(all.substr(0, all.find('\n')));
}

std::vector<std::string> ListFolder(const std::string& path, const std::string& prefix, int* error) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
  if (folder != nullptr) {
    errno = 0;
    while (const dirent* entry = readdir(folder.get())) {
      if (std::string_view(entry->d_name).starts_with(prefix)) names.emplace_back(entry->d_name);
      errno = 0;
    }
  }
  if (error != nullptr) *error = errno;
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace hwapi::ddal
