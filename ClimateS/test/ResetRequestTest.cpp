/// Announced resets: which ones concern this board, what is stored, in which order.
#include "PrivateRoot.h"
#include "ResetTest.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ResetRequestTest : public ResetTest {
 protected:
  ResetRequestTest() { StartService(); }
};

TEST_F(ResetRequestTest, IsLoggedWithAllItsFields) {
  Announce({.board = 0xABCD, .cpu = 0xEF, .state = 0xCD, .extra = 0x1B, .category = 0x2C, .extended = "by hand"});
  EXPECT_EQ(fake::LogLines().front(),
            Line(kDebug,
                 "HandleApi2ResetReqMsg(): Received API2_RESET_REQ_MSG { board=0xABCD, cpu=0xEF, state=0xcd, "
                 "extra=0x1B, Category=0x2C, extended_info='by hand' }"));
}

TEST_F(ResetRequestTest, IsLoggedWithTheGreatestAndTheSmallestNumbers) {
  const u32 most = 0xFFFFFFFF;
  Announce({.board = most, .cpu = most, .state = most, .extra = most, .category = most, .node = most});
  EXPECT_EQ(fake::LogLines().front().text,
            "HandleApi2ResetReqMsg(): Received API2_RESET_REQ_MSG { board=0xFFFFFFFF, cpu=0xFFFFFFFF, "
            "state=0xffffffff, extra=0xFFFFFFFF, Category=0xFFFFFFFF, extended_info='' }");
  fake::ClearLog();
  Announce({.board = 0, .cpu = 0, .state = 0, .extra = 0, .category = 0});
  EXPECT_EQ(fake::LogLines().front().text,
            "HandleApi2ResetReqMsg(): Received API2_RESET_REQ_MSG { board=0x0, cpu=0x0, state=0x0, extra=0x0, "
            "Category=0x0, extended_info='' }");
}

