#include "HwapiUnit.h"
#include "fake/PlatformTest.h"

#include <stdexcept>

namespace {

using Time = fake::PlatformTest;

constexpr u32 kTask = 0x4B6;
constexpr TAaSysComSicad kOwn = 0x010104B6;

TAaSysTimerId StartTimer(u32 msgId, u32 firstUs, u32 periodUs) {
  TAaSysTimerId timer = 0;
  AaSysTimermCreate(&timer, firstUs, periodUs, AaSysComMsgCreate(msgId, 0, kOwn));
  return timer;
}

std::vector<u32> QueuedIds() {
  std::vector<u32> ids;
  for (const fake::Message& message : fake::QueuedMessages()) ids.push_back(message.id);
  return ids;
}

TEST_F(Time, StandsStillByItself) { EXPECT_EQ(fake::Now(), 0u); }

TEST_F(Time, TimersExpireInTheOrderOfTheirTimes) {
  fake::ServeTask(kTask);
  StartTimer(1, 300, 0);
  StartTimer(2, 100, 150);
  fake::AdvanceTime(300);
  EXPECT_EQ(QueuedIds(), (std::vector<u32>{2, 2, 1}));
}

TEST_F(Time, RunningTimersCanBeSeen) {
  const TAaSysTimerId timer = StartTimer(1, 300, 20);
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].id, timer);
  EXPECT_EQ(fake::Timers()[0].periodUs, 20u);
  EXPECT_EQ(fake::Timers()[0].message.receiver, kOwn);
}

TEST_F(Time, SleepingLetsItPass) {
  AaSysTimeSleep(2, EAaSysTimeScale_Sec);
  EXPECT_EQ(fake::Now(), 2000000u);
}

TEST_F(Time, AnActionRunsWhenItsTimeComes) {
  std::uint64_t ran = 0;
  fake::After(1500, [&] { ran = fake::Now(); });
  AaSysTimeSleep(10, EAaSysTimeScale_Millisec);
  EXPECT_EQ(ran, 1500u);
}

TEST_F(Time, AnActionRunsAfterEachReadingOfTheClock) {
  SAaTime now = {}, seen = {};
  unsigned runs = 0;
  fake::OnUtcRead([&] { seen = now, ++runs; });
  AaUtcTimeGet(&now);
  EXPECT_EQ(seen.year, 2024u);
  AaUtcTimeGet(&now);
  EXPECT_EQ(runs, 2u);
}

TEST_F(Time, NoActionRunsAfterAReadingThatFailed) {
  unsigned runs = 0;
  fake::OnUtcRead([&] { ++runs; });
  AaUtcTimeGet(nullptr);
  fake::FailCall("AaUtcTimeGet");
  SAaTime now = {};
  AaUtcTimeGet(&now);
  EXPECT_EQ(runs, 0u);
}

TEST_F(Time, AResetTakesTheActionOfTheClockBack) {
  unsigned runs = 0;
  fake::OnUtcRead([&] { ++runs; });
  fake::Reset();
  SAaTime now = {};
  AaUtcTimeGet(&now);
  EXPECT_EQ(runs, 0u);
}

TEST_F(Time, AReceiveWaitsForWhatComesInTime) {
  fake::ServeTask(kTask);
  fake::After(5000, [] { fake::Deliver({.id = 8, .receiver = kOwn}); });
  const u16 filter[] = {1, 8};
  void* msg = hwapiMsgQueueReceiveSelective(10000, filter);
  EXPECT_EQ(AaSysComMsgGetId(msg), 8u);
  EXPECT_EQ(fake::Now(), 5000u);
  AaSysComMsgDestroy(&msg);
}

TEST_F(Time, AReceiveWithoutSuccessTakesItsTimeOut) {
  fake::ServeTask(kTask);
  const u16 filter[] = {1, 8};
  EXPECT_EQ(hwapiMsgQueueReceiveSelective(10000, filter), nullptr);
  EXPECT_EQ(fake::Now(), 10000u);
}

TEST_F(Time, UtcFollowsIt) {
  fake::SetUtc({.year = 2040, .month = 2, .day = 28, .hour = 23, .minute = 59, .second = 59, .millisec = 999});
  fake::AdvanceTime(1000);
  SAaTime now{};
  AaUtcTimeGet(&now);
  EXPECT_EQ(now.day, 29u);
  EXPECT_EQ(now.millisec, 0u);
}

TEST_F(Time, LocalTimeIsAheadByItsOffset) {
  fake::SetLocalOffset(120);
  SAaTime now{};
  AaLocalTimeGet(&now);
  EXPECT_EQ(now.hour, 14u);
}

TEST_F(Time, SleepingWithoutEndIsEnded) {
  const auto sleepForEver = [] {
    while (true) AaSysTimeSleep(1, EAaSysTimeScale_Millisec);
  };
  EXPECT_THROW(sleepForEver(), std::runtime_error);
}

}  // namespace
