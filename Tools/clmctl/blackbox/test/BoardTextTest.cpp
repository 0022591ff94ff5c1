#include "BoardText.h"

#include "BoardSample.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

std::string Text(const std::string& file, const Screen& screen = {}) {
  std::string text;
  for (const std::string& line : BoardLines(ParseBoardFile(file), screen)) text += line + "\n";
  return text;
}

TEST(BoardText, ShowsLabelsAndValues) {
  const std::string text = Text(kBoardFile);
  EXPECT_NE(text.find("Product code           472573A.101\n"), std::string::npos) << text;
  EXPECT_NE(text.find("ECC single-bit errors  4\n"), std::string::npos);
  EXPECT_EQ(text.find("Power supply"), std::string::npos);
}

TEST(BoardText, TellsUnreadableFromMissing) {
  const std::string text = Text(With(With(kBoardFile, "ISTI: 3", "ISTI:"), "SERIAL NUMBER: L1\n", ""));
  EXPECT_NE(text.find("ISTI                   (the board could not read it)\n"), std::string::npos);
  EXPECT_NE(text.find("Serial number          (no such line)\n"), std::string::npos);
}

TEST(BoardText, ShowsProductDataWhereThereIsSome) {
  const std::string text = Text(kBoardFile + kBoardProductData);
  EXPECT_NE(text.find("\nPower supply\n"), std::string::npos);
  EXPECT_NE(text.find("\nFilter\n"), std::string::npos);
}

TEST(BoardText, ShowsTheHistoryAsATable) {
  EXPECT_NE(Text(kBoardFile)
                .find("2024-03-06T10:00:00.000Z  Cold reset  User      x y                   /ffs/fs1 "
                      "        0\n"),
            std::string::npos)
      << Text(kBoardFile);
}

TEST(BoardText, ShowsTheHistoryInTwoLinesEachWhereTheScreenIsNarrow) {
  EXPECT_NE(Text(kBoardFile, {.columns = 80})
                .find("2024-03-06T10:00:00.000Z  Cold reset\n    User, x y, /ffs/fs1, reset counter 0\n"),
            std::string::npos);
}

TEST(BoardText, MarksADamagedEntry) {
  EXPECT_NE(Text(With(kBoardFile, kBoardReset,
                      "rub\x1b"
                      "bish\n"))
                .find("damaged: rub\\x1bbish\n"),
            std::string::npos);
}

TEST(BoardText, SaysThatThereWereNoResets) {
  EXPECT_NE(Text(With(kBoardFile, kBoardReset, "")).find("No resets are recorded."), std::string::npos);
}

TEST(ConfigText, ShowsThePaths) {
  const auto lines = ConfigLines(ParseConfigFile("# temperature log for blackbox\ntemp=/ffs/t\n"));
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "Trace       /ffs/t");
  EXPECT_EQ(lines[1], "Alarm log   (no such line)");
}

}  // namespace
}  // namespace clmctl
