#include "DescriptionInput.h"

#include "Process.h"
#include "SimError.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace boardsim {
namespace {

constexpr std::size_t kLargest = 1024 * 1024;

Fd Open(const std::string& name) {
  if (name == "-") return Fd(dup(STDIN_FILENO));
  struct stat status {};
  if (stat(name.c_str(), &status) != 0 && errno == ENOENT) {
    throw SimError(ExitCode::Usage, "there is no file " + name + "; `boardsim detect >" + name +
                                        "` writes a board description for this machine");
  }
  if (S_ISDIR(status.st_mode)) {
    throw SimError(ExitCode::Usage, name + " is a folder; give a board description (*.toml), or - for standard input");
  }
  return Fd(open(name.c_str(), O_RDONLY | O_CLOEXEC));
}

std::string Content(const Fd& file, const std::string& name) {
  std::string text;
  char part[4096];
  while (text.size() <= kLargest) {
    const ssize_t length = read(file.Get(), part, sizeof part);
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) {
      throw SimError(ExitCode::Usage, "cannot read " + name + ": " + std::strerror(errno) +
                                          "; give a board description that you may read");
    }
    if (length == 0) return text;
    text.append(part, static_cast<std::size_t>(length));
  }
  throw SimError(ExitCode::Usage, name + " is no board description: it is larger than 1 MiB");
}

/// @return a file with the text, wherever that came from
Fd MemoryFile(const std::string& text) {
  Fd file(memfd_create("board", MFD_CLOEXEC));
  if (write(file.Get(), text.data(), text.size()) == static_cast<ssize_t>(text.size())) return file;
  throw SimError(ExitCode::Unreachable, std::string("no memory for the board description: ") + std::strerror(errno));
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace

DescriptionInput ReadDescriptionInput(const std::string& name) {
  const std::string shown = name == "-" ? "standard input" : name;
  DescriptionInput input{.board = {}, .text = Content(Open(name), shown)};
  const Fd file = MemoryFile(input.text);
  const std::string path = "/proc/self/fd/" + std::to_string(file.Get());
  try {
    input.board = hwapi::board::Load(path);
  } catch (const hwapi::board::DescriptionError& error) {
    throw SimError(ExitCode::Usage, "the board description is wrong:\n" + Replaced(error.what(), path, shown));
  }
  return input;
}

}  // namespace boardsim
