/// Whole resets: announced or not, the board goes down, comes back, and its history says why.
#include "ResetBoard.h"

namespace boardtest {
namespace {

using Texts = std::vector<std::string>;

class ResetCycleTest : public ResetBoard {};

TEST_F(ResetCycleTest, AnnouncedResetIsInTheHistoryOfBothFileSystemsWhenTheBoardGoesDown) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  ASSERT_EQ(Announce("ColdReset", "User", {"--info", "by hand"}).status, 0);
  const Texts expected = {"PowerOn reset Runnig partition: /ffs/fs1 RLC: 0",
                          "Cold reset : User (by hand) Runnig partition: /ffs/fs1 RLC: 0"};
  EXPECT_EQ(Reasons(1), expected);
  EXPECT_EQ(FileText(BoardFile(2)), FileText(BoardFile(1)));
}

TEST_F(ResetCycleTest, BoardThatComesBackOnTheOtherFileSystemStillKnowsWhy) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  ASSERT_EQ(Announce("ColdReset", "User", {"--info", "by hand"}).status, 0);
  const Texts before = History(1);
  Reset({"0", "--partition", "2"});
  ASSERT_TRUE(WaitForEntries(3, 2));
  const Texts after = History(2);
  EXPECT_EQ(Texts(after.begin(), after.begin() + 2), before);
  EXPECT_EQ(Reasons(2).back(),
            "PowerOn reset (probably same as previous cold reset) : User (by Runnig partition: /ffs/fs2 RLC: 0");
  EXPECT_EQ(History(1), before) << "the file system that does not run is left alone";
}

TEST_F(ResetCycleTest, BoardThatComesBackOnTheSameFileSystemKnowsWhyToo) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  ASSERT_EQ(Announce("ColdReset", "User").status, 0);
  Reset({"0"});
  ASSERT_TRUE(WaitForEntries(3));
  EXPECT_EQ(Reasons().back(),
            "PowerOn reset (probably same as previous cold reset) : User Runnig Runnig partition: /ffs/fs1 RLC: 0");
}

TEST_F(ResetCycleTest, RequestedHardResetStandsForTheResetThatFollows) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  ASSERT_EQ(Announce("Hard", "Recovery").status, 0);
  ASSERT_EQ(Reasons().back(), "Hardware reset requested : Recovery Runnig partition: /ffs/fs1 RLC: 0");
  Reset({"5"});
  EXPECT_TRUE(WaitForText(BoardFile(1), "Hardware reset : Recovery Runnig partition: /ffs/fs1 RLC: 0\n"));
  EXPECT_EQ(History().size(), 2u);
}

TEST_F(ResetCycleTest, HardResetThatNobodyRequestedHasAnEntryOfItsOwn) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  Reset({"5"});
  ASSERT_TRUE(WaitForEntries(2));
  EXPECT_EQ(Reasons().back(), "App Hard reset Runnig partition: /ffs/fs1 RLC: 0");
}

TEST_F(ResetCycleTest, ReconfiguredFpgaIsRecognisedAfterThePowerOn) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  ASSERT_EQ(Announce("ColdReset", "SwActivation", {"--cpu", "0xd4"}).status, 0);
  Reset({"0"});
  ASSERT_TRUE(WaitForEntries(3));
  EXPECT_EQ(Reasons().back(),
            "PowerOn reset (probably FPGA reconfiguration reset) : SwActivation Runnig Runnig partition: /ffs/fs1 RLC: "
            "0");
}

TEST_F(ResetCycleTest, BootCounterFromSevenOnIsAFallbackToTheOtherFileSystem) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  Reset({"2", "--counter", "6"});
  ASSERT_TRUE(WaitForEntries(2));
  EXPECT_EQ(Reasons().back(), "Watchdog reset Runnig partition: /ffs/fs1 RLC: 6");
  Reset({"2", "--counter", "7"});
  ASSERT_TRUE(WaitForEntries(3));
  EXPECT_EQ(Reasons().back(), "Watchdog reset Runnig partition: /ffs/fs2 FALLBACK RLC: 7");
}

TEST_F(ResetCycleTest, ResetTypeThatIsUnknownLeavesNoEntry) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  Reset({"13"});
  EXPECT_TRUE(WaitForText(StateFolder() + "/clm.log", "last reset type is unknown (13)"));
  ASSERT_EQ(Announce("WarmReset", "Network").status, 0);
  const Texts expected = {"PowerOn reset Runnig partition: /ffs/fs1 RLC: 0",
                          "Warm reset : Network Runnig partition: /ffs/fs1 RLC: 0"};
  EXPECT_EQ(Reasons(), expected);
}

