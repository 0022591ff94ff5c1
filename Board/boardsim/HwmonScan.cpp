#include "HwmonScan.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <tuple>

namespace boardsim {
namespace {

namespace fs = std::filesystem;

std::string FirstLine(const fs::path& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

auto Place(const FoundSensor& sensor) { return std::tie(sensor.chip, sensor.at, sensor.input); }

/// temp2 before temp10.
bool Before(const FoundSensor& left, const FoundSensor& right) {
  return std::make_tuple(left.chip, left.at, left.input.size(), left.input) <
         std::make_tuple(right.chip, right.at, right.input.size(), right.input);
}

/// @return what a file of a chip is an attribute of, e.g. "temp1"; empty: of nothing that is looked for
using InputOf = std::string (*)(const fs::path& chip, const std::string& file);

/// A channel that does not answer is no sensor of this machine.
std::string TemperatureOf(const fs::path& chip, const std::string& file) {
  constexpr std::string_view kSuffix = "_input";
  if (!file.starts_with("temp") || !file.ends_with(kSuffix) || FirstLine(chip / file).empty()) return "";
  return file.substr(0, file.size() - kSuffix.size());
}

std::string FanOf(const fs::path& chip, const std::string& file) {
  constexpr std::string_view kPrefix = "pwm";
  if (!file.starts_with(kPrefix)) return "";
  const std::string number = file.substr(kPrefix.size());
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return "";
  const std::string fan = "fan" + number;
  return FirstLine(chip / (fan + "_input")).empty() ? "" : fan;
}

void ScanChip(const fs::path& folder, InputOf inputOf, std::vector<FoundSensor>& found) {
  const std::string chip = FirstLine(folder / "name");
  if (chip.empty()) return;
  std::error_code error;
  const fs::path device = fs::read_symlink(folder / "device", error);
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string input = inputOf(folder, entry.path().filename());
    if (input.empty()) continue;
    found.push_back({.chip = chip,
                     .at = device.filename().string(),
                     .input = input,
                     .label = FirstLine(folder / (input + "_label"))});
  }
}

std::vector<FoundSensor> Scan(const std::string& sysfs, InputOf inputOf) {
  std::vector<FoundSensor> found;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(sysfs) / "class" / "hwmon", error)) {
    ScanChip(entry.path(), inputOf, found);
  }
  std::sort(found.begin(), found.end(), Before);
  // Two chips of one name without a place cannot be told apart, so neither can be bound.
  std::vector<FoundSensor> distinct;
  for (std::size_t i = 0; i < found.size(); ++i) {
    const bool sameAsLast = i > 0 && Place(found[i - 1]) == Place(found[i]);
    const bool sameAsNext = i + 1 < found.size() && Place(found[i + 1]) == Place(found[i]);
    if (!sameAsLast && !sameAsNext) distinct.push_back(found[i]);
  }
  return distinct;
}

}  // namespace

std::vector<FoundSensor> ScanHwmon(const std::string& sysfs) { return Scan(sysfs, TemperatureOf); }

std::vector<FoundSensor> ScanHwmonFans(const std::string& sysfs) { return Scan(sysfs, FanOf); }

}  // namespace boardsim
