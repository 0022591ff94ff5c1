#include "Values.h"

#include "SimError.h"

#include <gtest/gtest.h>

namespace boardsim {
namespace {

constexpr SAaTime kNow{.year = 2030, .month = 12, .day = 31, .hour = 23, .minute = 30, .second = 0, .millisec = 5};

std::string Text(const SAaTime& time) {
  char text[96];
  std::snprintf(text, sizeof text, "%u-%u-%u %u:%u:%u.%u", time.year, time.month, time.day, time.hour, time.minute,
                time.second, time.millisec);
  return text;
}

TEST(TempValue, PinsADegreeValue) {
  const TempReq request = ParseTemp("0x10000", "-45.125");
  EXPECT_EQ(request.device, 0x10000u);
  EXPECT_EQ(request.mode, SensorMode::Pinned);
  EXPECT_EQ(request.value, -45'125);
  EXPECT_EQ(ParseTemp("0x10000", "45.5C").value, 45'500);
}

TEST(TempValue, FailsWithACode) {
  const TempReq request = ParseTemp("65536", "fail=-2");
  EXPECT_EQ(request.mode, SensorMode::Failing);
  EXPECT_EQ(request.value, -2);
}

TEST(TempValue, GoesBackToThePhysics) { EXPECT_EQ(ParseTemp("0x10000", "auto").mode, SensorMode::Auto); }

TEST(TempValue, OfNonsenseIsRefused) {
  for (const char* value : {"", "warm", "fail=", "fail=0", "fail=1.5", "45K", "1e400", "nan", "inf"}) {
    EXPECT_THROW(ParseTemp("0x10000", value), SimError) << value;
  }
  EXPECT_THROW(ParseTemp("KEL", "45"), SimError);
}

TEST(TagArgument, IsANumberOrText) {
  EXPECT_EQ(ParseTagValue("6"), std::string("\x06\0\0\0", 4));
  EXPECT_EQ(ParseTagValue("text:6"), "6");
  EXPECT_EQ(ParseTagValue("/rom"), "/rom");
  EXPECT_THROW(ParseTagValue("4294967296"), SimError);
}

TEST(ClockArgument, StepsForwardAcrossTheYear) {
  EXPECT_EQ(Text(ParseClock("+1h", kNow)), "2031-1-1 0:30:0.5");
  EXPECT_EQ(Text(ParseClock("+2d", kNow)), "2031-1-2 23:30:0.5");
}

TEST(ClockArgument, StepsBack) { EXPECT_EQ(Text(ParseClock("-10min", kNow)), "2030-12-31 23:20:0.5"); }

TEST(ClockArgument, IsACalendarTimeToo) {
  EXPECT_EQ(Text(ParseClock("2106-02-07T06:28:16Z", kNow)), "2106-2-7 6:28:16.0");
}

TEST(ClockArgument, OfNonsenseIsRefused) {
  for (const char* text : {"", "1h", "+1", "+h", "tomorrow", "2030-01-01", "2030-01-01T00:00:00", "+-1h"}) {
    EXPECT_THROW(ParseClock(text, kNow), SimError) << text;
  }
}

}  // namespace
}  // namespace boardsim
