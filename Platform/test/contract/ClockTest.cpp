#include "AaSysTime.h"
#include "Messaging.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace contract {
namespace {

/// Early on a day, so that the date still holds when it is read back.
constexpr SAaTime On(u32 year, u32 month, u32 day) {
  return {.year = year, .month = month, .day = day, .hour = 0, .minute = 0, .second = 1, .millisec = 0};
}

/// A time of an ordinary day.
constexpr SAaTime At(u32 hour, u32 minute, u32 second, u32 millisec) {
  return {.year = 2024, .month = 1, .day = 1, .hour = hour, .minute = minute, .second = second, .millisec = millisec};
}

SAaTime Utc() {
  SAaTime now{};
  EXPECT_EQ(AaUtcTimeGet(&now), 0);
  return now;
}

class ClockOn : public testing::TestWithParam<SAaTime> {};

TEST_P(ClockOn, ShowsTheDateThatWasSet) {
  EXPECT_EQ(AaUtcTimeSet(&GetParam()), 0);
  const SAaTime now = Utc();
  EXPECT_EQ(now.year, GetParam().year);
  EXPECT_EQ(now.month, GetParam().month);
  EXPECT_EQ(now.day, GetParam().day);
  EXPECT_EQ(now.hour, 0u);
}

INSTANTIATE_TEST_SUITE_P(Of, ClockOn,
                         testing::Values(On(2024, 2, 29), On(2038, 1, 20), On(2040, 12, 31), On(2106, 2, 8),
                                         On(2400, 2, 29)),
                         [](const auto& date) { return std::to_string(date.param.year); });

/// What is no calendar time, and why.
struct NoTime {
  const char* name;
  SAaTime time;
};

class NoCalendarTime : public testing::TestWithParam<NoTime> {};

TEST_P(NoCalendarTime, IsRefused) {
  const SAaTime known = On(2030, 5, 6);
  AaUtcTimeSet(&known);
  EXPECT_EQ(AaUtcTimeSet(&GetParam().time), EINVAL);
  EXPECT_EQ(Utc().year, 2030u);
}

constexpr NoTime kNoTimes[] = {
    {.name = "MonthZero", .time = On(2024, 0, 1)},
    {.name = "Month13", .time = On(2024, 13, 1)},
    {.name = "DayZero", .time = On(2024, 1, 0)},
    {.name = "Day32", .time = On(2024, 1, 32)},
    {.name = "HugeDay", .time = On(2024, 1, 0xFFFFFFFF)},
    {.name = "HugeYear", .time = On(0xFFFFFFFF, 1, 1)},
    {.name = "April31", .time = On(2024, 4, 31)},
    {.name = "LeapDayOfACommonYear", .time = On(2023, 2, 29)},
    {.name = "LeapDayOf2100", .time = On(2100, 2, 29)},
    {.name = "Hour24", .time = At(24, 0, 0, 0)},
    {.name = "Minute60", .time = At(0, 60, 0, 0)},
    {.name = "Second60", .time = At(0, 0, 60, 0)},
    {.name = "Millisecond1000", .time = At(0, 0, 0, 1000)},
};

INSTANTIATE_TEST_SUITE_P(Of, NoCalendarTime, testing::ValuesIn(kNoTimes),
                         [](const auto& time) { return std::string(time.param.name); });

TEST(Clock, RefusesNull) { EXPECT_EQ(AaUtcTimeSet(nullptr), EINVAL); }

TEST(Clock, ShowsACalendarTime) {
  const SAaTime now = Utc();
  EXPECT_GE(now.year, 2024u);
  EXPECT_TRUE(now.month >= 1 && now.month <= 12);
  EXPECT_TRUE(now.day >= 1 && now.day <= 31);
  EXPECT_LE(now.hour, 23u);
  EXPECT_LE(now.minute, 59u);
  EXPECT_LE(now.second, 59u);
  EXPECT_LE(now.millisec, 999u);
}

TEST(Clock, ShowsLocalTimeWithinADayOfUtc) {
  const SAaTime noon{.year = 2030, .month = 5, .day = 16, .hour = 12, .minute = 0, .second = 0, .millisec = 0};
  AaUtcTimeSet(&noon);
  SAaTime local{};
  EXPECT_EQ(AaLocalTimeGet(&local), 0);
  EXPECT_EQ(local.year, 2030u);
  EXPECT_TRUE(local.day >= 15 && local.day <= 17);
}

TEST(Clock, DoesNotMoveTimersWhenItIsSet) {
  const OwnTask task;
  TAaSysTimerId timer = 0;
  EXPECT_EQ(AaSysTimermCreate(&timer, rig::kPatienceUs, 0, AaSysComMsgCreate(1, 0, task.Address())), 0);
  const SAaTime muchLater = On(2090, 1, 1);
  AaUtcTimeSet(&muchLater);
  EXPECT_EQ(Receive(rig::kMomentUs).msg, nullptr);
  AaSysTimerDelete(timer);
}

}  // namespace
}  // namespace contract
