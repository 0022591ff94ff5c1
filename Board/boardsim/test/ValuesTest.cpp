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
  for (const char* value : {"", "warm", "fail=", "fail=0", "fail=5", "fail=1.5", "45K", "1e400", "nan", "inf"}) {
    EXPECT_THROW(ParseTemp("0x10000", value), SimError) << value;
  }
  EXPECT_THROW(ParseTemp("KEL", "45"), SimError);
}

TEST(FanArgument, IsADriverIdAUnitNumberOrAName) {
  EXPECT_EQ(ParseFan("0", "auto").fan, 0u);
  EXPECT_EQ(ParseFan("15", "auto").fan, 15u);
  EXPECT_EQ(ParseFan("203", "auto").fan, 2u);
  EXPECT_EQ(ParseFan("GAR_FAN2", "auto").fan, 1u);
}

TEST(FanArgument, OfAnotherFanIsRefused) {
  for (const char* fan : {"", "16", "155", "204", "-1", "GAR_FAN4", "fan"}) {
    EXPECT_THROW(ParseFan(fan, "auto"), SimError) << fan;
  }
}

TEST(FanValue, SticksAtASpeed) {
  EXPECT_EQ(ParseFan("0", "rpm=0").change, FanChange::Stick);
  EXPECT_EQ(ParseFan("0", "rpm=1234").value, 1234);
}

TEST(FanValue, FailsWithACode) {
  EXPECT_EQ(ParseFan("0", "fail=-2").change, FanChange::Fail);
  EXPECT_EQ(ParseFan("0", "fail-read=-2").change, FanChange::FailRead);
  EXPECT_EQ(ParseFan("0", "fail-write=-3").change, FanChange::FailWrite);
  EXPECT_EQ(ParseFan("0", "fail-write=-3").value, -3);
}

TEST(FanValue, OfNonsenseIsRefused) {
  for (const char* value : {"", "1000", "rpm", "rpm=", "rpm=-1", "rpm=100001", "rpm=1.5", "fail=0",
                            "fail-read=", "fail-all=1", "fail=1 ", "automatic"}) {
    EXPECT_THROW(ParseFan("0", value), SimError) << value;
  }
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

TEST(ClockArgument, MayBeThatOfAClockThatWasNeverSet) {
  EXPECT_EQ(Text(ParseClock("unset", kNow)), "1970-1-1 0:0:0.0");
}

TEST(ClockArgument, MayBeTheHostsTime) { EXPECT_GE(ParseClock("now", kNow).year, 2024u); }

TEST(PartitionArgument, IsOneOfTwoFileSystems) {
  EXPECT_EQ(ParsePartition("1"), 1u);
  EXPECT_EQ(ParsePartition("2"), 2u);
  for (const char* text : {"", "0", "3", "fs1", "-1", "1 "}) EXPECT_THROW(ParsePartition(text), SimError) << text;
}

TEST(CounterArgument, IsAnyNumber) {
  EXPECT_EQ(ParseCounter("7"), 7);
  EXPECT_EQ(ParseCounter("-1"), -1);
  for (const char* text : {"", "x", "7x", "4294967296"}) EXPECT_THROW(ParseCounter(text), SimError) << text;
}

TEST(ClockArgument, OfNonsenseIsRefused) {
  for (const char* text : {"", "1h", "+1", "+h", "tomorrow", "2030-01-01", "2030-01-01T00:00:00", "+-1h"}) {
    EXPECT_THROW(ParseClock(text, kNow), SimError) << text;
  }
}

}  // namespace
}  // namespace boardsim
