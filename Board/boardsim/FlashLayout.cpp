#include "FlashLayout.h"

#include "SimError.h"
#include "ddal_board.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace boardsim {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDescriptorPrefix = "TargetBD_";

/// A log of the O&M side as it may look on a board that has seen something.
struct OamLog {
  const char* tag;
  const char* text;
};

constexpr std::array kOamLogs = {
    OamLog{.tag = "app.hwapi.blackbox.oam.alarms.file",
           .text = "2024-01-30T22:14:07.120Z RAISED  7403 minor FAN1 speed below the limit\n"
                   "2024-01-30T22:16:31.484Z CLEARED 7403 minor FAN1 speed below the limit\n"
                   "2024-01-31T05:02:50.009Z RAISED  7101 major SFP2 no signal\n"},
    OamLog{
        .tag = "app.hwapi.blackbox.oam.sfp.file",
        .text =
            "2024-01-31T05:00:00.000Z SFP1 present vendor=Lumo part=LM-10G serial=L20190441 rx=-4.1dBm tx=-2.3dBm\n"
            "2024-01-31T05:00:00.000Z SFP2 present vendor=Lumo part=LM-10G serial=L20190467 rx=-40.0dBm tx=-2.4dBm\n"},
};

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
  throw SimError(ExitCode::Unreachable, "cannot lay out the flash at " + path + ": " + why +
                                            "; --fresh erases what is there, --state DIR chooses another folder");
}

void MakeFolder(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) Fail(path, error.message());
}

void WriteFile(const fs::path& path, std::string_view text) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) Fail(path, errno != 0 ? std::strerror(errno) : "it cannot be written");
}

std::vector<fs::path> DescriptorsIn(const fs::path& fileSystem) {
  std::vector<fs::path> descriptors;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(fileSystem, error)) {
    if (entry.path().filename().string().starts_with(kDescriptorPrefix)) descriptors.push_back(entry.path());
  }
  return descriptors;
}

/// @param told    build that the description names
/// @param assumed build of a file system that has none
void LayOutBuild(const fs::path& fileSystem, const std::optional<std::string>& told, const char* assumed) {
  const std::vector<fs::path> found = DescriptorsIn(fileSystem);
  if (!told && !found.empty()) return;
  const std::string build = told.value_or(assumed);
  const fs::path descriptor = fileSystem / (std::string(kDescriptorPrefix) + build + ".xml");
  std::error_code error;
  for (const fs::path& other : found) {
    if (other != descriptor) fs::remove(other, error);
  }
  if (!fs::exists(descriptor, error)) {
    WriteFile(descriptor, "<?xml version=\"1.0\"?>\n<targetBuild name=\"" + build + "\"/>\n");
  }
}

/// The target is a path of the daemon's root.
void MakeLink(const fs::path& link, const std::string& target) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(link, error);
  if (fs::exists(status) && !fs::is_symlink(status)) Fail(link, "it must be a link, and something else is there");
  if (fs::is_symlink(status) && fs::read_symlink(link, error) == target) return;
  fs::remove(link, error);
  fs::create_symlink(target, link, error);
  if (error) Fail(link, error.message());
}

std::string FileSystemPath(unsigned number) { return "/ffs/fs" + std::to_string(number); }

/// @return where the host has a file of the daemon's flash; nothing when it is no file there
std::optional<fs::path> OnHost(const StateDirectory& state, const std::string& path, unsigned running) {
  const fs::path normal = fs::path(path).lexically_normal();
  auto part = normal.begin();
  if (part == normal.end() || *part++ != "/" || part == normal.end() || *part++ != "ffs") return std::nullopt;
  fs::path host = state.Ffs();
  for (bool first = true; part != normal.end(); ++part, first = false) {
    if (first && *part == "run") {
      host /= "fs" + std::to_string(running);
    } else if (first && *part == "stb") {
      host /= "fs" + std::to_string(3 - running);
    } else {
      host /= *part;
    }
  }
  return host.has_filename() ? std::optional(host) : std::nullopt;
}

void LayOutLogs(const StateDirectory& state, const hwapi::board::BoardDescription& board, unsigned running) {
  for (const OamLog& log : kOamLogs) {
    const auto tag = board.tags.find(log.tag);
    const auto path = tag != board.tags.end() ? OnHost(state, tag->second, running) : std::nullopt;
    std::error_code error;
    if (!path || fs::exists(fs::symlink_status(*path, error))) continue;
    MakeFolder(path->parent_path());
    WriteFile(*path, log.text);
  }
}

}  // namespace

unsigned RunningFileSystem(const hwapi::board::Boot& boot) {
  const bool secondIsActive = boot.active.value_or(DDAL_FFS_FS1) == DDAL_FFS_FS2;
  const bool passiveRuns = boot.image.value_or(0) != 0;
  return secondIsActive == passiveRuns ? 1 : 2;
}

void LinkRunningFileSystem(const StateDirectory& state, unsigned running) {
  const fs::path ffs = state.Ffs();
  MakeLink(ffs / "run", FileSystemPath(running));
  MakeLink(ffs / "stb", FileSystemPath(3 - running));
}

void LayOutFlash(const StateDirectory& state, const hwapi::board::BoardDescription& board) {
  const fs::path ffs = state.Ffs();
  for (const char* fileSystem : {"fs1", "fs2"}) {
    for (const char* folder : {"config/lifedata", "logs"}) MakeFolder(ffs / fileSystem / folder);
  }
  LayOutBuild(ffs / "fs1", board.boot.fs1Build, "R2_4.1");
  LayOutBuild(ffs / "fs2", board.boot.fs2Build, "R2_4.0");
  const unsigned running = RunningFileSystem(board.boot);
  LinkRunningFileSystem(state, running);
  LayOutLogs(state, board, running);
}

}  // namespace boardsim