TEST_F(ResetCycleTest, TenResetsAreKept) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  for (unsigned i = 1; i <= 11; ++i) {
    ASSERT_EQ(Announce("WarmReset", "User", {"--info", "number " + std::to_string(i)}).status, 0);
  }
  Reset({"13"});
  ASSERT_EQ(Announce("WarmReset", "User", {"--info", "number 12"}).status, 0);
  const Texts reasons = Reasons();
  ASSERT_EQ(reasons.size(), 10u);
  EXPECT_EQ(reasons.front(), "Warm reset : User (number 3) Runnig partition: /ffs/fs1 RLC: 0");
  EXPECT_EQ(reasons.back(), "Warm reset : User (number 12) Runnig partition: /ffs/fs1 RLC: 0");
}

/// A board whose clock is not set when it comes up.
class UnsetClockTest : public ResetBoard {
 protected:
  /// The service has looked at its clock and goes on waiting.
  bool WaitsForTheClock() { return WaitForText(StateFolder() + "/clm.log", "wait for NTP time"); }
};

TEST_F(UnsetClockTest, ReasonIsStoredOnceTheClockIsSet) {
  UpWithoutClock();
  ASSERT_TRUE(WaitsForTheClock());
  EXPECT_TRUE(History().empty());
  ASSERT_EQ(Boardsim({"clock", "2031-05-06T07:08:09Z"}).status, 0);
  ASSERT_TRUE(WaitForEntries(1));
  EXPECT_TRUE(History().front().starts_with("2031-05-06T07:08:")) << History().front();
}

TEST_F(UnsetClockTest, YearOf2009IsNoClockAndThatOf2010IsOne) {
  UpWithoutClock();
  ASSERT_EQ(Boardsim({"clock", "2009-12-31T23:59:45Z"}).status, 0);
  ASSERT_TRUE(WaitForEntries(1));
  EXPECT_TRUE(History().front().starts_with("2010-01-01T00:00:")) << History().front();
}

TEST_F(UnsetClockTest, ResetThatIsAnnouncedMeanwhileStoresBothWithTheSameTime) {
  UpWithoutClock();
  ASSERT_EQ(Announce("WarmReset", "User").status, 0);
  const Texts expected = {"PowerOn reset Runnig partition: /ffs/fs1 RLC: 0",
                          "Warm reset : User Runnig partition: /ffs/fs1 RLC: 0"};
  EXPECT_EQ(Reasons(), expected);
  EXPECT_EQ(History().front().substr(0, 24), History().back().substr(0, 24));
  EXPECT_TRUE(History().front().starts_with("1970-01-01T")) << History().front();
}

TEST_F(UnsetClockTest, ReasonThatAnAnnouncedResetStoredIsNotStoredAgain) {
  UpWithoutClock();
  ASSERT_EQ(Announce("WarmReset", "User").status, 0);
  ASSERT_EQ(Boardsim({"clock", "now"}).status, 0);
  ASSERT_TRUE(WaitForText(StateFolder() + "/clm.log", "NTP time available, write reset reason"));
  ASSERT_EQ(Announce("WarmReset", "Network").status, 0);
  EXPECT_EQ(History().size(), 3u);
}

TEST_F(UnsetClockTest, EachResetHasItsReasonAndItsAnnouncementOnce) {
  UpWithClock();
  ASSERT_TRUE(WaitForEntries(1));
  for (std::size_t entries = 1; entries + 2 <= 9; entries += 2) {
    Reset({"2", "--clock", "unset"});
    auto announced = StartClmctl({"reset", "WarmReset", "--category", "User", "--timeout", "20s"});
    ASSERT_EQ(Boardsim({"clock", "now"}).status, 0);
    ASSERT_EQ(announced->Wait().status, 0);
    ASSERT_TRUE(WaitForEntries(entries + 2));
    ASSERT_EQ(Reasons().at(entries).substr(0, 14), "Watchdog reset");
    ASSERT_EQ(Reasons().at(entries + 1).substr(0, 10), "Warm reset");
  }
}

TEST_F(UnsetClockTest, ResetBeforeTheClockIsSetLosesNoOlderEntry) {
  UpWithClock();
  ASSERT_EQ(Announce("WarmReset", "User").status, 0);
  const Texts before = History();
  Reset({"2", "--clock", "unset"});
  Reset({"10", "--clock", "unset"});
  ASSERT_EQ(Boardsim({"clock", "now"}).status, 0);
  ASSERT_TRUE(WaitForEntries(before.size() + 1));
  EXPECT_EQ(Reasons().back(), "Temperature reset Runnig partition: /ffs/fs1 RLC: 0");
}

}  // namespace
}  // namespace boardtest
