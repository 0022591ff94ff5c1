#include "BoardDescription.h"

#include "DescriptionReader.h"
#include "FileKind.h"
#include "Problems.h"
#include "TomlTree.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace hwapi::board {
namespace {

constexpr const char kSystemDescription[] = "/etc/hwapi/board.toml";

[[noreturn]] void RefuseFile(const std::string& path, const std::string& why) {
  throw DescriptionError(path + ": cannot be read: " + why +
                         "; name a readable board description in HWAPI_BOARD or with --board");
}

/// Opens a file for reading, whoever made it: a pipe or a device keeps nobody waiting.
int OpenFile(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) RefuseFile(path, std::strerror(errno));
  struct stat file {};
  if (fstat(fd, &file) == 0 && S_ISREG(file.st_mode)) return fd;
  close(fd);
  RefuseFile(path, "it is " + KindOfFile(file.st_mode));
}

std::string Contents(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fdopen(OpenFile(path), "r"), std::fclose);
  if (file == nullptr) RefuseFile(path, std::strerror(errno));
  std::string contents;
  char part[4096];
  while (const std::size_t size = std::fread(part, 1, sizeof part, file.get())) contents.append(part, size);
  if (std::ferror(file.get()) != 0) RefuseFile(path, std::strerror(errno));
  return contents;
}

/// @return the value of an environment variable; null when it is unset or empty
const char* Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

const BoardDescription* LoadOwnBoard() {
  try {
    const auto* own = new BoardDescription(Load(DescriptionPath()));
    malloc_trim(0);  // the parsed document is gone; what it took is not needed again
    return own;
  } catch (const DescriptionError& error) {
    std::fprintf(stderr, "The board description cannot be used:\n%s\n", error.what());
    // Destructors must not run: they would touch a board that nobody knows.
    _exit(2);
  }
}

}  // namespace

BoardDescription Load(const std::string& path) {
  Problems problems;
  BoardDescription description = ReadDescription(ParseToml(Contents(path), problems), problems);
  if (!problems.None()) throw DescriptionError(problems.Text(path));
  description.path = path;
  return description;
}

const BoardDescription& OwnBoard() {
  static const BoardDescription* const own = LoadOwnBoard();
  return *own;
}

std::string RunDirectory() {
  const char* run = Environment("HWAPI_RUN");
  return run != nullptr ? run : "/run/hwapi";
}

std::string DescriptionPath() {
  if (const char* board = Environment("HWAPI_BOARD")) return board;
  const std::string running = RunDirectory() + "/board.toml";
  return access(running.c_str(), F_OK) == 0 ? running : kSystemDescription;
}

}  // namespace hwapi::board
