#include "Hwmon.h"

#include "Sysfs.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

namespace hwapi::ddal {
namespace {

std::string ClassFolder() { return SysfsRoot() + "/class/hwmon"; }

/// @return last part of the device path of a hwmon folder, e.g. "3-0048"; "" for a chip without a device
std::string DeviceName(const std::string& folder) {
  char target[PATH_MAX];
  const ssize_t size = readlink((folder + "/device").c_str(), target, sizeof target);
  if (size <= 0) return {};
  const std::string_view path(target, static_cast<std::size_t>(size));
  return std::string(path.substr(path.rfind('/') + 1));
}

/// @return folders of the chips of that name, and at that device where one is given
std::vector<std::string> FindChips(const std::string& chip, const std::string& at) {
  std::vector<std::string> folders;
  for (const std::string& name : ListFolder(ClassFolder(), "hwmon")) {
    const std::string folder = ClassFolder() + '/' + name;
    if (ReadLine(folder + "/name") == chip && (at.empty() || DeviceName(folder) == at)) folders.push_back(folder);
  }
  return folders;
}

bool IsInputName(std::string_view input) {
  constexpr std::string_view kStem = "temp";
  return input.size() > kStem.size() && input.starts_with(kStem) &&
         input.find_first_not_of("0123456789", kStem.size()) == input.npos;
}

/// @return path of the attribute of an input or of a label; "" when the chip has none
std::string InputPath(const std::string& folder, const std::string& input) {
  constexpr std::string_view kLabel = "_label";
  if (IsInputName(input)) {
    const std::string path = folder + '/' + input + "_input";
    return access(path.c_str(), F_OK) == 0 ? path : std::string();
  }
  for (const std::string& name : ListFolder(folder, "temp")) {
    if (!name.ends_with(kLabel) || ReadLine(folder + '/' + name) != input) continue;
    return folder + '/' + name.substr(0, name.size() - kLabel.size()) + "_input";
  }
  return {};
}

std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "none" : text;
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

std::string InputsHere(const std::string& folder) {
  constexpr std::string_view kInput = "_input";
  std::vector<std::string> inputs;
  for (std::string name : ListFolder(folder, "temp")) {
    if (!name.ends_with(kInput)) continue;
    name.resize(name.size() - kInput.size());
    const std::string label = ReadLine(folder + '/' + name + "_label");
    inputs.push_back(label.empty() ? name : name + " (" + label + ')');
  }
  return Listed(inputs);
}

std::string DevicesHere(const std::vector<std::string>& folders) {
  std::vector<std::string> devices;
  for (const std::string& folder : folders) devices.push_back(DeviceName(folder));
  return Listed(devices);
}

std::string ChipProblem(const board::HwmonTemperature& sensor, const std::vector<std::string>& folders) {
  if (!folders.empty()) {
    return "several chips are called \"" + sensor.chip +
           "\"; name one of their devices with at: " + DevicesHere(folders);
  }
  return "no chip \"" + sensor.chip + '"' + (sensor.at.empty() ? "" : " at \"" + sensor.at + '"') + " in " +
         ClassFolder() + "; chips here: " + ChipsHere() +
         "; bind the sensor to one of them, load the chip's driver, or write optional = true";
}

}  // namespace

FoundAttribute OpenTemperature(const board::HwmonTemperature& sensor, bool explain) {
  FoundAttribute found;
  const std::vector<std::string> folders = FindChips(sensor.chip, sensor.at);
  if (folders.size() != 1) {
    found.absent = true;
    if (explain) found.problem = ChipProblem(sensor, folders);
    return found;
  }
  const std::string path = InputPath(folders.front(), sensor.input);
  if (path.empty()) {
    if (explain) {
      found.problem = "chip \"" + sensor.chip + "\" has no input or label \"" + sensor.input +
                      "\"; it has: " + InputsHere(folders.front());
    }
    return found;
  }
  found.fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (found.fd < 0 && explain) {
    found.problem = path + " cannot be opened: " + std::strerror(errno) + "; let the service's user read it";
  }
  return found;
}

}  // namespace hwapi::ddal
