/// The reset history of earlier lives, read back from the board file.
#include "ResetHistory.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string kName = "BlackBoxData::readResetReasonsFromFile(): ";
const std::string kOne = "2015-12-31T23:59:58.999Z Cold reset : User (by hand)\n";
const std::string kTwo = "2016-01-02T03:04:05.006Z Watchdog reset\n";
constexpr std::size_t kPiece = 1023;  ///< characters that one read gives at most

class ResetHistoryReadBackTest : public ResetHistoryTest {
 protected:
  /// Reads a board file with this content.
  void Read(const std::string& content) {
    fake::SetFile(kBoardFile, content);
    m_blackBox.readResetReasonsFromFile();
  }

  /// @return the history after a read of a file with this content
  std::vector<std::string> HistoryFrom(const std::string& content) {
    Read(content);
    return History();
  }

  const fake::LogLine m_reading = Line(kDebug, kName + "reading old reset reasons from " + kBoardFile);
  const fake::LogLine m_missing = Line(kDebug, kName + "file " + kBoardFile + " does not exists");
  const fake::LogLine m_nothing = Line(kDebug, kName + "no old reset reasons found");
  const fake::Call m_open{"AaFileOpen", kBoardFile, "r"};
  const fake::Call m_line{"AaFileReadLine", 1024, kBoardFile};
  const fake::Call m_close{"AaFileClose", kBoardFile};
};

TEST_F(ResetHistoryReadBackTest, TheEntriesBehindTheHeaderAreReadInOrder) {
  EXPECT_THAT(HistoryFrom(kHeader + kOne + kTwo + kEnd), ElementsAre(kOne, kTwo));
}

