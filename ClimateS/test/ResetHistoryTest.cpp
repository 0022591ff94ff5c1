/// Resets that are added to the history.
#include "ResetHistory.h"

#include "PrivateRoot.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr u32 kWatchdog = 2;
constexpr u32 kAppHard = 5;

class AddedResetTest : public ResetHistoryTest {
 protected:
  void Add(const std::string& reason) { m_blackBox.addResetReasonWithTimestamp(reason); }

  /// @return an entry of this moment
  static std::string Entry(const std::string& reason) { return kNow + reason + BootState() + "\n"; }

  /// @return the time of an entry that is added at this time
  std::string TimeAt(const SAaTime& utc) {
    fake::SetUtc(utc);
    Add("x");
    const std::string entry = History().back();
    return entry.substr(0, entry.find('x'));
  }

  /// @return the numbered entries from one on, and behind them some others
  static std::vector<std::string> Entries(int first, int last, const std::vector<std::string>& others) {
    std::vector<std::string> entries = NumberedEntries(last);
    entries.erase(entries.begin(), entries.begin() + first - 1);
    entries.insert(entries.end(), others.begin(), others.end());
    return entries;
  }
};

TEST_F(AddedResetTest, AnEntryIsTimeReasonAndBootState) {
  Add("Cold reset requested : User (by hand)");
  EXPECT_THAT(History(), ElementsAre(Entry("Cold reset requested : User (by hand)")));
}

TEST_F(AddedResetTest, TheNewestEntryIsTheLast) {
  Remember({kEarlier + "Watchdog reset\n"});
  Add("first");
  Add("second");
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Watchdog reset\n", Entry("first"), Entry("second")));
}

TEST_F(AddedResetTest, TheReasonIsKeptAsItIs) {
  const std::string reason = " %s%n%d  : \t(\xFF\"$HOME') \\ " + std::string(2000, 'x');
  Add(reason);
  EXPECT_THAT(History(), ElementsAre(Entry(reason)));
}

TEST_F(AddedResetTest, AReasonMayBeOneCharacter) {
  Add(" ");
  EXPECT_THAT(History(), ElementsAre(Entry(" ")));
}

TEST_F(AddedResetTest, EachFieldOfTheTimeIsFilledWithZeros) {
  EXPECT_EQ(TimeAt({.year = 7, .month = 1, .day = 2, .hour = 3, .minute = 4, .second = 5, .millisec = 6}),
            "0007-01-02T03:04:05.006Z ");
}

TEST_F(AddedResetTest, EachFieldOfTheTimeHasItsWholeWidth) {
  EXPECT_EQ(TimeAt({.year = 9999, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 58, .millisec = 987}),
            "9999-12-31T23:59:58.987Z ");
}

TEST_F(AddedResetTest, TheTimeHas25Characters) {
  EXPECT_EQ(TimeAt({.year = 2016, .month = 3, .day = 7, .hour = 14, .minute = 5, .second = 9, .millisec = 42}).size(),
            25u);
}

TEST_F(AddedResetTest, TheTimeIsUtc) {
  fake::SetLocalOffset(120);
  Add("Cold reset");
  EXPECT_THAT(History(), ElementsAre(Entry("Cold reset")));
}

TEST_F(AddedResetTest, EachEntryHasTheTimeOfItsOwnMoment) {
  Add("first");
  fake::AdvanceTime(1'958'000);
  Add("second");
  EXPECT_THAT(History(), ElementsAre(Entry("first"), "2016-03-07T14:05:11.000Z second" + BootState() + "\n"));
}

TEST_F(AddedResetTest, AClockThatCannotBeReadGivesATimeOfZeros) {
  fake::FailCall("AaUtcTimeGet");
  Add("Cold reset");
  EXPECT_THAT(History(), ElementsAre("0000-00-00T00:00:00.000Z Cold reset" + BootState() + "\n"));
}

TEST_F(AddedResetTest, TheBootStateIsSampledOnceBeforeTheClockIsReadOnce) {
  Add("Cold reset");
  std::vector<fake::Call> calls = fake::Calls();
  std::erase_if(calls, [](const fake::Call& call) { return call.function == "AaSysLogPrintE"; });
  EXPECT_THAT(calls, ElementsAre(fake::Call("ddal_boot_get_reset_loop_count"), fake::Call("AaUtcTimeGet")));
}

TEST_F(AddedResetTest, TheBoardFileIsNotTouched) {
  fake::SetFile(kBoardFile, "as it was");
  Add("Cold reset");
  EXPECT_EQ(File(kBoardFile), "as it was");
}

TEST_F(AddedResetTest, ATenthEntryDropsNone) {
  Remember(NumberedEntries(9));
  Add("new");
  EXPECT_THAT(History(), ElementsAreArray(Entries(1, 9, {Entry("new")})));
}

TEST_F(AddedResetTest, AnEleventhEntryDropsTheOldest) {
  Remember(NumberedEntries(10));
  Add("new");
  EXPECT_THAT(History(), ElementsAreArray(Entries(2, 10, {Entry("new")})));
}

TEST_F(AddedResetTest, AHistoryOfMoreThanTenIsCutToTheNewestTen) {
  Remember(NumberedEntries(10));
  Remember(NumberedEntries(10));
  Add("new");
  EXPECT_THAT(History(), ElementsAreArray(Entries(2, 10, {Entry("new")})));
}

