#include "UtcTime.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

TEST(UtcTime, ReadsBackAsItIsWritten) {
  for (const char* const text : {"2016-03-07T14:05:09.042Z", "1970-01-01T00:00:00.000Z", "2038-01-19T03:14:08.000Z",
                                 "2024-02-29T23:59:59.999Z", "9999-12-31T23:59:59.999Z"}) {
    const auto time = ParseUtcTime(text);
    ASSERT_TRUE(time.has_value()) << text;
    EXPECT_EQ(UtcText(*time), text);
  }
}

TEST(UtcTime, ThatDoesNotExistIsRefused) {
  for (const char* const text : {"0000-00-00T00:00:00.000Z", "2023-02-29T00:00:00.000Z", "2024-01-01T24:00:00.000Z",
                                 "2024-01-01T00:60:00.000Z", "2024-01-01T00:00:61.000Z"}) {
    EXPECT_FALSE(ParseUtcTime(text).has_value()) << text;
  }
}

TEST(UtcTime, OfAnotherShapeIsRefused) {
  for (const char* const text : {"", "2016-03-07", "2016-03-07 14:05:09.042Z", "2016-03-07T14:05:09.042Z ",
                                 "2016-03-07T14:05:09.04Z", "+016-03-07T14:05:09.042Z", "2016-03-07T14:05:09.042z"}) {
    EXPECT_FALSE(ParseUtcTime(text).has_value()) << text;
    EXPECT_FALSE(LooksLikeUtcTime(text)) << text;
  }
}

TEST(UtcTime, OfAClockThatCannotBeReadHasTheShapeOfOne) { EXPECT_TRUE(LooksLikeUtcTime("0000-00-00T00:00:00.000Z")); }

TEST(UtcTime, IsThatOfASetClockFrom2010On) {
  EXPECT_FALSE(ClockWasSet(*ParseUtcTime("2009-12-31T23:59:59.999Z")));
  EXPECT_TRUE(ClockWasSet(*ParseUtcTime("2010-01-01T00:00:00.000Z")));
}

TEST(TimeRange, NamesTheDayOnce) {
  EXPECT_EQ(RangeText(*ParseUtcTime("2024-03-07T14:05:09.042Z"), *ParseUtcTime("2024-03-07T17:04:09.100Z")),
            "2024-03-07 14:05:09 to 17:04:09 UTC (2 h 59 min)");
}

TEST(TimeRange, OverMidnightNamesBothDays) {
  EXPECT_EQ(RangeText(*ParseUtcTime("2024-03-07T23:50:00.000Z"), *ParseUtcTime("2024-03-08T00:10:00.000Z")),
            "2024-03-07 23:50:00 to 2024-03-08 00:10:00 UTC (20 min)");
}

TEST(TimeRange, OfOneTimeIsThatTime) {
  const UtcTime time = *ParseUtcTime("2024-03-07T23:50:00.000Z");
  EXPECT_EQ(RangeText(time, time), "2024-03-07 23:50:00 UTC");
}

}  // namespace
}  // namespace clmctl
