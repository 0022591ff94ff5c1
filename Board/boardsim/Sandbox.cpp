#include "Sandbox.h"

#include "SimError.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

namespace boardsim {
namespace {

namespace fs = std::filesystem;

/// Where the daemon is, seen from this program: beside it, or where system programs are; in the build tree, too.
constexpr std::array<std::string_view, 2> kDaemonPlaces = {"CLM", "../sbin/CLM"};

fs::path OwnFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

/// The host's top-level entries, one by one: /ffs and /rom need not exist on the host then.
void BindHostRoot(std::vector<std::string>& arguments) {
  // By this name, as an emulator of another processor shows that one's libraries under "/".
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/root/")) {
    const std::string path = "/" + entry.path().filename().string();
    if (path == "/proc" || path == "/dev" || path == "/sys" || path == "/ffs" || path == "/rom") continue;
    if (entry.is_symlink()) {
      arguments.insert(arguments.end(), {"--symlink", fs::read_symlink(entry.path()), path});
    } else if (entry.is_directory()) {
      arguments.insert(arguments.end(), {"--ro-bind", path, path});
    }
  }
}

std::string FileText(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

std::vector<std::string> SandboxCommand(const StateDirectory& state, const std::vector<std::string>& command,
                                        int statusFd) {
  std::vector<std::string> arguments = {"bwrap", "--die-with-parent"};
  BindHostRoot(arguments);
  arguments.insert(arguments.end(), {"--proc", "/proc", "--dev", "/dev"});
  // Fans of the kernel are driven through /sys; the file modes there say who may.
  arguments.insert(arguments.end(), {"--bind", "/sys", "/sys"});
  arguments.insert(arguments.end(), {"--bind", state.Ffs(), "/ffs", "--bind", state.Rom(), "/rom"});
  // Each file system is a mount of its own, as the drivers look for it; one that is not laid out is not mounted.
  for (const char* fileSystem : {"/fs1", "/fs2"}) {
    arguments.insert(arguments.end(), {"--bind-try", state.Ffs() + fileSystem, std::string("/ffs") + fileSystem});
  }
  arguments.insert(arguments.end(), {"--bind", state.Run(), state.Run()});
  // The daemon's one-shot commands rely on an echo that knows -e.
  if (access("/bin/bash", X_OK) == 0) arguments.insert(arguments.end(), {"--ro-bind", "/bin/bash", "/bin/sh"});
  if (statusFd >= 0) arguments.insert(arguments.end(), {"--info-fd", std::to_string(statusFd)});
  arguments.insert(arguments.end(), {"--chdir", "/", "--"});
  arguments.insert(arguments.end(), command.begin(), command.end());
  return arguments;
}

void CheckSandbox(const StateDirectory& state) {
  const std::string log = state.Root() + "/sandbox.log";
  std::error_code ignored;
  fs::remove(log, ignored);
  std::string outcome;
  try {
    outcome = WaitForChild(Spawn({.command = SandboxCommand(state, {"true"}, -1), .logFile = log}));
  } catch (const SimError& error) {
    throw SimError(ExitCode::Unreachable, std::string(error.what()) +
                                              "; install bubblewrap (apt-get install bubblewrap), or bring the board "
                                              "up without its daemon: --no-daemon");
  }
  const std::string text = FileText(log);
  fs::remove(log, ignored);
  if (outcome == ExitText(0)) return;
  throw SimError(ExitCode::Unreachable,
                 "bubblewrap cannot make the daemon's root (" + outcome + "): " + text +
                     "allow user namespaces (sysctl kernel.unprivileged_userns_clone=1, or the container's "
                     "settings), or bring the board up without its daemon: --no-daemon");
}

pid_t InnerPid(const std::string& info) {
  constexpr std::string_view kKey = "\"child-pid\":";
  std::size_t position = info.find(kKey);
  if (position == std::string::npos) return 0;
  position = info.find_first_not_of(' ', position + kKey.size());
  if (position == std::string::npos) return 0;
  pid_t pid = 0;
  std::from_chars(info.data() + position, info.data() + info.size(), pid);
  return pid;
}

std::string FindDaemon(const std::string& option) {
  if (!option.empty()) {
    const std::string path = fs::absolute(option);
    if (access(path.c_str(), X_OK) == 0) return path;
    throw SimError(ExitCode::Usage, "--daemon " + option + " is no program that can be run");
  }
  const fs::path own = OwnFolder();
  for (const std::string_view place : kDaemonPlaces) {
    const fs::path path = (own / place).lexically_normal();
    if (access(path.c_str(), X_OK) == 0) return path;
  }
  throw SimError(ExitCode::Unreachable,
                 "the daemon CLM is not beside " + own.string() + "; build it, or name it with --daemon FILE");
}

}  // namespace boardsim
