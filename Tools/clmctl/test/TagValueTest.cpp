#include "TagValue.h"

#include "CommandError.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

TEST(TagValue, OfANumberHasFourBytes) {
  EXPECT_EQ(TagValue::FromArgument("6").Bytes(), std::string("\x06\0\0\0", 4));
  EXPECT_EQ(TagValue::FromArgument("0x6").Number(), 6u);
}

TEST(TagValue, OfTextHasItsCharacters) { EXPECT_EQ(TagValue::FromArgument("/rom/log").Bytes(), "/rom/log"); }

TEST(TagValue, ForcedToTextKeepsDigits) { EXPECT_EQ(TagValue::FromArgument("text:6").Bytes(), "6"); }

TEST(TagValue, OfANumberThatIsTooLargeIsRefused) {
  EXPECT_THROW(TagValue::FromArgument("4294967296"), CommandError);
  EXPECT_EQ(TagValue::FromArgument("4294967295").Number(), 0xFFFFFFFFu);
}

TEST(TagValue, ShowsANumberAsANumber) { EXPECT_EQ(TagValue::FromArgument("6").Text(), "6"); }

TEST(TagValue, ShowsTextInQuotes) { EXPECT_EQ(TagValue("/rom/log").Text(), "\"/rom/log\""); }

TEST(TagValue, ShowsFourPrintableBytesAsBoth) { EXPECT_EQ(TagValue("abcd").Text(), "1684234849 \"abcd\""); }

TEST(TagValue, ShowsOtherBytesInHex) { EXPECT_EQ(TagValue(std::string("\x01\x02", 2)).Text(), "0x0102"); }

TEST(TagValue, ShowsNothingAsEmptyText) { EXPECT_EQ(TagValue("").Text(), "\"\""); }

}  // namespace
}  // namespace clmctl