TEST_F(ResetRequestTest, ForThisBoardIsStored) {
  Announce({});
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

TEST_F(ResetRequestTest, IsStoredOnTheStandbyFileSystemToo) {
  fake::SetFile(kStandbyFile, "old");
  Announce({});
  EXPECT_NE(HistoryIn(kStandbyFile), "(no history)");
  EXPECT_EQ(fake::FileContent(kStandbyFile), fake::FileContent(kBoardFile));
}

TEST_F(ResetRequestTest, LaterResetsStandBehindEarlierOnes) {
  Announce({.extra = 1});
  Announce({.extra = 2});
  Announce({.extra = 3, .category = 2});
  EXPECT_THAT(Reasons(), ElementsAre("Core reset : User", "Chip reset : User", "System reset : Network"));
}

TEST_F(ResetRequestTest, OnlyTheLastTenStay) {
  std::vector<std::string> expected;
  for (int i = 1; i <= 13; ++i) {
    Announce({.extended = std::to_string(i)});
    if (i > 3) expected.push_back("Warm reset : User (" + std::to_string(i) + ")");
  }
  EXPECT_EQ(Reasons(), expected);
}

TEST_F(ResetRequestTest, IsForTheFpgaOfThisBoard) {
  Announce({.cpu = 0xD4});
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

TEST_F(ResetRequestTest, TheNodeInTheRequestDoesNotMatter) {
  for (const u32 node : {1u, 2u, 0xFFFFFFFFu}) Announce({.node = node});
  EXPECT_EQ(Reasons().size(), 3u);
}

TEST_F(ResetRequestTest, ThisBoardIsTheOneOfTheOwnNode) {
  fake::SetOwnNid(0x0304);
  Announce({.board = 3, .cpu = 4, .extra = 1});
  Announce({.board = 3, .cpu = 0xD4, .extra = 2});
  for (const auto& [board, cpu] : {std::pair(1u, 1u), {3u, 1u}, {3u, 3u}, {4u, 4u}, {4u, 3u}, {4u, 0xD4u}}) {
    Announce({.board = board, .cpu = cpu});
  }
  EXPECT_THAT(Reasons(), ElementsAre("Core reset : User", "Chip reset : User"));
}

TEST_F(ResetRequestTest, TheOwnAddressHasNoTask) {
  fake::SetOwnNid(0x0304);
  Announce({.board = 3, .cpu = 4});
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComGetOwnNid"}, {"AaSysComSicadGet", 0, 0x0304}}));
  EXPECT_THAT(fake::Calls("AaSysComNmapGetBoard"), ElementsAre(fake::Call("AaSysComNmapGetBoard", 0x03040000)));
  EXPECT_THAT(fake::Calls("AaSysComNmapGetCpu"), ElementsAre(fake::Call("AaSysComNmapGetCpu", 0x03040000)));
}

TEST_F(ResetRequestTest, TheOwnProcessorMayHaveTheNumberOfTheFpga) {
  fake::SetOwnNid(0x01D4);
  Announce({.cpu = 0xD4, .extra = 4});
  Announce({.cpu = 1, .extra = 4});
  EXPECT_THAT(Reasons(), ElementsAre("FPGA reconfiguration / Cold reset : User"));
}

TEST_F(ResetRequestTest, IsAddedThenWrittenThenCopiedThenAnswered) {
  for (const std::string& path : {kOamAlarmsFile, kOamSfpFile}) fake::SetFile(path, "log");
  Announce({});
  EXPECT_TRUE(
      fake::CalledInOrder({{"AaSysLogPrintE", kDebug, 131143, ResetRequest().Arrival()},
                           {"AaSysComNmapGetBoard"},
                           {"ddal_boot_get_reset_loop_count"},
                           {"AaUtcTimeGet"},
                           {"AaFileOpen", kBoardFile, "w"},
                           {"AaFileClose", kBoardFile},
                           {"AaFileCopy", kOamAlarmsFile, kAlarmsFile},
                           {"AaFileCopy", kOamSfpFile, kSfpFile},
                           {"ddal_boot_get_linux_id"},
                           {"AaFileCopy", kBoardFile, kStandbyFile},
                           {"AaSysComMsgCreateReply", kResetResp, 20, kResetReq},
                           {"AaSysLogPrintE", kDebug, 131143, "Sending API_RESET_RESP_MSG to HWAPI_RESET_SERVICE"},
                           {"AaSysComMsgSend", kResetResp, kResetService}}));
}

TEST_F(ResetRequestTest, EachStepIsDoneOnce) {
  Announce({});
  EXPECT_EQ(fake::Calls("AaFileWrite").size(), 1u);
  EXPECT_EQ(fake::Calls("ddal_boot_get_linux_id").size(), 1u);
  EXPECT_EQ(fake::Calls("AaFileCopy").size(), 1u);  // of the board file; there are no logs
}

TEST_F(ResetRequestTest, TheTraceIsWrittenOnceItIsRecorded) {
  Announce({});
  EXPECT_EQ(fake::FileContent(kTraceFile), std::nullopt);
  BlackBoxData::getInstance()->enableTemperatureTrace();
  Announce({});
  EXPECT_NE(fake::FileContent(kTraceFile), std::nullopt);
}

TEST_F(ResetRequestTest, LogsNothingElseOfItsOwn) {
  Announce({});
  EXPECT_THAT(LinesOfTheHandler(), IsEmpty());
}

/// An entry as it stands in the file, on a board that runs from the second file system.
using ResetEntryOnFlashTest = InPrivateRoot<ResetRequestTest>;

TEST_F(ResetEntryOnFlashTest, HasTimeReasonAndBootState) {
  MakeRealLink("/ffs/run", "/ffs/fs2");
  fake::Board().resetLoopCount = 3;
  fake::SetUtc({.year = 2016, .month = 3, .day = 7, .hour = 14, .minute = 5, .second = 9, .millisec = 42});
  Announce({.extra = 4, .category = 2, .extended = "two words"});
  EXPECT_EQ(HistoryIn(kBoardFile),
            "2016-03-07T14:05:09.042Z Cold reset : Network (two words) Runnig partition: /ffs/fs2 RLC: 3\n");
}

/// Before the clock is set.
class EarlyResetRequestTest : public ResetTest {
 protected:
  EarlyResetRequestTest() {
    m_board.SetResetType(2);
    StartService();
  }
};

TEST_F(EarlyResetRequestTest, StoresTheReasonOfTheLastStartToo) {
  Announce({});
  EXPECT_THAT(Reasons(), ElementsAre("Watchdog reset", "Warm reset : User"));
}

TEST_F(EarlyResetRequestTest, ForAnotherBoardStoresNothing) {
  Announce({.board = 2});
  BlackBoxData::getInstance()->createBlackboxFile();
  EXPECT_EQ(HistoryIn(kBoardFile), "");
}

/// A request that does not concern this board.
struct Foreign {
  const char* name;
  u32 board = 1;
  u32 cpu = 1;
  u32 state = 1;

  friend std::ostream& operator<<(std::ostream& out, const Foreign& foreign) { return out << foreign.name; }
};

class ForeignResetRequestTest : public ResetRequestTest, public testing::WithParamInterface<Foreign> {
 protected:
  static ResetRequest Request() {
    return {.board = GetParam().board, .cpu = GetParam().cpu, .state = GetParam().state, .extra = 99, .category = 99};
  }
};

TEST_P(ForeignResetRequestTest, IsAnsweredAndNoMore) {
  EXPECT_EQ(Announce(Request()).payload, Request().Answer());
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, Request().Arrival()),
                                            Line(kDebug, "Sending API_RESET_RESP_MSG to HWAPI_RESET_SERVICE")));
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaFileCopy", "AaUtcTimeGet", "ddal_boot_get_reset_loop_count",
                           "ddal_boot_get_linux_id"}),
              IsEmpty());
}

