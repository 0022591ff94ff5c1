/// The reason of the last start, stored once the clock is set.
#include "PrivateRoot.h"
#include "ResetHistory.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr u32 kUnknown = 1;
constexpr u32 kWatchdog = 2;
constexpr u32 kAppHard = 5;

class StartUpReasonTest : public ResetHistoryTest {
 protected:
  static std::string Entry() { return kNow + "Watchdog reset" + BootState() + "\n"; }

  /// Lets the newest entry, a request, stand for this start.
  void StartRequested() {
    Remember({kEarlier + "Cold reset requested : User\n"});
    Start(kAppHard);
  }
};

TEST_F(StartUpReasonTest, ItIsAddedToTheHistory) {
  Remember(NumberedEntries(2));
  Start(kWatchdog);
  m_blackBox.writeResetReasonToBlackbox();
  std::vector<std::string> expected = NumberedEntries(2);
  expected.push_back(Entry());
  EXPECT_THAT(History(), ElementsAreArray(expected));
}

TEST_F(StartUpReasonTest, TheBoardFileIsWrittenWithIt) {
  Start(kWatchdog);
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(File(kBoardFile), testing::HasSubstr(kHeader + Entry() + "SW VERSION: active:"));
}

TEST_F(StartUpReasonTest, TheBootStateIsSampledThenTheClockReadThenTheFileWritten) {
  Start(kWatchdog);
  m_blackBox.writeResetReasonToBlackbox();
  const fake::Call counter("ddal_boot_get_reset_loop_count"), clock("AaUtcTimeGet");
  EXPECT_THAT(fake::Calls({"ddal_boot_get_reset_loop_count", "AaUtcTimeGet", "AaFileOpen", "AaFileClose"}),
              ElementsAre(counter, clock, fake::Call("AaFileOpen", kBoardFile, "w"), clock, counter,
                          fake::Call("AaFileClose", kBoardFile)));
}

TEST_F(StartUpReasonTest, ItIsStoredOnce) {
  Start(kWatchdog);
  m_blackBox.writeResetReasonToBlackbox();
  Forget();
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(fake::Calls(), IsEmpty());
  EXPECT_THAT(History(), ElementsAre(Entry()));
}

TEST_F(StartUpReasonTest, WithoutOneNothingIsCalled) {
  m_blackBox.writeResetReasonToBlackbox();
  Start(kUnknown);
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(StartUpReasonTest, StoredByARequestItIsNotStoredAgain) {
  Start(kWatchdog);
  m_blackBox.addResetReasonWithTimestamp("Cold reset");
  Forget();
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(StartUpReasonTest, OnceStoredARequestStandsAlone) {
  Start(kWatchdog);
  m_blackBox.writeResetReasonToBlackbox();
  m_blackBox.addResetReasonWithTimestamp("Cold reset");
  EXPECT_THAT(History(), ElementsAre(Entry(), kNow + "Cold reset" + BootState() + "\n"));
}

TEST_F(StartUpReasonTest, AnEleventhEntryDropsTheOldest) {
  Remember(NumberedEntries(10));
  Start(kWatchdog);
  m_blackBox.writeResetReasonToBlackbox();
  std::vector<std::string> expected = NumberedEntries(10);
  expected.erase(expected.begin());
  expected.push_back(Entry());
  EXPECT_THAT(History(), ElementsAreArray(expected));
}

TEST_F(StartUpReasonTest, ATenthEntryDropsNone) {
  Remember(NumberedEntries(9));
  Start(kWatchdog);
  m_blackBox.writeResetReasonToBlackbox();
  std::vector<std::string> expected = NumberedEntries(9);
  expected.push_back(Entry());
  EXPECT_THAT(History(), ElementsAreArray(expected));
}

TEST_F(StartUpReasonTest, AClockThatCannotBeReadGivesATimeOfZeros) {
  Start(kWatchdog);
  fake::FailCall("AaUtcTimeGet");
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(History(), ElementsAre("0000-00-00T00:00:00.000Z Watchdog reset" + BootState() + "\n"));
}

TEST_F(StartUpReasonTest, ABoardFileThatCannotBeWrittenLeavesItInTheHistory) {
  Start(kWatchdog);
  fake::FailCall("AaFileOpen");
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(History(), ElementsAre(Entry()));
}

TEST_F(StartUpReasonTest, ABoardFileThatCannotBeWrittenIsNotTriedAgain) {
  Start(kWatchdog);
  fake::FailCall("AaFileOpen");
  m_blackBox.writeResetReasonToBlackbox();
  Forget();
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(StartUpReasonTest, WhenARequestStandsForItNoEntryIsAdded) {
  StartRequested();
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(File(kBoardFile), testing::HasSubstr(kHeader + kEarlier + "Cold reset : User\nSW VERSION: active:"));
}

TEST_F(StartUpReasonTest, WhenARequestStandsForItThatEntryStaysTheNewest) {
  std::vector<std::string> entries = NumberedEntries(9);
  entries.push_back(kEarlier + "Cold reset requested : User\n");
  Remember(entries);
  Start(kAppHard);
  m_blackBox.writeResetReasonToBlackbox();
  char category[40] = {}, extendedInfo[60] = {};
  m_blackBox.ResetStateInfo(category, extendedInfo);
  EXPECT_STREQ(category, "User");
  entries.back() = kEarlier + "Cold reset : User\n";
  EXPECT_THAT(History(), ElementsAreArray(entries));
}

TEST_F(StartUpReasonTest, WhenARequestStandsForItTheBootStateIsSampledAllTheSame) {
  StartRequested();
  m_blackBox.writeResetReasonToBlackbox();
  const fake::Call counter("ddal_boot_get_reset_loop_count"), clock("AaUtcTimeGet");
  EXPECT_THAT(fake::Calls({"ddal_boot_get_reset_loop_count", "AaUtcTimeGet", "AaFileOpen", "AaFileClose"}),
              ElementsAre(counter, fake::Call("AaFileOpen", kBoardFile, "w"), clock, counter,
                          fake::Call("AaFileClose", kBoardFile)));
}

TEST_F(StartUpReasonTest, WhenARequestStandsForItTheWaitEndsToo) {
  StartRequested();
  m_blackBox.writeResetReasonToBlackbox();
  Forget();
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(fake::Calls(), IsEmpty());
  m_blackBox.addResetReasonWithTimestamp("Warm reset");
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold reset : User\n", kNow + "Warm reset" + BootState() + "\n"));
}

class StartUpReasonOfBootTest : public InPrivateRoot<ResetHistoryTest> {};

TEST_F(StartUpReasonOfBootTest, ItHasTheBootStateOfTheMomentItIsStored) {
  MakeRealLink("/ffs/run", "/ffs/fs1");
  fake::Board().resetLoopCount = 2;
  Start(kWatchdog);
  fake::Board().resetLoopCount = 7;
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(History(), ElementsAre(kNow + "Watchdog reset Runnig partition: /ffs/fs2 FALLBACK RLC: 7\n"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
