#include "ResetEntry.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace ps::hwapi::common::climate {
namespace {

const std::string kTime = "2016-03-07T14:05:09.042Z ";
const std::string kBootState = " Runnig partition: /ffs/fs1 RLC: 0\n";

/// What an entry was taken apart into.
struct Words {
  std::string text;
  std::string category;
  std::string extended;

  bool operator==(const Words&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Words& words) {
    return out << '\'' << words.text << "' '" << words.category << "' '" << words.extended << '\'';
  }
};

Words Apart(const std::string& entry) {
  const ResetEntry parsed(entry);
  return {parsed.text, parsed.category, parsed.extended};
}

TEST(ResetEntryTest, BehindTheTimeStandTextCategoryAndExtendedWord) {
  EXPECT_EQ(Apart(kTime + "Cold reset : User (hand)" + kBootState), (Words{"Cold reset ", "User", "(hand)"}));
}

TEST(ResetEntryTest, WithoutExtendedInformationTheWordIsTheFirstOfTheBootState) {
  EXPECT_EQ(Apart(kTime + "Cold reset : User" + kBootState), (Words{"Cold reset ", "User", "Runnig"}));
}

TEST(ResetEntryTest, OfExtendedInformationOfTwoWordsTheFirstIsTakenWithItsParenthesis) {
  EXPECT_EQ(Apart(kTime + "Cold reset : User (by hand)" + kBootState), (Words{"Cold reset ", "User", "(by"}));
}

TEST(ResetEntryTest, WithoutATimeItsBeginningIsTheText) {
  EXPECT_EQ(Apart("Cold reset : User (hand)\n"), (Words{"Cold reset ", "User", "(hand)"}));
}

TEST(ResetEntryTest, AYearOfOneIsATime) {
  EXPECT_EQ(Apart("0001-03-07T14:05:09.042Z Cold reset : User (hand)\n"), (Words{"Cold reset ", "User", "(hand)"}));
}

TEST(ResetEntryTest, AYearOfZeroIsNoTime) {
  EXPECT_EQ(Apart("0000-00-00T00:00:00.000Z Cold reset : User\n"), (Words{"0000-00-00T00", "00:00.000Z", "Cold"}));
}

TEST(ResetEntryTest, AYearInLettersIsNoTime) {
  EXPECT_EQ(Apart("year-03-07T14:05:09.042Z Cold reset : User\n"), (Words{"year-03-07T14", "05:09.042Z", "Cold"}));
}

TEST(ResetEntryTest, AnyNumberInFrontIsATime) {
  EXPECT_EQ(Apart("12 resets of the watchdog and a cold one : User x\n"), (Words{" and a cold one ", "User", "x"}));
}

TEST(ResetEntryTest, ANegativeYearIsATime) {
  EXPECT_EQ(Apart("-016-03-07T14:05:09.042Z Cold reset : User x\n"), (Words{"Cold reset ", "User", "x"}));
}

TEST(ResetEntryTest, BlanksBeforeTheYearCountAsPartOfTheTime) {
  EXPECT_EQ(Apart("  16-03-07T14:05:09.042Z Cold reset : User x\n"), (Words{"Cold reset ", "User", "x"}));
}

TEST(ResetEntryTest, AnEntryThatEndsWithinItsTimeHasNothing) {
  EXPECT_EQ(Apart("2016-03-07T14:05 : User x"), (Words{"", "", ""}));
  EXPECT_EQ(Apart("1"), (Words{"", "", ""}));
}

TEST(ResetEntryTest, AnEntryOfATimeAloneHasNothing) { EXPECT_EQ(Apart(kTime), (Words{"", "", ""})); }

TEST(ResetEntryTest, OneCharacterBehindTheTimeIsText) { EXPECT_EQ(Apart(kTime + "C"), (Words{"C", "", ""})); }

TEST(ResetEntryTest, AnEmptyEntryHasNothing) { EXPECT_EQ(Apart(""), (Words{"", "", ""})); }

TEST(ResetEntryTest, ATextOf89CharactersIsKept) {
  const std::string text(89, 't');
  EXPECT_EQ(Apart(kTime + text + ": User x\n"), (Words{text, "User", "x"}));
}

TEST(ResetEntryTest, BehindATextOf90CharactersNoCategoryIsFound) {
  EXPECT_EQ(Apart(kTime + std::string(90, 't') + ": User x\n"), (Words{std::string(89, 't'), "", ""}));
}

TEST(ResetEntryTest, ACategoryOf39CharactersIsKept) {
  const std::string category(39, 'c');
  EXPECT_EQ(Apart(kTime + "Cold reset : " + category + " x\n"), (Words{"Cold reset ", category, "x"}));
}

TEST(ResetEntryTest, TheRestOfACategoryOf40CharactersIsTheExtendedWord) {
  EXPECT_EQ(Apart(kTime + "Cold reset : " + std::string(39, 'c') + "d x\n"),
            (Words{"Cold reset ", std::string(39, 'c'), "d"}));
}

TEST(ResetEntryTest, AnExtendedWordOf59CharactersIsKept) {
  const std::string word(59, 'e');
  EXPECT_EQ(Apart(kTime + "Cold reset : User " + word + " x\n"), (Words{"Cold reset ", "User", word}));
}

TEST(ResetEntryTest, OfAnExtendedWordOf60CharactersTheLastIsLost) {
  EXPECT_EQ(Apart(kTime + "Cold reset : User " + std::string(59, 'e') + "f\n"),
            (Words{"Cold reset ", "User", std::string(59, 'e')}));
}

TEST(ResetEntryTest, WithoutAColonAllIsText) {
  EXPECT_EQ(Apart(kTime + "Watchdog reset\n"), (Words{"Watchdog reset\n", "", ""}));
}

TEST(ResetEntryTest, WithoutACategoryAllBehindTheTextIsEmpty) {
  EXPECT_EQ(Apart(kTime + "Cold reset : \n"), (Words{"Cold reset ", "", ""}));
}

TEST(ResetEntryTest, WithoutAWordBehindTheCategoryThereIsNoExtendedWord) {
  EXPECT_EQ(Apart(kTime + "Cold reset : User\n"), (Words{"Cold reset ", "User", ""}));
}

TEST(ResetEntryTest, TheFirstColonEndsTheText) {
  EXPECT_EQ(Apart(kTime + "Cold: reset : User\n"), (Words{"Cold", "reset", ":"}));
}

TEST(ResetEntryTest, AColonInFrontLeavesNothing) { EXPECT_EQ(Apart(kTime + ": User (hand)\n"), (Words{"", "", ""})); }

TEST(ResetEntryTest, ABlankInFrontOfTheColonIsAText) {
  EXPECT_EQ(Apart(kTime + " : User (hand)\n"), (Words{" ", "User", "(hand)"}));
}

TEST(ResetEntryTest, TheCategoryMayFollowTheColonAtOnce) {
  EXPECT_EQ(Apart(kTime + "Cold reset:User (hand)\n"), (Words{"Cold reset", "User", "(hand)"}));
}

TEST(ResetEntryTest, AnySpaceSeparatesTheWords) {
  EXPECT_EQ(Apart(kTime + "Cold reset : \t User\t\r\n (hand)\n"), (Words{"Cold reset ", "User", "(hand)"}));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