TEST_F(AddedResetTest, OfManyAdditionsTheLastTenStay) {
  std::vector<std::string> expected;
  for (int i = 1; i <= 25; ++i) {
    Add("reset " + std::to_string(i));
    if (i > 15) expected.push_back(Entry("reset " + std::to_string(i)));
  }
  EXPECT_THAT(History(), ElementsAreArray(expected));
}

TEST_F(AddedResetTest, AnEmptyReasonSamplesTheBootStateAndNothingElse) {
  Add("");
  std::vector<fake::Call> calls = fake::Calls();
  std::erase_if(calls, [](const fake::Call& call) { return call.function == "AaSysLogPrintE"; });
  EXPECT_THAT(calls, ElementsAre(fake::Call("ddal_boot_get_reset_loop_count")));
}

TEST_F(AddedResetTest, AnEmptyReasonAddsNothing) {
  Remember(NumberedEntries(10));
  Add("");
  EXPECT_THAT(History(), ElementsAreArray(NumberedEntries(10)));
}

TEST_F(AddedResetTest, AnEmptyReasonLeavesTheReasonOfTheStartWaiting) {
  Start(kWatchdog);
  Add("");
  EXPECT_THAT(History(), IsEmpty());
  Add("Cold reset");
  EXPECT_THAT(History(), ElementsAre(Entry("Watchdog reset"), Entry("Cold reset")));
}

TEST_F(AddedResetTest, TheReasonOfTheStartComesFirstIfItStillWaits) {
  Start(kWatchdog);
  Add("Cold reset");
  EXPECT_THAT(History(), ElementsAre(Entry("Watchdog reset"), Entry("Cold reset")));
}

TEST_F(AddedResetTest, TheReasonOfTheStartIsAddedOnce) {
  Start(kWatchdog);
  Add("Cold reset");
  Add("Warm reset");
  EXPECT_THAT(History(), ElementsAre(Entry("Watchdog reset"), Entry("Cold reset"), Entry("Warm reset")));
}

TEST_F(AddedResetTest, BothEntriesOfAnAdditionShareOneReadingOfClockAndBootState) {
  Start(kWatchdog);
  Add("Cold reset");
  EXPECT_EQ(fake::Calls("AaUtcTimeGet").size(), 1u);
  EXPECT_EQ(fake::Calls("ddal_boot_get_reset_loop_count").size(), 1u);
}

TEST_F(AddedResetTest, AReasonOfTheStartWithoutATextIsAnEntryAllTheSame) {
  Remember({kEarlier + "Cold reset requested\n"});
  Start(kAppHard);
  Add("Warm reset");
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold reset\n", Entry(""), Entry("Warm reset")));
}

TEST_F(AddedResetTest, TwoEntriesBehindTenDropTheTwoOldest) {
  Remember(NumberedEntries(10));
  Start(kWatchdog);
  Add("new");
  EXPECT_THAT(History(), ElementsAreArray(Entries(3, 10, {Entry("Watchdog reset"), Entry("new")})));
}

TEST_F(AddedResetTest, TwoEntriesBehindNineDropTheOldest) {
  Remember(NumberedEntries(9));
  Start(kWatchdog);
  Add("new");
  EXPECT_THAT(History(), ElementsAreArray(Entries(2, 9, {Entry("Watchdog reset"), Entry("new")})));
}

TEST_F(AddedResetTest, TwoEntriesBehindEightDropNone) {
  Remember(NumberedEntries(8));
  Start(kWatchdog);
  Add("new");
  EXPECT_THAT(History(), ElementsAreArray(Entries(1, 8, {Entry("Watchdog reset"), Entry("new")})));
}

/// Boots from partitions of the test's own.
class AddedResetOfBootTest : public InPrivateRoot<AddedResetTest> {};

TEST_F(AddedResetOfBootTest, AnEntryIsThatWholeLine) {
  MakeRealLink("/ffs/run", "/ffs/fs2");
  fake::Board().resetLoopCount = 3;
  Add("Cold reset requested : User (by hand)");
  EXPECT_THAT(History(), ElementsAre("2016-03-07T14:05:09.042Z Cold reset requested : User (by hand) "
                                     "Runnig partition: /ffs/fs2 RLC: 3\n"));
}

TEST_F(AddedResetOfBootTest, EachEntryHasTheBootStateOfItsOwnMoment) {
  MakeRealLink("/ffs/run", "/ffs/fs1");
  Add("first");
  fake::Board().resetLoopCount = 7;
  Add("second");
  EXPECT_THAT(History(), ElementsAre(kNow + "first Runnig partition: /ffs/fs1 RLC: 0\n",
                                     kNow + "second Runnig partition: /ffs/fs2 FALLBACK RLC: 7\n"));
}

TEST_F(AddedResetOfBootTest, BothEntriesOfAnAdditionHaveTheSameBootState) {
  MakeRealLink("/ffs/run", "/ffs/fs1");
  Start(kWatchdog);
  fake::Board().resetLoopCount = 1;
  Add("Cold reset");
  const std::string state = " Runnig partition: /ffs/fs1 RLC: 1\n";
  EXPECT_THAT(History(), ElementsAre(kNow + "Watchdog reset" + state, kNow + "Cold reset" + state));
}

TEST_F(AddedResetOfBootTest, ABootStateThatCannotBeReadIsAnEntryAllTheSame) {
  fake::FailCall("ddal_boot_get_reset_loop_count");
  Add("Cold reset");
  EXPECT_THAT(History(), ElementsAre(kNow + "Cold reset Runnig partition: Invalid RLC: Error\n"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
