#include "Rig.h"

#include "ddal_sim.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

std::string g_root;

/// The board of Rig.h. Its clock runs fast, so that waiting for nothing does not take long.
void WriteDescription(const std::string& path) {
  std::ofstream file(path);
  file << "[unit]\ntype = \"Pivo\"\nversion = \"Pivob\"\nproduct_code = \"" << rig::kProductionCode
       << "\"\nserial_number = \"" << rig::kSerialNumber << "\"\n"
       << "[node]\nboard = 3\ncpu = 1\n"
       << "[clock]\nspeed = 10\n"
       << "[rad]\n\"0x200B5\" = " << rig::kRadValue << "\n"
       << "[[temperature]]\ndevice = " << rig::kSensor << "\nsim = { base = 20.0 }\n"
       << "[[fan]]\nid = " << rig::kFan << "\nsim = { max_rpm = 6000 }\n"
       << "[[fan]]\nid = " << rig::kChipFan << "\nhwmon = { chip = 'emc2305', fan = 'fan1', pwm = 'pwm1' }\n"
       << "[backplane]\ntype = " << rig::kBackplane << "\n"
       << "[boot]\nactive = " << rig::kActiveFileSystem << "\nimage = " << rig::kImage
       << "\nreset_loop_count = " << rig::kResetLoopCount << "\n"
       << "[mounts]\nfs1 = \"read-only\"\nfs2 = \"writable\"\n"
       << "[devicetree]\nisti = " << rig::kIsti << "\necc_single = " << rig::kEccSingle
       << "\necc_double = " << rig::kEccDouble << "\n"
       << "[psu]\nvendor = \"" << rig::kPsuVendor << "\"\n"
       << "[filter]\nproduct_code = \"" << rig::kFilterProductCode << "\"\nhwswid = " << rig::kFilterHwswid << "\n";
}

/// A made-up device tree with the fan chip of the board.
void MakeDeviceTree(const std::filesystem::path& root) {
  const std::filesystem::path chip = root / "class/hwmon/hwmon0";
  std::filesystem::create_directories(chip);
  std::ofstream(chip / "name") << "emc2305\n";
  std::ofstream(chip / "fan1_input") << "6000\n";
  std::ofstream(chip / "pwm1") << "80\n";
  std::ofstream(chip / "pwm1_enable") << "2\n";
  std::ofstream(chip / "pwm1_freq") << "25000\n";
}

class HostBoard : public testing::Environment {
 public:
  void SetUp() override {
    std::string root = (std::filesystem::temp_directory_path() / "contract-XXXXXX").string();
    ASSERT_NE(mkdtemp(root.data()), nullptr);
    g_root = root;
    std::filesystem::create_directory(g_root + "/run");
    std::filesystem::create_directory(g_root + "/files");
    WriteDescription(g_root + "/board.toml");
    MakeDeviceTree(g_root + "/sys");
    setenv("HWAPI_SYSFS", (g_root + "/sys").c_str(), 1);
    setenv("HWAPI_RUN", (g_root + "/run").c_str(), 1);
    setenv("HWAPI_BOARD", (g_root + "/board.toml").c_str(), 1);
    for (const char* supervisor : {"NOTIFY_SOCKET", "WATCHDOG_USEC"}) unsetenv(supervisor);
    ASSERT_EQ(ddal_sim_start(), 0);
  }

  void TearDown() override {
    if (g_root.empty()) return;
    EXPECT_EQ(ddal_sim_stop(), 0);
    std::filesystem::remove_all(g_root);
  }
};

const auto* const g_board = testing::AddGlobalTestEnvironment(new HostBoard);

}  // namespace

namespace rig {

std::string Directory() { return g_root + "/files"; }

void SetTemperature(int thousandths) { ddal_sim_temp_set(kSensor, thousandths); }

void StopService() { kill(getpid(), SIGTERM); }

}  // namespace rig
