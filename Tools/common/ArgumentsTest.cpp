#include "Arguments.h"
#include "ServiceNames.h"

#include <gtest/gtest.h>

#include <limits>

namespace commandline {
namespace {

TEST(Number, IsDecimalOrHexadecimal) {
  EXPECT_EQ(NumberFrom("11049"), 11049u);
  EXPECT_EQ(NumberFrom("0x2b29"), 11049u);
  EXPECT_EQ(NumberFrom("0XFFFFFFFF"), 0xFFFFFFFFu);
}

TEST(Number, IsNothingElse) {
  for (const char* text : {"", "0x", "-1", "+1", " 1", "1 ", "1.5", "0x1g", "4294967296", "0x100000000"}) {
    EXPECT_EQ(NumberFrom(text), std::nullopt) << text;
  }
}

TEST(SignedNumber, IsDecimal) {
  EXPECT_EQ(SignedFrom("-2147483648"), std::numeric_limits<i32>::min());
  EXPECT_EQ(SignedFrom("7"), 7);
  for (const char* text : {"", "-", "0x7", "7 ", "2147483648"}) EXPECT_EQ(SignedFrom(text), std::nullopt) << text;
}

TEST(TagBytes, OfANumberAreFour) {
  EXPECT_EQ(TagBytes("6"), std::string("\x06\0\0\0", 4));
  EXPECT_EQ(TagBytes("4294967295"), std::string("\xFF\xFF\xFF\xFF"));
}

TEST(TagBytes, OfTextAreItsCharacters) { EXPECT_EQ(TagBytes("/rom/log"), "/rom/log"); }

TEST(TagBytes, OfForcedTextKeepDigits) { EXPECT_EQ(TagBytes("text:6"), "6"); }

TEST(TagBytes, OfANumberThatIsTooLargeAreNone) {
  EXPECT_EQ(TagBytes("4294967296"), std::nullopt);
  EXPECT_NE(TagBytesRefusal("4294967296").find("or text:4294967296 to set"), std::string::npos);
}

TEST(OnlineTagName, HasTheTaskInHexadecimal) { EXPECT_EQ(OnlineTagName(0x4B6), "app.hwapi.online.4b6"); }

TEST(ServiceName, BelongsToOneTask) {
  for (const NamedService& service : kServices) EXPECT_EQ(ServiceName(service.task), service.name);
  EXPECT_EQ(ServiceName(0xFFFF), "");
}

}  // namespace
}  // namespace commandline
