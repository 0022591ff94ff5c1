#include "Hwmon.h"
#include "Sysfs.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace hwapi::ddal {
namespace {

/// @return names of the chip's fans and PWM outputs
std::string FansHere(const std::string& folder) {
  constexpr std::string_view kInput = "_input";
  std::vector<std::string> names;
  for (const std::string& name : ListFolder(folder, "fan")) {
    if (name.ends_with(kInput)) names.push_back(name.substr(0, name.size() - kInput.size()));
  }
  for (std::string& name : ListFolder(folder, "pwm")) {
    if (name.find('_') == name.npos) names.push_back(std::move(name));
  }
  return Listed(names);
}

/// Opens an attribute that the fan cannot do without.
/// @param name what the description calls it
/// @param problem null: nobody reads it
Descriptor OpenNeeded(const std::string& folder, const std::string& attribute, int access, const board::HwmonFan& fan,
                      const std::string& name, std::string* problem) {
  const std::string path = folder + '/' + attribute;
  std::string why;
  Descriptor opened = OpenAttribute(path, access, &why);
  if (opened.Open() || problem == nullptr || !problem->empty()) return opened;
  if (errno == ENOENT) {
    *problem = "chip \"" + fan.chip + "\" has no \"" + name + "\"; it has: " + FansHere(folder);
  } else {
    *problem = path + " cannot be opened: " + why + "; let the service's user " +
               (access == O_RDONLY ? "read it" : "read and write it, or bind the fan to one that can be driven");
  }
  return opened;
}

/// Opens an attribute that not every chip has, and not every chip lets one change.
Descriptor OpenWhereThereIsOne(const std::string& path) {
  Descriptor changeable = OpenAttribute(path, O_RDWR);
  return changeable.Open() ? std::move(changeable) : OpenAttribute(path, O_RDONLY);
}

}  // namespace

FoundFan OpenFan(const board::HwmonFan& fan, bool explain) {
  FoundChip chip = FindChip(fan.chip, fan.at, "fan", explain);
  FoundFan found;
  found.absent = chip.folder.empty();
  found.gone = chip.gone;
  found.problem = std::move(chip.problem);
  if (found.absent) return found;
  std::string* problem = explain ? &found.problem : nullptr;
  found.device = DeviceName(chip.folder);
  struct stat folder {};
  if (stat(chip.folder.c_str(), &folder) == 0) found.chip = static_cast<u32>(folder.st_ino);
  found.rpm = OpenNeeded(chip.folder, fan.fan + "_input", O_RDONLY, fan, fan.fan, problem);
  found.pwm = OpenNeeded(chip.folder, fan.pwm, O_RDWR, fan, fan.pwm, problem);
  found.mode = OpenWhereThereIsOne(chip.folder + '/' + fan.pwm + "_enable");
  found.frequency = OpenWhereThereIsOne(chip.folder + '/' + fan.pwm + "_freq");
  found.target = OpenWhereThereIsOne(chip.folder + '/' + fan.fan + "_target");
  return found;
}

}  // namespace hwapi::ddal
