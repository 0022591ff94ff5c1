/// The newest entry of the reset history, taken apart for those who ask.
#include "ResetHistory.h"

#include <gmock/gmock.h>

#include <cstring>
#include <ostream>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;

const std::string kBootState = " Runnig partition: /ffs/fs1 RLC: 0\n";

/// What is told of a reset.
struct Told {
  std::string category;
  std::string extended;

  bool operator==(const Told&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Told& told) {
    return out << '\'' << told.category << "' '" << told.extended << '\'';
  }
};

class ResetStateInfoTest : public ResetHistoryTest {
 protected:
  static constexpr std::size_t kCategorySize = 40;
  static constexpr std::size_t kExtendedSize = 60;

  /// Asks with buffers that are full of something else; behind them nothing may be written.
  Told Ask() {
    char category[kCategorySize + 1], extended[kExtendedSize + 1];
    std::memset(category, 'x', sizeof(category));
    std::memset(extended, 'x', sizeof(extended));
    m_blackBox.ResetStateInfo(category, extended);
    EXPECT_EQ(category[kCategorySize], 'x');
    EXPECT_EQ(extended[kExtendedSize], 'x');
    category[kCategorySize] = extended[kExtendedSize] = '\0';
    return {category, extended};
  }

  /// @return what is told of an entry with this text behind its time
  Told Of(const std::string& text) {
    Remember({kEarlier + text});
    return Ask();
  }

  /// @return the line of what was found in the entry
  static fake::LogLine Found(const Told& told) {
    return Line(kDebug, "BlackBoxData::ResetStateInfo(): After sscanf: ResetReason '" + told.category +
                            "', ResetExtInfo '" + told.extended + "'");
  }
  /// @return the line of what is told
  static fake::LogLine Answered(const Told& told) {
    return Line(kDebug, "BlackBoxData::ResetStateInfo():ResetCategory '" + told.category + "', ResetExt '" +
                            told.extended + "'");
  }
};

TEST_F(ResetStateInfoTest, WithoutAnyResetTheCategoryIsUnknown) { EXPECT_EQ(Ask(), (Told{"Unknown", ""})); }

TEST_F(ResetStateInfoTest, WithoutAnyResetOneLineIsLogged) {
  Ask();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Answered({"Unknown", ""})));
}

TEST_F(ResetStateInfoTest, OfAnEntryWithoutACategoryItIsUnknown) {
  EXPECT_EQ(Of("Watchdog reset" + kBootState), (Told{"Unknown", ""}));
  EXPECT_THAT(fake::LogLines(), ElementsAre(Answered({"Unknown", ""})));
}

TEST_F(ResetStateInfoTest, ACategoryNeedsTheColonBetweenBlanks) {
  for (const char* text : {"Cold reset: User (hand)", "Cold reset :User (hand)", "Cold reset:User (hand)",
                           "Cold reset :\t", "Cold reset  User (hand)"}) {
    EXPECT_EQ(Of(text + kBootState), (Told{"Unknown", ""})) << text;
  }
}

TEST_F(ResetStateInfoTest, CategoryAndTheWordBehindItAreTold) {
  EXPECT_EQ(Of("Cold reset : User hand" + kBootState), (Told{"User", "hand"}));
}

TEST_F(ResetStateInfoTest, WithoutExtendedInformationTheWordIsTheFirstOfTheBootState) {
  EXPECT_EQ(Of("Cold reset : User" + kBootState), (Told{"User", "Runnig"}));
}

TEST_F(ResetStateInfoTest, BothAreLoggedAsFoundAndAsTold) {
  Of("Cold reset : User (by hand)" + kBootState);
  EXPECT_THAT(fake::LogLines(), ElementsAre(Found({"User", "(by hand"}), Answered({"User", "by hand"})));
}

TEST_F(ResetStateInfoTest, ExtendedInformationInParenthesesMayHaveBlanks) {
  EXPECT_EQ(Of("Cold reset : User (by  hand, now)" + kBootState), (Told{"User", "by  hand, now"}));
}

TEST_F(ResetStateInfoTest, TheTextBetweenParenthesesIsKeptTo58Characters) {
  const std::string text(58, 'e');
  EXPECT_EQ(Of("Cold reset : User (" + text + ")" + kBootState), (Told{"User", text}));
}

TEST_F(ResetStateInfoTest, OfATextOf59CharactersBetweenParenthesesTheLastIsLost) {
  EXPECT_EQ(Of("Cold reset : User (" + std::string(58, 'e') + "f)" + kBootState), (Told{"User", std::string(58, 'e')}));
  EXPECT_EQ(fake::LogLines().front(), Found({"User", "(" + std::string(58, 'e')}));
}

TEST_F(ResetStateInfoTest, AnExtendedWordWithoutParenthesesIsKeptTo59Characters) {
  EXPECT_EQ(Of("Cold reset : User " + std::string(59, 'e') + "f" + kBootState), (Told{"User", std::string(59, 'e')}));
}

TEST_F(ResetStateInfoTest, ACategoryOf39CharactersIsKept) {
  EXPECT_EQ(Of("Cold reset : " + std::string(39, 'c') + " x\n"), (Told{std::string(39, 'c'), "x"}));
}

TEST_F(ResetStateInfoTest, TheRestOfACategoryOf40CharactersIsTheExtendedWord) {
  EXPECT_EQ(Of("Cold reset : " + std::string(39, 'c') + "d x\n"), (Told{std::string(39, 'c'), "d"}));
}

TEST_F(ResetStateInfoTest, BehindATextOf90CharactersNothingIsFound) {
  EXPECT_EQ(Of(std::string(90, 't') + " : User hand\n"), (Told{"", ""}));
}