TEST_F(ResetHistoryReadBackTest, LinesBeforeTheHeaderAreNoEntries) {
  EXPECT_THAT(HistoryFrom("TIMESTAMP: 2016\nRESET COUNTER: 4\n\n" + kHeader + kOne + kEnd), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, LinesBehindTheSoftwareVersionAreNoEntries) {
  EXPECT_THAT(HistoryFrom(kHeader + kOne + kEnd + "ERRORS: 1\n" + kTwo), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, ASoftwareVersionBeforeTheHeaderEndsNothing) {
  EXPECT_THAT(HistoryFrom(kEnd + kHeader + kOne + kEnd), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, AnEmptyHistoryStaysEmpty) { EXPECT_THAT(HistoryFrom(kHeader + kEnd), IsEmpty()); }

TEST_F(ResetHistoryReadBackTest, WhatFollowsInTheLineOfTheHeaderIsNoMatter) {
  EXPECT_THAT(HistoryFrom("RESET Reason and timestamp: (newest last)\n" + kOne + kEnd), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, TheHeaderInTheMiddleOfALineIsNone) {
  EXPECT_THAT(HistoryFrom(" " + kHeader + kOne + kEnd), IsEmpty());
}

TEST_F(ResetHistoryReadBackTest, AHeaderWithoutItsColonIsNone) {
  EXPECT_THAT(HistoryFrom("RESET Reason and timestamp\n" + kOne + kEnd), IsEmpty());
}

TEST_F(ResetHistoryReadBackTest, AHeaderInSmallLettersIsNone) {
  EXPECT_THAT(HistoryFrom("reset reason and timestamp:\n" + kOne + kEnd), IsEmpty());
}

TEST_F(ResetHistoryReadBackTest, ASecondHeaderIsAnEntry) {
  EXPECT_THAT(HistoryFrom(kHeader + kOne + kHeader + kTwo + kEnd), ElementsAre(kOne, kHeader, kTwo));
}

TEST_F(ResetHistoryReadBackTest, ASoftwareVersionAnywhereInALineEndsTheEntries) {
  EXPECT_THAT(HistoryFrom(kHeader + kOne + "2016 reset SW VERSION: x\n" + kTwo + kEnd), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, ASoftwareVersionWithoutItsColonIsAnEntry) {
  EXPECT_THAT(HistoryFrom(kHeader + "SW VERSION\n" + kOne + kEnd), ElementsAre("SW VERSION\n", kOne));
}

TEST_F(ResetHistoryReadBackTest, AnEmptyLineIsAnEntry) {
  EXPECT_THAT(HistoryFrom(kHeader + kOne + "\n" + kTwo + kEnd), ElementsAre(kOne, "\n", kTwo));
}

TEST_F(ResetHistoryReadBackTest, TenEntriesAreRead) {
  const std::vector<std::string> ten = NumberedEntries(10);
  Remember(ten);
  EXPECT_THAT(History(), ElementsAreArray(ten));
}

TEST_F(ResetHistoryReadBackTest, OfMoreEntriesTheFirstTenAreRead) {
  Remember(NumberedEntries(12));
  EXPECT_THAT(History(), ElementsAreArray(NumberedEntries(10)));
}

TEST_F(ResetHistoryReadBackTest, NoMoreThanTenLinesAreReadBehindTheHeader) {
  std::string file = kHeader;
  for (const std::string& entry : NumberedEntries(30)) file += entry;
  Read(file + kEnd);
  EXPECT_EQ(fake::Calls("AaFileReadLine").size(), 1u + 10u);
}

TEST_F(ResetHistoryReadBackTest, AFileThatEndsInTheEntriesGivesThoseThatItHas) {
  EXPECT_THAT(HistoryFrom(kHeader + kOne + kTwo), ElementsAre(kOne, kTwo));
}

TEST_F(ResetHistoryReadBackTest, AFileThatEndsInTheEntriesIsReadTenLinesAtMost) {
  Read(kHeader + kOne);
  EXPECT_LE(fake::Calls("AaFileReadLine").size(), 1u + 10u);
  EXPECT_EQ(fake::Calls().back(), m_close);
}

TEST_F(ResetHistoryReadBackTest, TheEndOfTheFileIsNoEntry) {
  Read(kHeader + kOne);
  char category[40] = {}, extendedInfo[60] = {};
  m_blackBox.ResetStateInfo(category, extendedInfo);
  EXPECT_STREQ(category, "User");
  for (int i = 0; i < 9; ++i) m_blackBox.addResetReasonWithTimestamp("another");
  EXPECT_EQ(History().front(), kOne);  // the ninth makes ten
}

TEST_F(ResetHistoryReadBackTest, AFileThatEndsWithTheHeaderGivesNothing) {
  EXPECT_THAT(HistoryFrom(kHeader), IsEmpty());
  EXPECT_THAT(HistoryFrom("RESET Reason and timestamp:"), IsEmpty());
}

TEST_F(ResetHistoryReadBackTest, ALastLineWithoutItsEndIsKeptAsItIs) {
  Read(kHeader + "2016-01-02T03:04:05.006Z Cold reset : User (cut)");
  m_blackBox.createBlackboxFile();
  EXPECT_THAT(File(kBoardFile),
              testing::HasSubstr("\n" + kHeader + "2016-01-02T03:04:05.006Z Cold reset : User (cut)SW VERSION:"));
}

TEST_F(ResetHistoryReadBackTest, ALineOf1022CharactersIsOneEntry) {
  const std::string line = std::string(kPiece - 1, 'x') + "\n";
  EXPECT_THAT(HistoryFrom(kHeader + line + kTwo + kEnd), ElementsAre(line, kTwo));
}

TEST_F(ResetHistoryReadBackTest, ALongerLineIsReadInPiecesThatCountAsLines) {
  std::string file = kHeader;
  for (int i = 0; i < 4; ++i) file += std::string(2 * kPiece, 'x') + "\n";  // two pieces and a line end each
  Read(file + kEnd);
  m_blackBox.createBlackboxFile();
  std::string tenPieces;
  for (int i = 0; i < 3; ++i) tenPieces += std::string(2 * kPiece, 'x') + "\n";
  tenPieces += std::string(kPiece, 'x');
  EXPECT_THAT(File(kBoardFile), testing::HasSubstr(kHeader + tenPieces + "SW VERSION:"));
}

TEST_F(ResetHistoryReadBackTest, ASoftwareVersionCutByTwoPiecesEndsNothing) {
  const std::string line = std::string(kPiece - 6, 'x') + "SW VERSION: x\n";
  EXPECT_THAT(HistoryFrom(kHeader + line + kTwo + kEnd), ElementsAre(line, kTwo));
}

TEST_F(ResetHistoryReadBackTest, AHeaderAtTheBeginningOfAPieceIsOne) {
  EXPECT_THAT(HistoryFrom(std::string(kPiece, 'x') + kHeader + kOne + kEnd), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, AHeaderInsideAPieceIsNone) {
  EXPECT_THAT(HistoryFrom(std::string(kPiece - 1, 'x') + kHeader + kOne + kEnd), IsEmpty());
  EXPECT_THAT(HistoryFrom(std::string(kPiece + 1, 'x') + kHeader + kOne + kEnd), IsEmpty());
}

TEST_F(ResetHistoryReadBackTest, EntriesAreReadBehindThoseThatAreThere) {
  Remember({kOne});
  EXPECT_THAT(HistoryFrom(kHeader + kTwo + kEnd), ElementsAre(kOne, kTwo));
}

TEST_F(ResetHistoryReadBackTest, WithoutAFileTheHistoryStaysAsItIs) {
  Remember({kOne});
  fake::RemoveAll(kBoardFile);
  m_blackBox.readResetReasonsFromFile();
  EXPECT_THAT(History(), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, WithoutAHeaderTheHistoryStaysAsItIs) {
  Remember({kOne});
  EXPECT_THAT(HistoryFrom(kTwo + kEnd), ElementsAre(kOne));
}

TEST_F(ResetHistoryReadBackTest, AReadThatFailsInTheEntriesIsNoEntryAndNoEnd) {
  fake::FailCall("AaFileReadLine", 3);
  EXPECT_THAT(HistoryFrom(kHeader + kOne + kTwo + kEnd), ElementsAre(kOne, kTwo));
}

TEST_F(ResetHistoryReadBackTest, AReadThatFailsBeforeTheHeaderIsTheEnd) {
  fake::FailCall("AaFileReadLine", 2);
  Read("ISTI: 1\n" + kHeader + kOne + kEnd);
  EXPECT_EQ(fake::LogLines().back(), m_nothing);
  EXPECT_EQ(fake::Calls().back(), m_close);
  EXPECT_THAT(History(), IsEmpty());
}

TEST_F(ResetHistoryReadBackTest, AReadIsLogged) {
  Read(kHeader + kOne + kEnd);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_reading));
}

TEST_F(ResetHistoryReadBackTest, AFileWithoutAHeaderIsLogged) {
  Read("ISTI: 1\n" + kEnd);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_reading, m_nothing));
}

TEST_F(ResetHistoryReadBackTest, AnEmptyFileHasNoHeader) {
  Read("");
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_reading, m_nothing));
}

TEST_F(ResetHistoryReadBackTest, AFileThatIsMissingIsLogged) {
  m_blackBox.readResetReasonsFromFile();
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_reading, m_missing));
}

