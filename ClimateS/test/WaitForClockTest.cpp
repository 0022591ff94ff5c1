/// The thread that waits until the clock is set, and how it is started.
#include "ResetHistory.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr u32 kWatchdog = 2;
constexpr SAaTime kUnset = {.year = 1970, .month = 1, .day = 1, .hour = 0, .minute = 0, .second = 7, .millisec = 0};
const std::string kThread = "BlackBoxDataNtp";

class WaitStartTest : public ResetHistoryTest {
 protected:
  const fake::LogLine m_start = Line(
      kInfo,
      "BlackBoxData::startWaitingForNTPTime(): reset reason (2) needs to be stored to blackbox, wait for NTP time");
  const fake::LogLine m_failure =
      Line(kError, "BlackBoxData::startWaitingForNTPTime(): failed to start thread for waiting NTP time, ret = 12");
};

TEST_F(WaitStartTest, TheThreadIsStartedWithoutAnArgument) {
  m_blackBox.startWaitingForNTPTime(kWatchdog);
  EXPECT_THAT(fake::Calls("AaSysComEuCreateAndStart"),
              ElementsAre(fake::Call("AaSysComEuCreateAndStart", kThread, 1024, 5, nullptr)));
  const std::vector<fake::StartedThread> threads = fake::StartedThreads();
  ASSERT_EQ(threads.size(), 1u);
  EXPECT_EQ(threads[0].entry, &waitingForNTPTime);
  EXPECT_EQ(threads[0].pointer, nullptr);
  EXPECT_THAT(threads[0].argument, IsEmpty());
}

TEST_F(WaitStartTest, TheStartIsLoggedBefore) {
  m_blackBox.startWaitingForNTPTime(kWatchdog);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_start));
  EXPECT_TRUE(fake::CalledInOrder({Logging(kInfo, m_start.text), {"AaSysComEuCreateAndStart"}}));
  EXPECT_EQ(fake::Calls().size(), 2u);
}

TEST_F(WaitStartTest, TheTypeIsLoggedAsASignedNumber) {
  m_blackBox.startWaitingForNTPTime(0xFFFFFFFF);
  EXPECT_TRUE(fake::Logged(kInfo,
                           "BlackBoxData::startWaitingForNTPTime(): reset reason (-1) needs to be stored to blackbox, "
                           "wait for NTP time"));
}

TEST_F(WaitStartTest, TheWaitHasBegunBeforeTheThreadRuns) {
  std::size_t written = 0;
  fake::OnThreadStarted([&] {
    m_blackBox.writeResetReasonToBlackbox();  // as the thread does, where the clock is set
    written = fake::Calls("AaFileClose").size();
  });
  Start(kWatchdog);
  EXPECT_EQ(written, 1u);
  EXPECT_THAT(History(), ElementsAre(kNow + "Watchdog reset" + BootState() + "\n"));
}

TEST_F(WaitStartTest, TheFailureHasALineFeedAtItsEnd) {
  fake::FailCall("AaSysComEuCreateAndStart", 1, 12);
  m_blackBox.startWaitingForNTPTime(kWatchdog);
  EXPECT_TRUE(fake::CalledInOrder({Logging(kError, m_failure.text + "\n")}));
}

TEST_F(WaitStartTest, AThreadThatCannotBeStartedIsLogged) {
  fake::FailCall("AaSysComEuCreateAndStart", 1, 12);
  m_blackBox.startWaitingForNTPTime(kWatchdog);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_start, m_failure));
}

TEST_F(WaitStartTest, WithoutAThreadTheReasonIsStoredWithTheNextRequest) {
  fake::FailCall("AaSysComEuCreateAndStart");
  Start(kWatchdog);
  EXPECT_THAT(History(), IsEmpty());
  m_blackBox.addResetReasonWithTimestamp("Cold reset requested");
  EXPECT_THAT(History(), ElementsAre(kNow + "Watchdog reset" + BootState() + "\n",
                                     kNow + "Cold reset requested" + BootState() + "\n"));
}

/// The thread, which uses the process's black box; the clock was never set.
class WaitForClockTest : public ResetHistoryTest {
 protected:
  WaitForClockTest() : ResetHistoryTest(BlackBoxData::getInstance()) {
    Start(kWatchdog);
    fake::SetUtc(kUnset);
  }

  /// Runs the thread until it ends or has slept so often.
  static fake::ThreadEnd Run(unsigned sleeps = 0) { return fake::RunThread(kThread, sleeps); }

  static void SetClock(u32 year, u32 month, u32 day, u32 hour, u32 minute, u32 second) {
    fake::SetUtc({year, month, day, hour, minute, second, 0});
  }

  const fake::LogLine m_waiting =
      Line(kDebug, "BlackBoxData / waitingForNTPTime: NTP time not available, continue waiting...");
  const fake::LogLine m_available =
      Line(kInfo, "BlackBoxData / waitingForNTPTime: NTP time available, write reset reason to blackbox file");
  const fake::Call m_sleep{"AaSysTimeSleep", 10, EAaSysTimeScale_Sec};
};

