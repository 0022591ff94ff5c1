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

void Write(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

std::string Hex(unsigned value) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%x", value);
  return text;
}

/// @return the part of the description that binds the fans, whose attributes are put into the chip's folder
std::string MakeFans(const std::filesystem::path& chip) {
  std::string description;
  for (unsigned i = 0; i < kFans; ++i) {
    const std::string number = std::to_string(i + 1);
    Write(chip / ("fan" + number + "_input"), "4000\n");
    Write(chip / ("pwm" + number), "128\n");
    Write(chip / ("pwm" + number + "_enable"), "2\n");
    Write(chip / ("pwm" + number + "_freq"), "25000\n");
    description += "[[fan]]\nid = " + std::to_string(i) + "\nhwmon = { chip = \"bench\", fan = \"fan" + number +
                   "\", pwm = \"pwm" + number + "\" }\n";
  }
  return description;
}

}  // namespace

BenchBoard::BenchBoard(const BoardExtras& extras) {
  // Memory-backed where there is such a place: the medium is not what is measured.
  std::string pattern = std::filesystem::exists("/dev/shm") ? "/dev/shm/clm_bench-XXXXXX" : "/tmp/clm_bench-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) Die("cannot make " + pattern);
  m_folder = pattern;

  const std::filesystem::path chip = m_folder / "sys/class/hwmon/hwmon0";
  Write(chip / "name", "bench\n");
  std::string description =
      "[unit]\ntype = \"Kel\"\nversion = \"Kela\"\nproduct_code = \"000000A\"\nserial_number = \"1\"\n"
      "[node]\nboard = 1\ncpu = 1\n[access]\nsend = [\"root\"]\n"
      "[clock]\nspeed = " +
      std::to_string(extras.clockSpeed) + "\n";
  for (std::size_t i = 0; i < kDevices.size(); ++i) {
    const std::string input = "temp" + std::to_string(i + 1);
    m_sensorFiles.push_back((chip / (input + "_input")).string());
    Write(m_sensorFiles.back(), std::to_string(40000 + 125 * i) + "\n");
    description +=
        "[[temperature]]\ndevice = " + Hex(kDevices[i]) + "\nhwmon = { chip = \"bench\", input = \"" + input + "\" }\n";
  }
  if (extras.fans) description += MakeFans(chip);
  Write(m_folder / "board.toml", description);
  std::filesystem::create_directories(m_folder / "run");
  m_environment = {{"HWAPI_BOARD", (m_folder / "board.toml").string()},
                   {"HWAPI_RUN", (m_folder / "run").string()},
                   {"HWAPI_SYSFS", (m_folder / "sys").string()}};
  for (const auto& [name, value] : m_environment) setenv(name.c_str(), value.c_str(), 1);
}

BenchBoard::~BenchBoard() { std::filesystem::remove_all(m_folder); }

}  // namespace bench