TEST_F(ResetHistoryReadBackTest, AFileThatCannotBeOpenedCountsAsMissing) {
  fake::FailCall("AaFileOpen");
  Read(kHeader + kOne + kEnd);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_reading, m_missing));
  EXPECT_THAT(fake::Calls({"AaFileReadLine", "AaFileClose"}), IsEmpty());
}

TEST_F(ResetHistoryReadBackTest, TheFileIsOpenedReadAndClosed) {
  Read("ISTI: 1\n" + kHeader + kOne + kEnd + "ERRORS: 1\n");
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaFileReadLine", "AaFileWrite", "AaFileClose"}),
              ElementsAre(m_open, m_line, m_line, m_line, m_line, m_close));
}

TEST_F(ResetHistoryReadBackTest, ItIsLoggedBeforeTheFileIsOpened) {
  Read(kHeader + kEnd);
  EXPECT_TRUE(fake::CalledInOrder({Logging(kDebug, m_reading.text), m_open, m_line, m_close}));
}

TEST_F(ResetHistoryReadBackTest, AFileWithoutAHeaderIsReadToItsEndAndClosed) {
  Read("ISTI: 1\n" + kEnd);
  EXPECT_TRUE(fake::CalledInOrder({m_open, m_line, m_line, m_line, Logging(kDebug, m_nothing.text), m_close}));
  EXPECT_EQ(fake::Calls("AaFileReadLine").size(), 3u);
}

TEST_F(ResetHistoryReadBackTest, AtTheStartItComesBetweenTheTraceAndTheResetService) {
  for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
  fake::SetFile(kBoardFile, kHeader + kOne + kEnd);
  Forget();
  BlackBoxData started;
  started.init(EUnitType_Kel);
  EXPECT_TRUE(
      fake::CalledInOrder({{"AaFileOpen", kTraceFile, "r"}, m_open, m_close, {"AaConfigTagGetU32"}, {"AaSemCreateC"}}));
  EXPECT_EQ(std::ranges::count(fake::Calls(), m_open), 1);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
