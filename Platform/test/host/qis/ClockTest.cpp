// The board's clock and what follows it.
#include "AaSysTime.h"
#include "Clock.h"
#include "Support.h"
#include "Timers.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>

namespace hwapi::test {
namespace {

using Instant = std::chrono::steady_clock;

SAaTime UtcNow() {
  SAaTime now{};
  EXPECT_EQ(AaUtcTimeGet(&now), 0);
  return now;
}

TEST(Clock, IsTheHostsWithoutADescription) {
  const Board board;
  const auto before = std::chrono::system_clock::now();
  const auto now = std::chrono::microseconds(qis::Clock::Own().Now());
  const auto after = std::chrono::system_clock::now();
  EXPECT_GE(now, std::chrono::floor<std::chrono::microseconds>(before.time_since_epoch()));
  EXPECT_LE(now, after.time_since_epoch());
}

TEST(Clock, BeginsAtTheDescribedStart) {
  const Board board("[clock]\nstart = 2024-01-31T09:30:05Z\n");
  const SAaTime now = UtcNow();
  EXPECT_EQ(now.year, 2024u);
  EXPECT_EQ(now.month, 1u);
  EXPECT_EQ(now.day, 31u);
}

TEST(Clock, RunsAtTheDescribedSpeed) {
  const Board board("[clock]\nspeed = 3600\nstart = 2024-01-31T00:00:00Z\n");
  const auto realBefore = Instant::now();
  const qis::UtcUs before = qis::Clock::Own().Now();
  EXPECT_TRUE(Eventually([&] { return qis::Clock::Own().Now() - before > 36'000'000; }));
  const qis::UtcUs real = std::chrono::ceil<std::chrono::microseconds>(Instant::now() - realBefore).count();
  EXPECT_LE(qis::Clock::Own().Now() - before, (real + 1'000'000) * 3600) << "not faster than that";
}

TEST(Clock, NeverRunsBackUnderASpeed) {
  const Board board("[clock]\nspeed = 7\n");
  qis::UtcUs last = qis::Clock::Own().Now();
  for (int i = 0; i < 100'000; ++i) {
    const qis::UtcUs now = qis::Clock::Own().Now();
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(Clock, IsSharedByTheProcessesOfTheBoard) {
  const Board board("[clock]\nspeed = 1000\nstart = 2024-01-31T00:00:00Z\n");
  const Event read;
  Peer first([&] {
    SAaTime now{};
    AaUtcTimeGet(&now);
    ::usleep(100'000);  // 100 s of the board
    read.Happened();
  });
  ASSERT_TRUE(read.Await());
  constexpr qis::UtcUs kStart = 1'706'659'200'000'000;
  EXPECT_GE(qis::Clock::Own().Now(), kStart + 100'000'000);
}

TEST(Clock, ThatIsSetIsSetForEveryProcess) {
  const Board board;
  const Event go;
  const Event set;
  Peer setter([&] {
    go.Await();
    const SAaTime time{.year = 2031, .month = 2, .day = 3, .hour = 4, .minute = 5, .second = 6, .millisec = 7};
    EXPECT_EQ(AaUtcTimeSet(&time), 0);
    set.Happened();
  });
  UtcNow();  // this process has the clock already
  go.Happened();
  ASSERT_TRUE(set.Await());
  const SAaTime now = UtcNow();
  EXPECT_EQ(now.year, 2031u);
  EXPECT_EQ(now.hour, 4u);
}

TEST(Clock, GoesBeyond2038) {
  const Board board;
  const SAaTime time{.year = 2099, .month = 12, .day = 31, .hour = 12, .minute = 0, .second = 0, .millisec = 0};
  ASSERT_EQ(AaUtcTimeSet(&time), 0);
  EXPECT_EQ(UtcNow().year, 2099u);
  EXPECT_EQ(UtcNow().day, 31u);
}

TEST(Clock, RefusesWhatIsNoCalendarTime) {
  const Board board;
  const SAaTime noLeapYear{.year = 2023, .month = 2, .day = 29, .hour = 0, .minute = 0, .second = 0, .millisec = 0};
  EXPECT_EQ(AaUtcTimeSet(&noLeapYear), EINVAL);
  const SAaTime noMonth{.year = 2023, .month = 300, .day = 1, .hour = 0, .minute = 0, .second = 0, .millisec = 0};
  EXPECT_EQ(AaUtcTimeSet(&noMonth), EINVAL);
}

TEST(Clock, GivesSleepsItsSpeed) {
  const Board board("[clock]\nspeed = 3600\n");
  const qis::UtcUs before = qis::Clock::Own().Now();
  const auto realBefore = Instant::now();
  EXPECT_EQ(AaSysTimeSleep(3600, EAaSysTimeScale_Sec), 0);
  EXPECT_GE(qis::Clock::Own().Now() - before, 3'600'000'000 - 3600);
  EXPECT_LT(Instant::now() - realBefore, std::chrono::minutes(10)) << "an hour of the board is a second";
}

TEST(Clock, GivesReceiveTimeOutsItsSpeed) {
  const Board board("[clock]\nspeed = 3600\n");
  Serve(kServer);
  const qis::UtcUs before = qis::Clock::Own().Now();
  EXPECT_EQ(AaSysComMsgReceive(3'600'000'000, nullptr), nullptr);
  EXPECT_GE(qis::Clock::Own().Now() - before, 3'600'000'000 - 3600);
}

constexpr const char* kStandingStill = "[clock]\nspeed = 0\nstart = 2024-01-31T09:30:00Z\n";

/// Sets a clock that stands still forward to @p minute past half past nine.
void SetForwardTo(u32 minute) {
  const SAaTime time{.year = 2024, .month = 1, .day = 31, .hour = 9, .minute = 30 + minute, .second = 0, .millisec = 0};
  EXPECT_EQ(AaUtcTimeSet(&time), 0);
}

TEST(StandingClock, ShowsTheSameTimeUntilItIsSet) {
  const Board board(kStandingStill);
  const qis::UtcUs before = qis::Clock::Own().Now();
  ::usleep(2000);
  EXPECT_EQ(qis::Clock::Own().Now(), before);
  SetForwardTo(2);
  EXPECT_EQ(qis::Clock::Own().Now() - before, 120'000'000);
}

TEST(StandingClock, ThatIsSetForwardEndsTheSleepsOfOtherProcesses) {
  const Board board(kStandingStill);
  const std::string over = board.Folder() + "/over";
  Peer sleeper([&] {
    AaSysTimeSleep(60, EAaSysTimeScale_Sec);
    ::close(::creat(over.c_str(), 0600));
  });
  // More than once: it may not yet sleep when the clock is set for the first time.
  EXPECT_TRUE(Eventually([&] {
    qis::Clock::Own().Set(qis::Clock::Own().Now() + 60'000'000);
    return ::access(over.c_str(), F_OK) == 0;
  }));
}

TEST(StandingClock, ThatIsSetForwardExpiresTimers) {
  const Board board(kStandingStill);
  const TAaSysComSicad self = Serve(kServer);
  TAaSysTimerId late = 0;
  TAaSysTimerId early = 0;
  ASSERT_EQ(AaSysTimermCreate(&late, 120'000'000, 0, AaSysComMsgCreate(8, 0, self)), 0);
  ASSERT_EQ(AaSysTimermCreate(&early, 60'000'000, 60'000'000, AaSysComMsgCreate(7, 0, self)), 0);
  EXPECT_EQ(ReceiveNumber(20'000).id, 0u) << "a wait for a message ends by itself";
  SetForwardTo(1);
  EXPECT_EQ(ReceiveNumber().id, 7u);
  EXPECT_EQ(ReceiveNumber(20'000).id, 0u);
  SetForwardTo(2);
  EXPECT_EQ(ReceiveNumber().id + ReceiveNumber().id, 15u);
}

TEST(StandingClock, ThatIsSetBackLetsNoTimePass) {
  const Board board(kStandingStill);
  SetForwardTo(10);
  const std::int64_t passed = qis::Clock::Own().PassedUs();
  SetForwardTo(5);
  EXPECT_EQ(UtcNow().minute, 35u);
  EXPECT_EQ(qis::Clock::Own().PassedUs(), passed);
}

TEST(Timer, FollowsTheSpeedAndSendsCopies) {
  const Board board("[clock]\nspeed = 3600\n");
  const TAaSysComSicad self = Serve(kServer);
  void* message = AaSysComMsgCreate(7, 4, self);
  AaSysComMsgSetSender(message, AddressOf(0x111));
  TAaSysTimerId timer = 0;
  const qis::UtcUs before = qis::Clock::Own().Now();
  ASSERT_EQ(AaSysTimermCreate(&timer, 60'000'000, 60'000'000, message), 0);
  for (int i = 0; i < 3; ++i) {
    const Received received = ReceiveNumber(AASYSCOM_NO_TIMEOUT);
    EXPECT_EQ(received.id, 7u);
    EXPECT_EQ(received.sender, AddressOf(0x111));
  }
  EXPECT_GE(qis::Clock::Own().Now() - before, 180'000'000 - 3600);
  AaSysTimerDelete(timer);
}

TEST(Timer, StaysOnItsGridAndSkipsWhatWasMissed) {
  EXPECT_EQ(qis::NextExpiry(1000, 100, 1000), 1100);
  EXPECT_EQ(qis::NextExpiry(1000, 100, 1099), 1100);
  EXPECT_EQ(qis::NextExpiry(1000, 100, 1100), 1200);
  EXPECT_EQ(qis::NextExpiry(1000, 100, 1950), 2000);
}

TEST(Timer, HasATimeThatNeverRunsBackUnderASpeed) {
  for (const std::int64_t speed : {1, 3, 60, 3600}) {
    std::int64_t last = 0;
    for (std::int64_t ns = 0; ns < 5000; ++ns) {
      const std::int64_t us = qis::BoardUsOf(ns, speed);
      ASSERT_GE(us, last) << ns << " ns at " << speed;
      last = us;
    }
    EXPECT_EQ(last, 4999 * speed / 1000);
  }
}

TEST(Timer, DeletedSendsNothingMore) {
  const Board board;
  const TAaSysComSicad self = Serve(kServer);
  TAaSysTimerId timer = 0;
  ASSERT_EQ(AaSysTimermCreate(&timer, 0, 100, AaSysComMsgCreate(7, 0, self)), 0);
  ASSERT_EQ(ReceiveNumber().id, 7u);
  EXPECT_EQ(AaSysTimerDelete(timer), 0);
  while (ReceiveNumber(0).id != 0) {
  }
  EXPECT_EQ(ReceiveNumber(5000).id, 0u);
}

TEST(Timer, OfManyExpiresInTheOrderOfTheirTimes) {
  const Board board;
  const TAaSysComSicad self = Serve(kServer);
  TAaSysTimerId timer = 0;
  for (const u32 ms : {30u, 10u, 20u}) {
    ASSERT_EQ(AaSysTimermCreate(&timer, ms * 1000, 0, AaSysComMsgCreate(ms, 0, self)), 0);
  }
  EXPECT_EQ(ReceiveNumber().id, 10u);
  EXPECT_EQ(ReceiveNumber().id, 20u);
  EXPECT_EQ(ReceiveNumber().id, 30u);
}

}  // namespace
}  // namespace hwapi::test
