#include "Hwmon.h"

#include "Sysfs.h"

#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace hwapi::ddal {
namespace {

std::string ClassFolder() { return SysfsRoot() + "/class/hwmon"; }

/// Chips of one name, and at one device where one is given.
struct Chips {
  std::vector<std::string> folders{};
  bool complete = true;  ///< nothing that is bound may be another one
};

Chips FindChips(const std::string& chip, const std::string& at) {
  Chips chips;
  int error = 0;
  const std::vector<std::string> names = ListFolder(ClassFolder(), "hwmon", &error);
  chips.complete = error == 0;
  for (const std::string& name : names) {
    const std::string folder = ClassFolder() + '/' + name;
    if (!at.empty() && DeviceName(folder) != at) continue;
    if (ReadLine(folder + "/name", &error) == chip) chips.folders.push_back(folder);
    if (error != 0 && error != ENOENT && error != ENODEV)
      chips.complete = false;  // these two: it has just been unbound
  }
  return chips;
}

std::string ChipsHere() {
  std::vector<std::string> chips;
  for (const std::string& name : ListFolder(ClassFolder(), "hwmon")) {
    const std::string folder = ClassFolder() + '/' + name;
    const std::string at = DeviceName(folder);
    chips.push_back(ReadLine(folder + "/name") + (at.empty() ? "" : " at " + at));
  }
  return Listed(chips);
}

std::string DevicesHere(const std::vector<std::string>& folders) {
  std::vector<std::string> devices;
  for (const std::string& folder : folders) devices.push_back(DeviceName(folder));
  return Listed(devices);
}

std::string ChipProblem(const std::string& chip, const std::string& at, const char* device,
                        const std::vector<std::string>& folders) {
  if (!folders.empty()) {
    return "several chips are called \"" + chip + "\"; name one of their devices with at: " + DevicesHere(folders);
  }
  return "no chip \"" + chip + '"' + (at.empty() ? "" : " at \"" + at + '"') + " in " + ClassFolder() +
         "; chips here: " + ChipsHere() + "; bind the " + device +
         " to one of them, load the chip's driver, or write optional = true";
}

}  // namespace

DeviceThread& ThreadOfChip(const std::string& chip, const std::string& at) {
  static auto* const mutex = new std::mutex;
  static auto* const threads = new std::map<std::pair<std::string, std::string>, DeviceThread*>;
  const std::lock_guard lock(*mutex);
  DeviceThread*& thread = (*threads)[{chip, at}];
  if (thread == nullptr) thread = new DeviceThread("chip");
  return *thread;
}

std::string DeviceName(const std::string& folder) {
  char target[PATH_MAX];
  const ssize_t size = readlink((folder + "/device").c_str(), target, sizeof target);
  if (size <= 0) return {};
  const std::string_view path(target, static_cast<std::size_t>(size));
  return std::string(path.substr(path.rfind('/') + 1));
}

std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "none" : text;
}

FoundChip FindChip(const std::string& chip, const std::string& at, const char* device, bool explain) {
  Chips chips = FindChips(chip, at);
  if (chips.folders.size() == 1) return {.folder = std::move(chips.folders.front()), .problem = {}};
  return {.folder = {},
          .problem = explain ? ChipProblem(chip, at, device, chips.folders) : std::string(),
          .gone = chips.complete && chips.folders.empty()};
}

}  // namespace hwapi::ddal
