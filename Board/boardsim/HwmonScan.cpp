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

void ScanChip(const fs::path& folder, std::vector<FoundSensor>& found) {
  constexpr std::string_view kSuffix = "_input";
  const std::string chip = FirstLine(folder / "name");
  std::error_code error;
  const fs::path device = fs::read_symlink(folder / "device", error);
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string file = entry.path().filename();
    if (!file.starts_with("temp") || !file.ends_with(kSuffix)) continue;
    // A channel that does not answer is no sensor of this machine.
    if (chip.empty() || FirstLine(entry.path()).empty()) continue;
    const std::string input = file.substr(0, file.size() - kSuffix.size());
    found.push_back({.chip = chip,
                     .at = device.filename().string(),
                     .input = input,
                     .label = FirstLine(folder / (input + "_label"))});
  }
}

}  // namespace

std::vector<FoundSensor> ScanHwmon(const std::string& sysfs) {
  std::vector<FoundSensor> found;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(sysfs) / "class" / "hwmon", error)) {
    ScanChip(entry.path(), found);
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

}  // namespace boardsim