TEST_F(WaitForClockTest, WhileTheClockIsNotSetItSleepsTenSeconds) {
  EXPECT_EQ(Run(2), fake::ThreadEnd::Sleeping);
  const fake::Call look("AaLocalTimeGet");
  EXPECT_THAT(fake::Calls({"AaLocalTimeGet", "AaSysTimeSleep"}),
              ElementsAre(look, m_sleep, look, m_sleep, look, m_sleep));
}

TEST_F(WaitForClockTest, EachLookIsLoggedBeforeTheSleep) {
  Run(1);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_waiting));
  EXPECT_TRUE(
      fake::CalledInOrder({Logging(kDebug, m_waiting.text), m_sleep, Logging(kDebug, m_waiting.text), m_sleep}));
}

TEST_F(WaitForClockTest, WhileItWaitsNothingIsStored) {
  Run(100);
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaUtcTimeGet", "ddal_boot_get_reset_loop_count"}), IsEmpty());
}

TEST_F(WaitForClockTest, TheWaitHasNoEnd) { EXPECT_EQ(Run(10000), fake::ThreadEnd::Sleeping); }

TEST_F(WaitForClockTest, TheLastMomentOf2009IsNotSet) {
  SetClock(2009, 12, 31, 23, 59, 59);
  EXPECT_EQ(Run(), fake::ThreadEnd::Sleeping);
}

TEST_F(WaitForClockTest, TheFirstMomentOf2010IsSet) {
  SetClock(2010, 1, 1, 0, 0, 0);
  EXPECT_EQ(Run(), fake::ThreadEnd::Returned);
  EXPECT_THAT(fake::LogTexts(kDebug), testing::Not(testing::Contains(m_waiting.text)));
}

TEST_F(WaitForClockTest, TheYearIsThatOfTheLocalTime) {
  SetClock(2009, 12, 31, 23, 30, 0);
  fake::SetLocalOffset(60);
  EXPECT_EQ(Run(), fake::ThreadEnd::Returned);
}

TEST_F(WaitForClockTest, TheYearIsNotThatOfUtc) {
  SetClock(2010, 1, 1, 0, 30, 0);
  fake::SetLocalOffset(-60);
  EXPECT_EQ(Run(), fake::ThreadEnd::Sleeping);
}

TEST_F(WaitForClockTest, AYearBeforeZeroCountsAsLate) {
  SetClock(0, 1, 1, 0, 30, 0);
  fake::SetLocalOffset(-60);
  EXPECT_EQ(Run(), fake::ThreadEnd::Returned);
}

TEST_F(WaitForClockTest, AClockThatCannotBeReadIsNotSet) {
  SetClock(2016, 3, 7, 14, 5, 9);
  fake::FailCall("AaLocalTimeGet");
  EXPECT_EQ(Run(1), fake::ThreadEnd::Returned);
  EXPECT_THAT(fake::Calls("AaSysTimeSleep"), ElementsAre(m_sleep));
}

TEST_F(WaitForClockTest, TheClockIsFoundSetWithinTenSeconds) {
  SetClock(2009, 12, 31, 23, 59, 35);
  EXPECT_EQ(Run(10), fake::ThreadEnd::Returned);
  EXPECT_THAT(fake::Calls("AaSysTimeSleep"), ElementsAre(m_sleep, m_sleep, m_sleep));
}

TEST_F(WaitForClockTest, OnceItIsSetTheReasonIsStoredAndTheBoardFileWritten) {
  SetClock(2016, 3, 7, 14, 5, 9);
  EXPECT_EQ(Run(), fake::ThreadEnd::Returned);
  EXPECT_THAT(File(kBoardFile), testing::HasSubstr(kHeader + "2016-03-07T14:05:09.000Z Watchdog reset" + BootState() +
                                                   "\nSW VERSION: active:"));
}

TEST_F(WaitForClockTest, ASetClockIsLoggedBeforeTheReasonIsStored) {
  SetClock(2016, 3, 7, 14, 5, 9);
  Run();
  EXPECT_EQ(fake::LogLines().front(), m_available);
  EXPECT_TRUE(fake::CalledInOrder({{"AaLocalTimeGet"},
                                   Logging(kInfo, m_available.text),
                                   {"ddal_boot_get_reset_loop_count"},
                                   {"AaFileOpen", kBoardFile, "w"},
                                   {"AaFileClose", kBoardFile}}));
}

TEST_F(WaitForClockTest, AReasonThatARequestStoredIsNotStoredAgain) {
  SetClock(2016, 3, 7, 14, 5, 9);
  m_blackBox.addResetReasonWithTimestamp("Cold reset requested");
  Forget();
  EXPECT_EQ(Run(), fake::ThreadEnd::Returned);
  EXPECT_EQ(fake::Calls(), (std::vector<fake::Call>{{"AaLocalTimeGet"}, Logging(kInfo, m_available.text)}));
  EXPECT_EQ(History().size(), 2u);
}

TEST_F(WaitForClockTest, ItReturnsNull) {
  SetClock(2016, 3, 7, 14, 5, 9);
  EXPECT_EQ(waitingForNTPTime(nullptr), nullptr);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
