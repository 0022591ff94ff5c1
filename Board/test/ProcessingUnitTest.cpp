// Processing units that come and go on a whole board: what is measured and recorded of them.
#include "ProcessingUnitBoard.h"

namespace boardtest {
namespace {

namespace fs = std::filesystem;

using ProcessingUnitTest = ProcessingUnitBoardTest;

TEST_F(ProcessingUnitTest, EmptySlotReportsNoSensors) {
  UpWithClient();
  for (const char* type : {"Dax1", "Dax2", "Dax3", "DaxAll"}) {
    const Result watch = Clmctl({"temp", "watch", type, "--count", "1"});
    EXPECT_EQ(watch.status, 0) << watch.err;
    EXPECT_NE(watch.out.find(std::string("  ") + type + " has no sensors\n"), std::string::npos) << watch.out;
  }
}

class SlotTest : public ProcessingUnitBoardTest, public testing::WithParamInterface<unsigned> {};

TEST_P(SlotTest, ShowsTheSensorsOfEachVariantUntilItIsEmpty) {
  const unsigned slot = GetParam();
  UpWithClient();
  UnitWatch watch = Watch("Dax" + std::to_string(slot));
  for (const char* variant : {"basic", "m", "p"}) {
    Plug(std::to_string(slot), variant);
    EXPECT_TRUE(watch.Shows(UnitNames(slot, variant))) << variant << "\n" << watch.Newest();
  }
  Unplug(std::to_string(slot));
  EXPECT_TRUE(watch.Shows({})) << watch.Newest();
  Plug(std::to_string(slot), "0x16000");
  EXPECT_TRUE(watch.Shows(UnitNames(slot, "p"))) << watch.Newest();
}

INSTANTIATE_TEST_SUITE_P(Dax, SlotTest, testing::Values(1, 2, 3));

TEST_F(ProcessingUnitTest, SensorsOfAUnitCanBeRead) {
  UpWithClient();
  Plug("Dax3", "p");
  ASSERT_EQ(Boardsim({"temp", "0x4000a", "81.5"}).status, 0);
  UnitWatch watch = Watch("Dax3");
  ASSERT_TRUE(watch.Shows(UnitNames(3, "p"))) << watch.Newest();
  const auto readings = watch.Next();
  ASSERT_EQ(readings.size(), 8u);
  for (const nlohmann::json& reading : readings) EXPECT_EQ(reading["state"], "ok") << reading;
  EXPECT_EQ(readings[7]["temperature_celsius"], 81.5);
}

TEST_F(ProcessingUnitTest, SensorThatWasPinnedIsFreeInTheNextUnit) {
  UpWithClient();
  UnitWatch watch = Watch("Dax1");
  Plug("Dax1", "basic");
  ASSERT_TRUE(watch.Shows(UnitNames(1, "basic"))) << watch.Newest();  // what comes from here on is new
  ASSERT_EQ(Boardsim({"temp", "0x20000", "fail=-2"}).status, 0);
  Unplug("Dax1");
  ASSERT_TRUE(watch.Shows({})) << watch.Newest();
  Plug("Dax1", "basic");
  ASSERT_TRUE(watch.Shows(UnitNames(1, "basic"))) << watch.Newest();
  EXPECT_EQ(watch.Next().at(0)["state"], "ok");
}

TEST_F(ProcessingUnitTest, EveryStateButUnPluggedMakesTheSensorsPresent) {
  UpWithClient();
  UnitWatch watch = Watch("Dax2");
  std::string variant = "m";  // another one each time, so that one sees what the state did
  for (const char* state :
       {"Ready", "UnInitialized", "SwUpgrade", "Timeout", "Hiz", "Sleep", "Plugged", "Unknown", "99"}) {
    variant = variant == "m" ? "p" : "m";
    Plug("Dax2", variant, state);
    EXPECT_TRUE(watch.Shows(UnitNames(2, variant))) << state << "\n" << watch.Newest();
  }
  Plug("Dax2", "m", "UnPlugged");
  EXPECT_TRUE(watch.Shows({})) << watch.Newest();
}

TEST_F(ProcessingUnitTest, AllSlotsAreReportedInTheirOrder) {
  UpWithClient();
  UnitWatch watch = Watch("DaxAll");
  Plug("Dax3", "m");
  Plug("Dax1", "basic");
  EXPECT_TRUE(watch.Shows(UnitNames(1, "basic") + UnitNames(3, "m"))) << watch.Newest();
  EXPECT_EQ(watch.Next().size(), 18u);
}

TEST_F(ProcessingUnitTest, SwapWithoutUnpluggingShowsTheNewUnit) {
  UpWithClient();
  UnitWatch watch = Watch("DaxAll");
  for (const char* variant : {"m", "basic", "p", "m"}) {
    Plug("Dax2", variant);
    EXPECT_TRUE(watch.Shows(UnitNames(2, variant))) << variant << "\n" << watch.Newest();
  }
}

TEST_F(ProcessingUnitTest, ColumnsOfTheBlackBoxComeAndGoWithTheUnit) {
  UpWithClient();
  ASSERT_EQ(Clmctl({"temp", "start", "DaxAll"}).status, 0);
  EXPECT_TRUE(ColumnsBecome({}));
  Plug("Dax2", "m");
  EXPECT_TRUE(ColumnsBecome(UnitNames(2, "m")));
  Unplug("Dax2");
  EXPECT_TRUE(ColumnsBecome({}));
}

TEST_F(ProcessingUnitTest, ColumnsOfALargerUnitStayAfterASwap) {
  UpWithClient();
  ASSERT_EQ(Clmctl({"temp", "start", "DaxAll"}).status, 0);
  Plug("Dax1", "m");
  EXPECT_TRUE(ColumnsBecome(UnitNames(1, "m")));
  Plug("Dax1", "basic");
  EXPECT_TRUE(Eventually([this] { return Measured("Dax1") == UnitNames(1, "basic"); }));
  EXPECT_EQ(Columns(), BoardColumnsAnd(UnitNames(1, "m")));
  Unplug("Dax1");
  EXPECT_TRUE(ColumnsBecome({"DAX1_DSP7", "DAX1_DSP8", "DAX1_DSP9", "DAX1_VORNIK"}));
}

TEST_F(ProcessingUnitTest, UnitsAreToldToADaemonThatStartsAnew) {
  UpWithClient();
  Plug("Dax1", "p");
  Plug("Dax3", "m");
  RestartDaemon();
  UnitWatch watch = Watch("DaxAll");
  EXPECT_TRUE(watch.Shows(UnitNames(1, "p") + UnitNames(3, "m"))) << watch.Newest();
}

TEST_F(ProcessingUnitTest, UnitsCanComeAndGoWhileSnapshotsAndFilesAreWritten) {
  constexpr unsigned kAMinuteInAFewMilliseconds = 6000;
  UpWithClient(kAMinuteInAFewMilliseconds);
  const pid_t before = DaemonPid();
  ASSERT_EQ(Clmctl({"temp", "start", "DaxAll", "--interval", "10s"}).status, 0);
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(PlugEverywhere("m", "Ready"));
    EXPECT_TRUE(PlugEverywhere("p", "Ready"));
    Columns();
    // Gone as the largest variant, which leaves nothing of either.
    EXPECT_TRUE(PlugEverywhere("m", "UnPlugged"));
  }
  Plug("Dax2", "m");
  EXPECT_TRUE(ColumnsBecome(UnitNames(2, "m")));
  EXPECT_EQ(DaemonPid(), before);
  EXPECT_EQ(DaemonLog().find("not found"), std::string::npos);
}

/// A plain Linux machine, made up, whose chips come and go.
TEST_F(ProcessingUnitTest, UnitOfALinuxMachineMayHaveSensorsThatAreAbsent) {
  const fs::path classFolder = Folder() / "sys" / "class" / "hwmon";
  fs::create_directories(classFolder);
  SetVariable("HWAPI_SYSFS", Folder() / "sys");
  UpWith(Write("linux-box.toml", "[clock]\nspeed = 20\n" + FileText(fs::path(BOARDS_FOLDER) / "linux-box.toml")));
  const Result plug = Boardsim({"plug", "Dax1", "basic"});
  ASSERT_EQ(plug.status, 0) << plug.err;
  UnitWatch watch = Watch("Dax1");
  ASSERT_TRUE(watch.Shows(UnitNames(1, "basic"))) << watch.Newest();
  EXPECT_EQ(watch.Next().at(0)["driver_error"], -1);
  fs::create_directories(classFolder / "hwmon3");
  Write("sys/class/hwmon/hwmon3/temp1_label", "Composite\n");
  Write("sys/class/hwmon/hwmon3/temp1_input", "37250\n");
  Write("sys/class/hwmon/hwmon3/name", "nvme\n");
  nlohmann::json reading;
  EXPECT_TRUE(Eventually([&] {
    reading = watch.Next().at(0);
    return reading["state"] == "ok";
  })) << reading;
  EXPECT_EQ(reading["temperature_celsius"], 37.25);
}

/// All of it in one go, as somebody would try it.
TEST_F(ProcessingUnitTest, WalkWithEverythingThatUnitsDo) {
  UpWithClient();
  UnitWatch watch = Watch("DaxAll");
  ASSERT_TRUE(watch.Shows({})) << watch.Newest();

  Names units[3];
  const auto plug = [&](unsigned slot, const std::string& variant) {
    Plug("Dax" + std::to_string(slot), variant);
    units[slot - 1] = UnitNames(slot, variant);
    EXPECT_TRUE(watch.Shows(units[0] + units[1] + units[2])) << variant << " in " << slot << "\n" << watch.Newest();
  };
  for (const unsigned slot : {1u, 2u, 3u}) plug(slot, "basic");
  EXPECT_TRUE(ColumnsBecome(units[0] + units[1] + units[2]));

  // Others in their places, without unplugging.
  for (const unsigned slot : {1u, 2u, 3u}) plug(slot, "m");
  EXPECT_TRUE(ColumnsBecome(units[0] + units[1] + units[2]));

  Unplug("Dax1");
  EXPECT_TRUE(watch.Shows(units[1] + units[2])) << watch.Newest();
  EXPECT_TRUE(ColumnsBecome(units[1] + units[2]));
  const Result empty = Clmctl({"temp", "watch", "Dax1", "--count", "1"});
  EXPECT_NE(empty.out.find("Dax1 has no sensors"), std::string::npos) << empty.out << empty.err;

  // The autodetection service is started again, and a unit came meanwhile; there is no p-variant for its slot.
  GoOffline();
  Plug("Dax1", "p");
  GoOnline();
  units[0] = UnitNames(1, "basic");
  EXPECT_TRUE(watch.Shows(units[0] + units[1] + units[2])) << watch.Newest();

  for (const unsigned slot : {2u, 3u}) plug(slot, "p");
  Unplug("Dax2");
  EXPECT_TRUE(watch.Shows(units[0] + units[2])) << watch.Newest();
  // A unit that is swapped for a smaller one leaves what only it had.
  const Names left = {"DAX2_DSP7", "DAX2_DSP8", "DAX2_DSP9"};
  EXPECT_TRUE(ColumnsBecome(units[0] + left + UnitNames(3, "m")));
}

}  // namespace
}  // namespace boardtest