TEST_P(ForeignResetRequestTest, IsNotInTheHistory) {
  Announce(Request());
  Announce({});
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

INSTANTIATE_TEST_SUITE_P(
    For, ForeignResetRequestTest,
    testing::Values(Foreign{.name = "BoardZero", .board = 0}, Foreign{.name = "AnotherBoard", .board = 2},
                    Foreign{.name = "ABoardWithTheSameLowByte", .board = 0x101},
                    Foreign{.name = "TheFpgaOfAnotherBoard", .board = 2, .cpu = 0xD4},
                    Foreign{.name = "BoardD4", .board = 0xD4}, Foreign{.name = "ProcessorZero", .cpu = 0},
                    Foreign{.name = "AnotherProcessor", .cpu = 2}, Foreign{.name = "ProcessorD3", .cpu = 0xD3},
                    Foreign{.name = "ProcessorD5", .cpu = 0xD5},
                    Foreign{.name = "AProcessorWithTheSameLowByte", .cpu = 0x101},
                    Foreign{.name = "AProcessorWithTheLowByteOfTheFpga", .cpu = 0x1D4},
                    Foreign{.name = "StateOff", .state = 0}, Foreign{.name = "StatePulse", .state = 2},
                    Foreign{.name = "UnknownState", .state = 3},
                    Foreign{.name = "AStateWithTheSameLowByte", .state = 0x101},
                    Foreign{.name = "TheGreatestState", .state = 0xFFFFFFFF},
                    Foreign{.name = "PulseOfTheFpga", .cpu = 0xD4, .state = 2}),
    testing::PrintToStringParamName());

/// Boards with and without the handlers of resets.
class ResetHandlersTest : public ResetTest {
 protected:
  void StartOn(EUnitType type, EUnitVersion version) {
    fake::Unit().type = type;
    Start(version);
  }
};

TEST_F(ResetHandlersTest, PivoBoardsStoreResets) {
  StartOn(EUnitType_Pivo, EUnitVersion_Pivoa);
  Announce({});
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

TEST_F(ResetHandlersTest, ZunBoardsStoreResets) {
  StartOn(EUnitType_Zun, EUnitVersion_Zun);
  Announce({});
  EXPECT_THAT(Reasons(), ElementsAre("Warm reset : User"));
}

TEST_F(ResetHandlersTest, KeleBoardsDoNotHandleResets) {
  StartOn(EUnitType_Kel, EUnitVersion_Kele);
  for (const u32 id : {kResetReq, kResetInfoReq, 0x2C62u}) EXPECT_FALSE(fake::Dispatch({.id = id})) << id;
}

}  // namespace
}  // namespace ps::hwapi::common::climate
