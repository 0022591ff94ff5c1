// boardsim plug, unplug, autodet: what they accept, refuse and show.
#include "ProcessingUnitBoard.h"

namespace boardtest {
namespace {

namespace fs = std::filesystem;

using ProcessingUnitCommandTest = ProcessingUnitBoardTest;

TEST_F(ProcessingUnitCommandTest, StatusShowsTheSlots) {
  UpWithClient();
  Plug("dax1", "M", "hiz");
  Plug("3", "0x16000");
  const std::string status = Boardsim({"status"}).out;
  EXPECT_NE(status.find("\nSLOT         UNIT             STATE\n"
                        "Dax1         m (0xc000)       Hiz\n"
                        "Dax2         -                empty\n"
                        "Dax3         p (0x16000)      Ready\n"),
            std::string::npos)
      << status;
}

TEST_F(ProcessingUnitCommandTest, BoardIsChosenAsForAnyCommand) {
  UpWithClient();
  ASSERT_EQ(Boardsim({"plug", "Dax2", "m", "Sleep", "--state", StateFolder()}).status, 0);
  EXPECT_NE(Boardsim({"status"}).out.find("Dax2         m (0xc000)       Sleep\n"), std::string::npos);
  EXPECT_EQ(Boardsim({"plug", "Dax2", "m", "--state", StateFolder() + "/none"}).status, 3);
}

TEST_F(ProcessingUnitCommandTest, StatusShowsTheSensorsThatAreThere) {
  UpWithClient();
  EXPECT_EQ(Boardsim({"status"}).out.find("DAX"), std::string::npos);
  Plug("Dax1", "p");
  const std::string status = Boardsim({"status"}).out;
  // The hardware has the sensor, though the service knows of no such variant in the first slot.
  EXPECT_NE(status.find("DAX1_VORNIK"), std::string::npos) << status;
  EXPECT_EQ(status.find("DAX1_DSP7"), std::string::npos) << status;
  Unplug("Dax1");
  EXPECT_EQ(Boardsim({"status"}).out.find("DAX"), std::string::npos);
}

TEST_F(ProcessingUnitCommandTest, NothingCanBePulledOutOfAnEmptySlot) {
  UpWithClient();
  const Result unplug = Boardsim({"unplug", "Dax2"});
  EXPECT_EQ(unplug.status, 1);
  EXPECT_NE(unplug.err.find("boardsim plug Dax2 VARIANT"), std::string::npos) << unplug.err;
  Plug("Dax2", "m");
  Unplug("Dax2");
  EXPECT_EQ(Boardsim({"unplug", "Dax2"}).status, 1);
}

TEST_F(ProcessingUnitCommandTest, SensorOfAnEmptySlotIsRefusedWithWhatHelps) {
  UpWithClient();
  const Result temp = Boardsim({"temp", "0x2000a", "45"});
  EXPECT_EQ(temp.status, 1);
  EXPECT_NE(temp.err.find("boardsim plug Dax1 m"), std::string::npos) << temp.err;
  Plug("Dax1", "basic");
  EXPECT_EQ(Boardsim({"temp", "0x2000a", "45"}).status, 1);
  EXPECT_EQ(Boardsim({"temp", "0x20006", "45"}).status, 0);
}

TEST_F(ProcessingUnitCommandTest, AnotherStateLeavesWhatTheSensorsShow) {
  UpWithClient();
  Plug("Dax1", "basic");
  ASSERT_EQ(Boardsim({"temp", "0x20000", "45.5"}).status, 0);
  Plug("Dax1", "basic", "Timeout");
  EXPECT_NE(Boardsim({"status"}).out.find("pinned   45.500 C"), std::string::npos);
  Plug("Dax1", "m");
  EXPECT_EQ(Boardsim({"status"}).out.find("pinned   45.500 C"), std::string::npos);
}

TEST_F(ProcessingUnitCommandTest, WrongWordsAreUsageErrorsThatSayWhatIsAllowed) {
  const Result slot = Boardsim({"plug", "Dax4", "m"});
  EXPECT_EQ(slot.status, 2);
  EXPECT_NE(slot.err.find("Dax1, Dax2 or Dax3"), std::string::npos) << slot.err;
  const Result variant = Boardsim({"plug", "Dax1", "large"});
  EXPECT_EQ(variant.status, 2);
  EXPECT_NE(variant.err.find("basic, m or p"), std::string::npos) << variant.err;
  const Result state = Boardsim({"plug", "Dax1", "m", "gone"});
  EXPECT_EQ(state.status, 2);
  EXPECT_NE(state.err.find("SwUpgrade"), std::string::npos) << state.err;
  EXPECT_EQ(Boardsim({"plug", "Dax1"}).status, 2);
  EXPECT_EQ(Boardsim({"unplug"}).status, 2);
  EXPECT_EQ(Boardsim({"autodet"}).status, 2);
  EXPECT_EQ(Boardsim({"autodet", "away"}).status, 2);
}

TEST_F(ProcessingUnitCommandTest, WithoutABoardNothingCanBePlugged) {
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"plug", "Dax1", "m"}, {"unplug", "Dax1"}, {"autodet", "offline"}}) {
    const Result result = Boardsim(command);
    EXPECT_EQ(result.status, 3) << command[0];
    EXPECT_NE(result.err.find("boardsim up FILE"), std::string::npos) << result.err;
  }
}

TEST_F(ProcessingUnitCommandTest, BoardWithoutSlotsRefuses) {
  UpWith(fs::path(BOARDS_FOLDER) / "pivoa.toml");
  for (const std::vector<std::string>& command : {std::vector<std::string>{"plug", "Dax1", "m"}, {"unplug", "Dax1"}}) {
    const Result result = Boardsim(command);
    EXPECT_EQ(result.status, 1) << command[0];
    EXPECT_NE(result.err.find("no slots"), std::string::npos) << result.err;
  }
  EXPECT_EQ(Boardsim({"status"}).out.find("SLOT"), std::string::npos);
}

TEST_F(ProcessingUnitCommandTest, WithoutADaemonTheUnitWaits) {
  Up({"--no-daemon"});
  const Result plug = Boardsim({"plug", "Dax1", "m"});
  EXPECT_EQ(plug.status, 0);
  EXPECT_NE(plug.err.find("no client"), std::string::npos) << plug.err;
  EXPECT_NE(Boardsim({"status"}).out.find("Dax1         m (0xc000)       Ready\n"), std::string::npos);
}

}  // namespace
}  // namespace boardtest
