#include "Hwmon.h"
#include "Sysfs.h"

#include <fcntl.h>
#include <unistd.h>

#include <string_view>
#include <utility>

namespace hwapi::ddal {
namespace {

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

}  // namespace

FoundAttribute OpenTemperature(const board::HwmonTemperature& sensor, bool explain) {
  FoundChip chip = FindChip(sensor.chip, sensor.at, "sensor", explain);
  if (chip.folder.empty()) return {.absent = true, .problem = std::move(chip.problem)};
  FoundAttribute found;
  const std::string path = InputPath(chip.folder, sensor.input);
  if (path.empty()) {
    if (explain) {
      found.problem = "chip \"" + sensor.chip + "\" has no input or label \"" + sensor.input +
                      "\"; it has: " + InputsHere(chip.folder);
    }
    return found;
  }
  std::string why;
  found.attribute = OpenAttribute(path, O_RDONLY, &why);
  if (!found.attribute.Open() && explain) {
    found.problem = path + " cannot be opened: " + why + "; let the service's user read it";
  }
  return found;
}

}  // namespace hwapi::ddal
