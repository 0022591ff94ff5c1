#include "PrivateRoot.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStartedAnew = "CLM_TEST_STARTED_ANEW";
constexpr std::string_view kOwnDirectories[] = {"/ffs", "/rom"};

std::string Problem(const std::string& what) { return what + ": " + std::strerror(errno); }

/// @return what this process was started with; of an emulated one, the emulator's own command line
std::vector<std::string> CommandLine() {
  std::ifstream file("/proc/thread-self/cmdline");
  std::vector<std::string> words;
  for (std::string word; std::getline(file, word, '\0');) words.push_back(word);
  return words;
}

/// Starts this process anew as the root user of a user namespace, which must be entered before there are threads.
/// @return why that was not possible
std::string StartAnew() {
  if (std::getenv(kStartedAnew) != nullptr) return "namespaces are refused, also to a process started anew";
  if (std::system("unshare --user --map-root-user true") != 0) return "user namespaces are refused";
  setenv(kStartedAnew, "1", 1);
  std::vector<std::string> words = {"unshare", "--user", "--map-root-user", "--"};
  for (const std::string& word : CommandLine()) words.push_back(word);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execvp(arguments.front(), arguments.data());
  return Problem("unshare");
}

/// Lets the user be who it was.
void MapUser(uid_t user, gid_t group) {
  std::ofstream("/proc/thread-self/setgroups") << "deny";
  std::ofstream("/proc/thread-self/uid_map") << user << ' ' << user << " 1";
  std::ofstream("/proc/thread-self/gid_map") << group << ' ' << group << " 1";
}

/// @return "" when mounting is this thread's own business from now on
std::string OwnMounts() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
    MapUser(user, group);
  } else if (unshare(CLONE_NEWNS) != 0) {  // root may, also with threads
    return StartAnew();
  }
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return Problem("private mounts");
  return "";
}

/// Shows an entry of the old root in the new one. What cannot be shown is not missed by any test.
void Show(const fs::directory_entry& entry) {
  const fs::path target = "/" / entry.path().filename();
  if (entry.is_symlink()) {
    fs::copy_symlink(entry.path(), target);
  } else if (entry.is_directory()) {
    fs::create_directory(target);
    static_cast<void>(mount(entry.path().c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr));
  }
}

bool IsOwn(const fs::path& path) {
  return std::find(std::begin(kOwnDirectories), std::end(kOwnDirectories), path) != std::end(kOwnDirectories);
}

/// @return "" when the root is a new one that shows what the old one did
std::string ChangeRoot() {
  const fs::path workingDirectory = fs::current_path();
  if (mount("tmpfs", "/tmp", "tmpfs", MS_NODEV, "mode=755") != 0) return Problem("a file system in memory");
  fs::create_directory("/tmp/old");
  if (syscall(SYS_pivot_root, "/tmp", "/tmp/old") != 0) return Problem("pivot_root");
  for (const fs::directory_entry& entry : fs::directory_iterator("/old")) {
    if (!IsOwn("/" / entry.path().filename())) Show(entry);
  }
  for (const std::string_view path : kOwnDirectories) fs::create_directory(path);
  fs::current_path(workingDirectory);
  if (umount2("/old", MNT_DETACH) == 0) fs::remove("/old");
  return "";
}

}  // namespace

std::string EnterPrivateRoot() {
  static std::optional<std::string> problem;  // of the one change of root
  if (!problem) {
    problem = OwnMounts();
    if (problem->empty()) problem = ChangeRoot();
  }
  if (!problem->empty()) return *problem;
  for (const std::string_view path : kOwnDirectories) {
    if (mount("tmpfs", path.data(), "tmpfs", MS_NODEV, "mode=755") != 0) return Problem(std::string(path));
  }
  return "";
}

void WriteRealFile(const std::string& path, const std::string& content) {
  MakeRealDir(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

void MakeRealDir(const std::string& path) { fs::create_directories(path); }

void MakeRealLink(const std::string& path, const std::string& target) {
  MakeRealDir(fs::path(path).parent_path());
  fs::create_symlink(target, path);
}

std::string RealFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool RealFileExists(const std::string& path) { return fs::symlink_status(path).type() != fs::file_type::not_found; }

}  // namespace ps::hwapi::common::climate
