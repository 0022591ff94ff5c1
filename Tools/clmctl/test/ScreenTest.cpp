#include "Screen.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

TEST(Printable, LeavesReadableTextAsItIs) {
  EXPECT_EQ(Printable("KEL_MCU 41.5 ~!"), "KEL_MCU 41.5 ~!");
  EXPECT_EQ(Printable("caf\xc3\xa9 \xe2\x98\x83 \xf0\x9f\x98\x80"), "caf\xc3\xa9 \xe2\x98\x83 \xf0\x9f\x98\x80");
}

TEST(Printable, ShowsControlCharactersByTheirCodes) {
  EXPECT_EQ(Printable("a\n\t\x1b[31m\x7f"), "a\\x0a\\x09\\x1b[31m\\x7f");
  EXPECT_EQ(Printable(std::string("\0b", 2)), "\\x00b");
  EXPECT_EQ(Printable("\xc2\x9b"), "\\xc2\\x9b");
}

TEST(Printable, ShowsWhatIsNoUtf8ByItsCodes) {
  EXPECT_EQ(Printable("\xff"), "\\xff");
  EXPECT_EQ(Printable("\xc3"), "\\xc3");
  EXPECT_EQ(Printable("\xe2\x98"), "\\xe2\\x98");
  EXPECT_EQ(Printable("\xc0\xaf"), "\\xc0\\xaf");
  EXPECT_EQ(Printable("\xe0\x80\x80"), "\\xe0\\x80\\x80");
  EXPECT_EQ(Printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");
  EXPECT_EQ(Printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

TEST(Alignment, CountsCharactersNotBytes) {
  EXPECT_EQ(LeftAligned("\xc2\xb0", 3), "\xc2\xb0  ");
  EXPECT_EQ(RightAligned("\xc2\xb0", 3), "  \xc2\xb0");
  EXPECT_EQ(LeftAligned("long", 2), "long");
}

TEST(Counted, HasAPluralForAllButOne) {
  EXPECT_EQ(Counted(0, "row"), "0 rows");
  EXPECT_EQ(Counted(1, "row"), "1 row");
  EXPECT_EQ(Counted(2, "row"), "2 rows");
}

}  // namespace
}  // namespace clmctl
