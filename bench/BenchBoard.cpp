#include "BenchBoard.h"

#include "Process.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace bench {
namespace {

/// Driver device ids of the fixed sensors of a Kela.
constexpr std::array<unsigned, 8> kDevices = {0x10000, 0x10001, 0x10002, 0x10003, 0x10004, 0x10005, 0x50000, 0x50001};
/// Fans of a Kela.
constexpr unsigned kFans = 2;
/// Chips by the number of their folder: that of most devices, and those of a sensor and of a fan alone.
constexpr std::array<const char*, 3> kChips = {"bench", "sensor", "fan"};
constexpr std::size_t kSensorAlone = 4;
constexpr unsigned kFanAlone = 1;

void Write(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

std::string Hex(unsigned value) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%x", value);
  return text;
}

}  // namespace

BenchBoard::BenchBoard(const BoardExtras& extras) {
  // Memory-backed where there is such a place: the medium is not what is measured.
  std::string pattern = std::filesystem::exists("/dev/shm") ? "/dev/shm/clm_bench-XXXXXX" : "/tmp/clm_bench-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) Die("cannot make " + pattern);
  m_folder = pattern;

  for (unsigned chip = 0; chip < (extras.chips ? kChips.size() : 1); ++chip) {
    Write(ChipFolder(chip) / "name", std::string(kChips[chip]) + "\n");
  }
  std::string description =
      "[unit]\ntype = \"Kel\"\nversion = \"Kela\"\nproduct_code = \"000000A\"\nserial_number = \"1\"\n"
      "[node]\nboard = 1\ncpu = 1\n[access]\nsend = [\"root\"]\n"
      "[clock]\nspeed = " +
      std::to_string(extras.clockSpeed) + "\n";
  description += MakeSensors(extras);
  if (extras.fans) description += MakeFans(extras);
  Write(m_folder / "board.toml", description);
  std::filesystem::create_directories(m_folder / "run");
  m_environment = {{"HWAPI_BOARD", (m_folder / "board.toml").string()},
                   {"HWAPI_RUN", (m_folder / "run").string()},
                   {"HWAPI_SYSFS", (m_folder / "sys").string()}};
  for (const auto& [name, value] : m_environment) setenv(name.c_str(), value.c_str(), 1);
}

std::filesystem::path BenchBoard::ChipFolder(unsigned chip) const {
  return m_folder / "sys/class/hwmon" / ("hwmon" + std::to_string(chip));
}

/// @return the part of the description that binds the sensors
std::string BenchBoard::MakeSensors(const BoardExtras& extras) {
  std::string description;
  for (std::size_t i = 0; i < kDevices.size(); ++i) {
    const unsigned chip = extras.chips && i == kSensorAlone ? 1 : 0;
    const std::string input = "temp" + std::to_string(i + 1);
    m_sensorFiles.push_back((ChipFolder(chip) / (input + "_input")).string());
    Write(m_sensorFiles.back(), std::to_string(40000 + 125 * i) + "\n");
    description += "[[temperature]]\ndevice = " + Hex(kDevices[i]) + "\nhwmon = { chip = \"" + kChips[chip] +
                   "\", input = \"" + input + "\" }\n";
  }
  return description;
}

/// @return the part of the description that binds the fans
std::string BenchBoard::MakeFans(const BoardExtras& extras) const {
  std::string description;
  for (unsigned i = 0; i < kFans; ++i) {
    const unsigned chip = extras.chips && i == kFanAlone ? 2 : 0;
    const std::string number = std::to_string(i + 1);
    Write(ChipFolder(chip) / ("fan" + number + "_input"), "4000\n");
    Write(ChipFolder(chip) / ("pwm" + number), "128\n");
    Write(ChipFolder(chip) / ("pwm" + number + "_enable"), "2\n");
    Write(ChipFolder(chip) / ("pwm" + number + "_freq"), "25000\n");
    description += "[[fan]]\nid = " + std::to_string(i) + "\nhwmon = { chip = \"" + kChips[chip] + "\", fan = \"fan" +
                   number + "\", pwm = \"pwm" + number + "\" }\n";
  }
  return description;
}

BenchBoard::~BenchBoard() { std::filesystem::remove_all(m_folder); }

}  // namespace bench
