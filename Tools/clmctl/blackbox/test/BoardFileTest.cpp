#include "BoardFile.h"

#include "BoardSample.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace clmctl {
namespace {

std::string ProblemsOf(const BoardFile& board) {
  std::string text;
  for (const FileProblem& problem : board.problems) text += std::to_string(problem.line) + ": " + problem.text + "\n";
  return text;
}

const BoardValue& Value(const BoardFile& board, BoardSection section, std::string_view key) {
  return *std::find_if(board.values.begin(), board.values.end(), [&](const BoardValue& value) {
    return value.label->section == section && value.label->key == key;
  });
}

TEST(BoardFile, HasEveryValue) {
  const BoardFile board = ParseBoardFile(kBoardFile);
  EXPECT_EQ(ProblemsOf(board), "");
  EXPECT_EQ(Value(board, BoardSection::Board, "product_code").value, "472573A.101");
  EXPECT_EQ(Value(board, BoardSection::Board, "active_software").value, "R1_2.3");
  EXPECT_EQ(Value(board, BoardSection::Board, "active_file_system").value, "/ffs/fs1");
  EXPECT_EQ(Value(board, BoardSection::Board, "ecc_single_bit_errors").value, "4");
  EXPECT_FALSE(board.hasProductData);
}

TEST(BoardFile, HasItsResetsOldestFirst) {
  const BoardFile board =
      ParseBoardFile(kBoardBeforeHistory + kBoardReset + With(kBoardReset, "User", "Network") + kBoardBehindHistory);
  EXPECT_EQ(ProblemsOf(board), "");
  ASSERT_EQ(board.resets.size(), 2u);
  EXPECT_EQ(board.resets[0].category, "User");
  EXPECT_EQ(board.resets[1].category, "Network");
}

TEST(BoardFile, MayHaveNoResets) {
  const BoardFile board = ParseBoardFile(kBoardBeforeHistory + kBoardBehindHistory);
  EXPECT_EQ(ProblemsOf(board), "");
  EXPECT_TRUE(board.resets.empty());
}

TEST(BoardFile, TellsAnUnreadableValueFromAnEmptyOne) {
  const BoardFile board = ParseBoardFile(With(With(kBoardFile, ": 472573A.101", ":"), ": L1", ": "));
  EXPECT_EQ(ProblemsOf(board), "");
  EXPECT_EQ(Value(board, BoardSection::Board, "product_code").value, std::nullopt);
  EXPECT_EQ(Value(board, BoardSection::Board, "serial_number").value, "");
}

TEST(BoardFile, MayHaveProductDataOfPowerSupplyAndFilter) {
  const BoardFile board = ParseBoardFile(kBoardFile + kBoardProductData);
  EXPECT_EQ(ProblemsOf(board), "");
  EXPECT_TRUE(board.hasProductData);
  EXPECT_EQ(Value(board, BoardSection::Psu, "product_code").value, "a");
  EXPECT_EQ(Value(board, BoardSection::Filter, "product_code").value, "e");
  EXPECT_EQ(Value(board, BoardSection::Filter, "hwswid").value, "12");
}

struct Damage {
  std::string text;
  const char* problem;
};

class DamagedBoardFile : public testing::TestWithParam<Damage> {};

TEST_P(DamagedBoardFile, SaysLineAndFault) {
  const std::string problems = ProblemsOf(ParseBoardFile(GetParam().text));
  EXPECT_NE(problems.find(GetParam().problem), std::string::npos) << problems;
}

INSTANTIATE_TEST_SUITE_P(
    Files, DamagedBoardFile,
    testing::Values(Damage{"", "1: 'TIMESTAMP' is missing"},
                    Damage{"hello\n", "1: is no line of a board file: 'hello'"},
                    Damage{With(kBoardFile, "ISTI: 3\n", ""), "4: 'ISTI' is missing before it"},
                    Damage{With(kBoardFile, "ISTI: 3", "ISTI: x"), "4: 'ISTI' is no number: 'x'"},
                    Damage{With(kBoardFile, "ISTI: 3", "ISTI: 3\nISTI: 3"), "5: stands there twice"},
                    Damage{With(kBoardFile, "ISTI: 3", "ISTI=3"), "4: is no line of a board file: 'ISTI=3'"},
                    Damage{With(kBoardFile, "ISTI: 3", ""), "4: is empty"},
                    Damage{With(kBoardFile, "Cold", "\nCold"), "8: is no entry of the history of resets"},
                    Damage{With(kBoardFile, "RESET Reason and timestamp:\n", ""),
                           "has no 'RESET Reason and timestamp:'"},
                    Damage{kBoardFile + "VENDOR: x\n", "13: is no line of a board file"},
                    Damage{kBoardFile + "\nPSU DATA\nVENDOR: x\n", "15: 'PRODUCT CODE' is missing before it"},
                    Damage{kBoardFile.substr(0, kBoardFile.size() - 1), "12: is cut off"},
                    Damage{With(kBoardFile + "ISTI: 3\n", "ISTI: 3\n", ""), "12: stands in the wrong place"}));

TEST(BoardFile, ThatIsDamagedShowsTheRest) {
  const BoardFile board = ParseBoardFile(With(kBoardFile, "ISTI: 3\n", "rubbish\n"));
  EXPECT_FALSE(Value(board, BoardSection::Board, "isti").present);
  EXPECT_EQ(Value(board, BoardSection::Board, "serial_number").value, "L1");
  EXPECT_EQ(board.resets.size(), 1u);
}

}  // namespace
}  // namespace clmctl
