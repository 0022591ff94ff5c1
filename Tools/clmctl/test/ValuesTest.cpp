#include "Values.h"

#include "Refusal.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

using std::chrono::milliseconds;

TEST(Duration, TakesEveryUnit) {
  EXPECT_EQ(ParseDuration("500ms"), milliseconds(500));
  EXPECT_EQ(ParseDuration("1s"), milliseconds(1000));
  EXPECT_EQ(ParseDuration("1.5s"), milliseconds(1500));
  EXPECT_EQ(ParseDuration("2min"), milliseconds(120'000));
  EXPECT_EQ(ParseDuration("1h"), milliseconds(3'600'000));
}

TEST(Duration, OfABareNumberIsRefusedWithAnExample) {
  EXPECT_NE(Refusal([] { ParseDuration("5"); }).find("500ms"), std::string::npos);
}

TEST(Duration, OfNonsenseIsRefused) {
  for (const char* text : {"", "s", "1 s", "-1s", "1parsec", "1s2", "nans", "infs"}) {
    EXPECT_NE(Refusal([text] { ParseDuration(text); }), "") << text;
  }
}

TEST(Duration, BeyondTheMessageFieldIsRefused) {
  EXPECT_EQ(ParseDuration("4294967295ms"), milliseconds(4294967295));
  EXPECT_NE(Refusal([] { ParseDuration("4294967296ms"); }), "");
  EXPECT_NE(Refusal([] { ParseDuration("99999999999999999999h"); }), "");
}

TEST(Timeout, OfNothingIsRefusedWithWhatIsAllowed) {
  EXPECT_EQ(ParseTimeout("1ms"), milliseconds(1));
  for (const char* text : {"0s", "0ms", "0.1ms", "soon"}) {
    EXPECT_NE(Refusal([text] { ParseTimeout(text); }).find("give"), std::string::npos) << text;
  }
}

TEST(Count, IsOneAtLeast) {
  EXPECT_EQ(ParseCount("1", "--count"), 1u);
  EXPECT_EQ(Refusal([] { ParseCount("0", "--count"); }), "--count 0 would show nothing; give 1 or more");
  EXPECT_NE(Refusal([] { ParseCount("", "--count"); }).find("1 or more"), std::string::npos);
}

TEST(Address, IsBoardCpuAndTask) {
  EXPECT_EQ(ParseAddress("1/2/0x4b6"), 0x010204B6u);
  EXPECT_EQ(ParseAddress("255/255/65535"), 0xFFFFFFFFu);
}

TEST(Address, IsAHexNumberToo) { EXPECT_EQ(ParseAddress("0x010104b6"), 0x010104B6u); }

TEST(Address, OfNonsenseIsRefused) {
  for (const char* text : {"", "1", "1/1", "1/1/", "256/1/1", "1/256/1", "1/1/65536", "1/1/1/1", "x/1/1"}) {
    EXPECT_NE(Refusal([text] { ParseAddress(text); }), "") << text;
  }
}

TEST(Address, ReadsBackAsItIsWritten) { EXPECT_EQ(FormatAddress(ParseAddress("1/2/0x4b6")), "1/2/0x4b6"); }

TEST(Task, HasANameOrANumber) {
  EXPECT_EQ(ParseTask("temperature"), 0x4B6u);
  EXPECT_EQ(ParseTask("0x4b6"), 0x4B6u);
  EXPECT_EQ(ParseTask("1206"), 0x4B6u);
}

TEST(Task, OutsideItsRangeIsRefused) {
  for (const char* text : {"0", "0x10000", "4b6", "nobody"}) {
    EXPECT_NE(Refusal([text] { ParseTask(text); }), "") << text;
  }
}

TEST(Hex, TakesPairsWithAndWithoutSeparators) {
  const std::vector<u8> bytes = {0x00, 0xFF, 0x10};
  EXPECT_EQ(ParseHex("00ff10"), bytes);
  EXPECT_EQ(ParseHex("00 FF 10"), bytes);
  EXPECT_EQ(ParseHex("0x00:ff:10"), bytes);
  EXPECT_TRUE(ParseHex("").empty());
}

TEST(Hex, OfHalfAByteIsRefused) {
  EXPECT_NE(Refusal([] { ParseHex("123"); }), "");
  EXPECT_NE(Refusal([] { ParseHex("1 2"); }), "");
  EXPECT_NE(Refusal([] { ParseHex("zz"); }), "");
}

TEST(Hex, LargerThanAMessageIsRefused) {
  EXPECT_EQ(ParseHex(std::string(std::size_t{2} * 65535, '0')).size(), 65535u);
  EXPECT_NE(Refusal([] { ParseHex(std::string(std::size_t{2} * 65536, '0')); }), "");
}

TEST(Hex, IsWrittenInLowerCase) {
  const u8 bytes[] = {0x00, 0xAB};
  EXPECT_EQ(FormatHex(bytes, 2), "00ab");
  EXPECT_EQ(FormatHex(nullptr, 0), "");
}

}  // namespace
}  // namespace clmctl
