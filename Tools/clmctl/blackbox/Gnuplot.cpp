#include "Gnuplot.h"

#include "CommandError.h"
#include "FileDescriptor.h"
#include "Screen.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace clmctl {
namespace {

[[noreturn]] void Fail(const std::string& text) { throw CommandError(ExitCode::Unreachable, text); }

UniqueFd MemoryFile(const char* name) {
  UniqueFd file(memfd_create(name, MFD_CLOEXEC));
  if (file.Get() < 0) Fail(std::string("cannot hold the plot in memory: ") + std::strerror(errno));
  return file;
}

void Write(int fd, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = write(fd, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) Fail(std::string("cannot hold the plot in memory: ") + std::strerror(errno));
    done += static_cast<std::size_t>(written);
  }
}

std::string Content(int fd) {
  std::string text;
  char piece[65536];
  for (off_t offset = 0;;) {
    const ssize_t got = pread(fd, piece, sizeof piece, offset);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return text;
    text.append(piece, static_cast<std::size_t>(got));
    offset += got;
  }
}

/// Files and signals of a new process.
class SpawnSettings {
 public:
  SpawnSettings() {
    posix_spawn_file_actions_init(&m_actions);
    posix_spawnattr_init(&m_attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&m_attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&m_attributes, &signals);
    posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&m_actions);
    posix_spawnattr_destroy(&m_attributes);
  }

  void Use(int fd, int as) { posix_spawn_file_actions_adddup2(&m_actions, fd, as); }

  /// @return 0, or an errno value
  int Spawn(pid_t& pid, const char* const* arguments) const {
    return posix_spawnp(&pid, arguments[0], &m_actions, &m_attributes, const_cast<char* const*>(arguments), environ);
  }

 private:
  posix_spawn_file_actions_t m_actions;
  posix_spawnattr_t m_attributes;
};

int WaitFor(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) Fail(std::string("lost gnuplot: ") + std::strerror(errno));
  }
  return status;
}

}  // namespace

std::string RunGnuplot(const std::string& script) {
  const UniqueFd in = MemoryFile("script"), out = MemoryFile("plot"), errors = MemoryFile("errors");
  Write(in.Get(), script);
  lseek(in.Get(), 0, SEEK_SET);
  SpawnSettings settings;
  settings.Use(in.Get(), STDIN_FILENO);
  settings.Use(out.Get(), STDOUT_FILENO);
  settings.Use(errors.Get(), STDERR_FILENO);
  // The user's own settings could change anything.
  const char* const arguments[] = {"gnuplot", "--default-settings", "-", nullptr};
  pid_t pid = 0;
  const int error = settings.Spawn(pid, arguments);
  if (error == ENOENT) {
    Fail(
        "gnuplot, which draws the plots, is not installed: apt-get install gnuplot-nox; "
        "`clmctl blackbox show trace` shows the same as text");
  }
  if (error != 0) Fail(std::string("cannot start gnuplot: ") + std::strerror(error));
  const int status = WaitFor(pid);
  std::string plot = Content(out.Get());
  if (status != 0 || plot.empty()) {
    Fail("gnuplot did not draw the plot (version 5.0 or later is needed): " + Printable(Content(errors.Get())));
  }
  return plot;
}

}  // namespace clmctl
