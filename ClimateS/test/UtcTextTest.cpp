#include "UtcText.h"

#include "fake/PlatformTest.h"

#include <gtest/gtest.h>

namespace ps::hwapi::common::climate {
namespace {

constexpr SAaTime kAfternoon = {
    .year = 2016, .month = 3, .day = 7, .hour = 14, .minute = 5, .second = 9, .millisec = 42};
constexpr SAaTime kLastMoment = {
    .year = 2099, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 58, .millisec = 999};
constexpr u32 kLargest = 0xFFFFFFFF;
constexpr SAaTime kNoTime = {kLargest, kLargest, kLargest, kLargest, kLargest, kLargest, kLargest};

using UtcTextTest = fake::PlatformTest;

TEST_F(UtcTextTest, ShowsDateAndTimeToTheMillisecond) { EXPECT_EQ(UtcText(kAfternoon), "2016-03-07T14:05:09.042Z"); }

TEST_F(UtcTextTest, ShowsEachFieldInItsPlace) { EXPECT_EQ(UtcText(kLastMoment), "2099-12-31T23:59:58.999Z"); }

TEST_F(UtcTextTest, FillsEachFieldWithZeros) { EXPECT_EQ(UtcText(SAaTime{}), "0000-00-00T00:00:00.000Z"); }

TEST_F(UtcTextTest, ShowsNumbersThatAreNoTimeWithTheirSign) {
  EXPECT_EQ(UtcText(kNoTime), "-0001--01--01T-01:-01:-01.-001Z");
}

TEST_F(UtcTextTest, DigitsAreYearToSecond) {
  EXPECT_EQ(UtcDigits(kAfternoon), "20160307140509");
  EXPECT_EQ(UtcDigits(kLastMoment), "20991231235958");
}

TEST_F(UtcTextTest, DigitsOfNumbersThatAreNoTimeAreCut) { EXPECT_EQ(UtcDigits(kNoTime), "-0001-01-01-01-01-"); }

TEST_F(UtcTextTest, NowIsUtcAndNotLocalTime) {
  fake::SetUtc(kAfternoon);
  fake::SetLocalOffset(60);
  EXPECT_EQ(UtcText(UtcNow()), "2016-03-07T14:05:09.042Z");
}

TEST_F(UtcTextTest, NowIsAllZeroWhenTheClockCannotBeRead) {
  fake::FailCall("AaUtcTimeGet");
  EXPECT_EQ(UtcText(UtcNow()), "0000-00-00T00:00:00.000Z");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
