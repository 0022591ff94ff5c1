// Boards that are described by what the kernel has.
#include "TestBoard.h"

#include <csignal>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

/// A machine with one chip that has a temperature and a fan.
class DetectedBoardTest : public BoardTest {
 protected:
  DetectedBoardTest() {
    fs::create_directories(Folder() / kChip);
    fs::create_directories(Folder() / "sys/devices/3-0048");
    fs::create_directory_symlink(Folder() / "sys/devices/3-0048", Folder() / kChip / "device");
    const std::pair<const char*, const char*> attributes[] = {
        {"name", "lm75"}, {"temp1_input", "41500"}, {"fan1_input", "3000"}, {"pwm1", "77"}, {"pwm1_enable", "2"}};
    for (const auto& [name, value] : attributes) Write(std::string(kChip) + "/" + name, std::string(value) + "\n");
    SetVariable("HWAPI_SYSFS", Folder() / "sys");
  }
  /// @return the path of what `boardsim detect` prints
  std::string Detected(std::vector<std::string> options = {}) const {
    options.insert(options.begin(), "detect");
    const Result detect = Boardsim(options);
    EXPECT_EQ(detect.status, 0) << detect.err;
    return Write("detected.toml", detect.out);
  }
  /// @return the path of a description with a fan that the daemon cannot drive: in its root it may only read this
  /// folder
  std::string WithFan() const {
    return Write("fan.toml", FileText(Detected()) +
                                 "[[fan]]\nid = 0\nhwmon = { chip = \"lm75\", fan = \"fan1\", pwm = \"pwm1\" }\n");
  }
  fs::path Lifedata() const { return fs::path(StateFolder()) / "ffs/fs1/config/lifedata"; }

  static constexpr const char* kChip = "sys/class/hwmon/hwmon4";
};

unsigned Count(const std::string& text, const std::string& part) {
  unsigned count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(DetectedBoardTest, ShowsTheMachinesChips) {
  UpWith(Detected());
  const auto lines = JsonLines(Clmctl({"temp", "watch", "Kel", "--count", "1", "--json"}).out);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0]["temperature_celsius"], 41.5);
}

TEST_F(DetectedBoardTest, HasABlackBox) {
  UpWith(Detected());
  const Result store = Clmctl({"blackbox", "store"});
  EXPECT_EQ(store.status, 0) << store.err;
  EXPECT_TRUE(Eventually([&] { return fs::exists(Lifedata() / "blackbox"); }));
  const Result show = Clmctl({"blackbox", "show", "board"});
  EXPECT_EQ(show.status, 0) << show.err;
  EXPECT_NE(show.out.find("LINUX"), std::string::npos) << show.out;
  EXPECT_NE(show.out.find("R2_4.1"), std::string::npos) << show.out;
}

TEST_F(DetectedBoardTest, WaitsForNoResetServiceWhenItIsForTheServiceAlone) {
  UpWith(Detected({"--service-alone"}));
  ASSERT_EQ(Boardsim({"tag", "app.hwapi.online.4a7", "7"}).status, 0);
  RestartDaemon();
  EXPECT_EQ(Clmctl({"temp", "watch", "Kel", "--count", "1"}).status, 0);
  EXPECT_FALSE(fs::exists(Lifedata() / "blackbox_config"));
}

TEST_F(DetectedBoardTest, DoesNotComeUpWhenItsDaemonCannotDriveAFan) {
  const std::string description = WithFan();
  for (int run = 0; run < 2; ++run) {
    const Result up = Boardsim({"up", description});
    EXPECT_EQ(up.status, 3);
    EXPECT_EQ(Count(up.err, "pwm1 cannot be opened: Read-only file system"), 1u) << up.err;
  }
  EXPECT_EQ(Count(FileText(StateFolder() + "/boardsim.log"), "daemon started"), 2u);
  EXPECT_EQ(Boardsim({"status"}).status, 3);
}

TEST_F(DetectedBoardTest, OutlastsAChipThatIsGoneForAWhile) {
  UpWith(Detected());
  const fs::path input = Folder() / kChip / "temp1_input";
  auto tag = StartClmctl({"tag", "watch", "app.hwapi.online.4d9"});
  ASSERT_TRUE(tag->WaitForText("4d9 6"));
  fs::rename(input, Folder() / "away");
  kill(DaemonPid(), SIGTERM);
  const std::string log = StateFolder() + "/boardsim.log";
  ASSERT_TRUE(Eventually([&] { return FileText(log).find("exit status 2; starting it again") != std::string::npos; }));
  fs::rename(Folder() / "away", input);
  EXPECT_TRUE(tag->WaitForText("4d9 6", 2));
}

}  // namespace
}  // namespace boardtest
