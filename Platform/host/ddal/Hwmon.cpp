#include "Hwmon.h"

#include "Sysfs.h"

#include <limits.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace hwapi::ddal {
namespace {

std::string ClassFolder() { return SysfsRoot() + "/class/hwmon"; }

/// @return folders of the chips of that name, and at that device where one is given
std::vector<std::string> FindChips(const std::string& chip, const std::string& at) {
  std::vector<std::string> folders;
  for (const std::string& name : ListFolder(ClassFolder(), "hwmon")) {
    const std::string folder = ClassFolder() + '/' + name;
    if (ReadLine(folder + "/name") == chip && (at.empty() || DeviceName(folder) == at)) folders.push_back(folder);
  }
  return folders;
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
  std::vector<std::string> folders = FindChips(chip, at);
  if (folders.size() == 1) return {std::move(folders.front()), {}};
  return {{}, explain ? ChipProblem(chip, at, device, folders) : std::string()};
}

}  // namespace hwapi::ddal