TEST_F(ResetStateInfoTest, ACategoryThatIsMissingIsEmpty) { EXPECT_EQ(Of("Cold reset : \n"), (Told{"", ""})); }

TEST_F(ResetStateInfoTest, TheLastOpeningParenthesisCounts) {
  EXPECT_EQ(Of("Cold reset : User (one) (two)" + kBootState), (Told{"User", "two"}));
  EXPECT_EQ(Of("Cold reset : User (one (two)" + kBootState), (Told{"User", "two"}));
}

TEST_F(ResetStateInfoTest, TheLastClosingParenthesisCounts) {
  EXPECT_EQ(Of("Cold reset : User (one) two) three" + kBootState), (Told{"User", "one two"}));
}

TEST_F(ResetStateInfoTest, OfNestedParenthesesTheInnerTextIsTold) {
  EXPECT_EQ(Of("Cold reset : User (a (b) c)" + kBootState), (Told{"User", "b c"}));
  EXPECT_EQ(fake::LogLines().front(), Found({"User", "(b) c"}));
}

TEST_F(ResetStateInfoTest, ParenthesesInTheWrongOrderLeaveTheWord) {
  EXPECT_EQ(Of("Cold reset : User one) (two" + kBootState), (Told{"User", "one"}));
  EXPECT_THAT(fake::LogLines(), ElementsAre(Found({"User", "one)"}), Answered({"User", "one"})));
}

TEST_F(ResetStateInfoTest, AnOpeningParenthesisAloneLeavesTheWord) {
  EXPECT_EQ(Of("Cold reset : User (one two" + kBootState), (Told{"User", "one"}));
}

TEST_F(ResetStateInfoTest, AClosingParenthesisAloneLeavesTheWord) {
  EXPECT_EQ(Of("Cold reset : User one) two" + kBootState), (Told{"User", "one"}));
}

TEST_F(ResetStateInfoTest, EveryParenthesisInTheWordGoes) {
  EXPECT_EQ(Of("Cold reset : User ))a)b(c(( x\n"), (Told{"User", "abc"}));
}

TEST_F(ResetStateInfoTest, NothingBetweenParenthesesIsNothing) {
  EXPECT_EQ(Of("Cold reset : User ()" + kBootState), (Told{"User", ""}));
  EXPECT_THAT(fake::LogLines(), ElementsAre(Found({"User", "("}), Answered({"User", ""})));
}

TEST_F(ResetStateInfoTest, ParenthesesBeforeTheCategoryCountToo) {
  EXPECT_EQ(Of("PowerOn reset (probably same as previous cold reset) : User Runnig" + kBootState),
            (Told{"User", "probably same as previous cold reset"}));
}

TEST_F(ResetStateInfoTest, ParenthesesInTheCategoryStay) {
  EXPECT_EQ(Of("Cold reset : (User) hand" + kBootState), (Told{"(User)", "User"}));
}

TEST_F(ResetStateInfoTest, AnUnknownCategoryHasNoExtendedText) {
  EXPECT_EQ(Of("Cold reset : Unknown (by hand)" + kBootState), (Told{"Unknown", ""}));
  EXPECT_THAT(fake::LogLines(), ElementsAre(Found({"Unknown", "(by hand"}), Answered({"Unknown", ""})));
}

TEST_F(ResetStateInfoTest, TheWordUnknownAnywhereTakesTheExtendedTextAway) {
  EXPECT_EQ(Of("Unknown reset : User (by hand)" + kBootState), (Told{"User", ""}));
  EXPECT_EQ(Of("Cold reset : User (by anUnknownhand)" + kBootState), (Told{"User", ""}));
  EXPECT_EQ(Of("Cold reset : User (by hand) Runnig partition: Unknown\n"), (Told{"User", ""}));
}

TEST_F(ResetStateInfoTest, TheWordInSmallLettersTakesNothingAway) {
  EXPECT_EQ(Of("Cold reset : User (unknown)" + kBootState), (Told{"User", "unknown"}));
}

TEST_F(ResetStateInfoTest, TheNewestEntryCounts) {
  Remember({kEarlier + "Cold reset : User (old)\n", kEarlier + "Warm reset : Alarm (new)\n"});
  EXPECT_EQ(Ask(), (Told{"Alarm", "new"}));
}

TEST_F(ResetStateInfoTest, OlderEntriesWithACategoryDoNotReplaceTheNewestOne) {
  Remember({kEarlier + "Cold reset : User (old)\n", kEarlier + "Watchdog reset\n"});
  EXPECT_EQ(Ask(), (Told{"Unknown", ""}));
}

TEST_F(ResetStateInfoTest, AnEntryWithoutATimeIsTakenApartToo) {
  Remember({"Cold reset : User (by hand)\n"});
  EXPECT_EQ(Ask(), (Told{"User", "by hand"}));
}

TEST_F(ResetStateInfoTest, AnEntryThatWasJustAddedIsTheNewest) {
  Remember({kEarlier + "Cold reset : User (old)\n"});
  m_blackBox.addResetReasonWithTimestamp("Warm reset requested : Alarm (new one)");
  EXPECT_EQ(Ask(), (Told{"Alarm", "new one"}));
}

TEST_F(ResetStateInfoTest, AskingCallsNothingButTheLog) {
  Of("Cold reset : User (by hand)" + kBootState);
  EXPECT_EQ(fake::Calls().size(), 2u);
  EXPECT_EQ(fake::Calls("AaSysLogPrintE").size(), 2u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
