// A board comes up, is changed, and goes down.
#include "TestBoard.h"

#include <csignal>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

using BoardLifeTest = BoardTest;

TEST_F(BoardLifeTest, ComesUpWithEveryEndpointOnline) {
  Up();
  const Result status = Boardsim({"status"});
  EXPECT_EQ(status.status, 0) << status.err;
  for (const char* task : {"0x4b6", "0x4ad", "0x4d9", "0x4a7", "0x4b3"}) {
    EXPECT_NE(status.out.find(std::string(task) + "  online\n"), std::string::npos) << status.out;
  }
}

TEST_F(BoardLifeTest, StatusTellsWhichSensorIsPinned) {
  Up();
  Boardsim({"temp", "0x10000", "45.5"});
  const Result status = Boardsim({"status"});
  EXPECT_NE(status.out.find("0x10000    KEL_MCU           pinned   45.500 C\n"), std::string::npos) << status.out;
}

TEST_F(BoardLifeTest, RunsInTheBackgroundUntilItIsDown) {
  const std::string description = std::string(BOARDS_FOLDER) + "/kela.toml";
  const Result up = Boardsim({"up", description});
  ASSERT_EQ(up.status, 0) << up.err;
  const pid_t daemon = DaemonPid();
  EXPECT_EQ(kill(daemon, 0), 0);
  EXPECT_EQ(Boardsim({"down"}).status, 0);
  EXPECT_NE(kill(daemon, 0), 0);
  EXPECT_EQ(Boardsim({"status"}).status, 3);
}

TEST_F(BoardLifeTest, GoesDownWhenItIsDownAlready) { EXPECT_EQ(Boardsim({"down"}).status, 0); }

TEST_F(BoardLifeTest, WhatChangesARunningBoardIsRefusedOnceItIsDown) {
  Up({"--no-daemon"});
  ASSERT_EQ(Boardsim({"tag", "made.by.test", "1"}).status, 0);
  Down();
  const std::vector<std::vector<std::string>> commands = {{"tag", "made.by.test", "2"}, {"clock", "now"},
                                                          {"reset-type", "2"},          {"reset", "2"},
                                                          {"temp", "0x10000", "45"},    {"fan", "GAR_FAN1", "auto"},
                                                          {"plug", "Dax1", "m"},        {"autodet", "offline"}};
  for (const std::vector<std::string>& command : commands) {
    const Result refused = Boardsim(command);
    EXPECT_EQ(refused.status, 3) << command.front();
    EXPECT_NE(refused.err.find("no board is up in " + StateFolder()), std::string::npos) << refused.err;
  }
  EXPECT_EQ(Clmctl({"tag", "get", "made.by.test"}).out, "made.by.test 1\n");
  EXPECT_FALSE(fs::exists(StateFolder() + "/reset-type"));
}

TEST_F(BoardLifeTest, SecondBoardInOneFolderIsRefused) {
  Up();
  const Result second = Boardsim({"up", std::string(BOARDS_FOLDER) + "/kela.toml"});
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.err.find("boardsim down"), std::string::npos) << second.err;
  EXPECT_EQ(Clmctl({"temp", "watch", "Kel", "--count", "1"}).status, 0);
}

TEST_F(BoardLifeTest, WrongDescriptionIsRefusedBeforeAnythingStarts) {
  const std::string path = Write("bad.toml", "[unit]\ntype = \"Kel\"\nversion = \"Kelx\"\n");
  const Result up = Boardsim({"up", path});
  EXPECT_EQ(up.status, 2);
  EXPECT_NE(up.err.find(path + ":3:"), std::string::npos) << up.err;
  EXPECT_FALSE(fs::exists(StateFolder()));
}

TEST_F(BoardLifeTest, MissingDescriptionIsRefusedWithWhatWouldWriteOne) {
  const Result up = Boardsim({"up", "nothing.toml"});
  EXPECT_EQ(up.status, 2);
  EXPECT_NE(up.err.find("boardsim detect >nothing.toml"), std::string::npos) << up.err;
}

TEST_F(BoardLifeTest, ForgetsTagsButKeepsFlashWhenItComesUpAgain) {
  Up();
  Boardsim({"tag", "made.by.test", "7"});
  Write("state/ffs/kept", "x");
  Down();
  Up();
  EXPECT_EQ(Clmctl({"tag", "get", "made.by.test"}).status, 1);
  EXPECT_TRUE(fs::exists(StateFolder() + "/ffs/kept"));
}

TEST_F(BoardLifeTest, DaemonSeesItsOwnFlash) {
  Up();
  const std::string root = "/proc/" + std::to_string(DaemonPid()) + "/root";
  Write("state/ffs/seen", "x");
  EXPECT_TRUE(fs::exists(root + "/ffs/seen"));
}

TEST_F(BoardLifeTest, TagsAreSharedByEverybody) {
  Up();
  ASSERT_EQ(Boardsim({"tag", "made.by.test", "0x10"}).status, 0);
  EXPECT_EQ(Clmctl({"tag", "get", "made.by.test"}).out, "made.by.test 16\n");
  EXPECT_EQ(Clmctl({"tag", "set", "made.by.test", "text:16"}).out, "");
  EXPECT_EQ(Clmctl({"tag", "get", "made.by.test", "--json"}).out,
            "{\"tag\":\"made.by.test\",\"number\":null,\"text\":\"16\"}\n");
}

TEST_F(BoardLifeTest, TagThatIsSetIsToldToPrograms) {
  Up();
  const Result set = Clmctl({"tag", "set", "made.by.test", "5", "--json"});
  EXPECT_EQ(set.out, "{\"tag\":\"made.by.test\",\"number\":5,\"text\":null}\n");
  EXPECT_EQ(set.out, Clmctl({"tag", "get", "made.by.test", "--json"}).out);
}

TEST_F(BoardLifeTest, SensorThatTheBoardDoesNotSimulateIsRefused) {
  Up();
  const Result temp = Boardsim({"temp", "0x99", "45"});
  EXPECT_EQ(temp.status, 1);
  EXPECT_NE(temp.err.find("0x10000"), std::string::npos) << temp.err;
}

class EveryBoardTest : public BoardTest, public testing::WithParamInterface<std::string> {};

TEST_P(EveryBoardTest, ComesUp) { UpWith(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Boards, EveryBoardTest, testing::ValuesIn(BoardFiles()), [](const auto& file) {
  std::string name = fs::path(file.param).stem();
  for (char& character : name) {
    if (character == '-') character = '_';
  }
  return name;
});

}  // namespace
}  // namespace boardtest
