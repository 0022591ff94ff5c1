/// Extended information that is anything but a plain text: what is stored, logged, told, and read by the next start.
#include "NextStart.h"
#include "ResetHistoryModel.h"
#include "ResetTest.h"

#include <gmock/gmock.h>

#include <array>
#include <ostream>
#include <random>
#include <string>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;

/// Announces warm resets with extended information, asked for by a user.
class HostileResetTextTest : public ResetTest {
 protected:
  HostileResetTextTest() {
    StartService();
    Announce({});
    m_bootState = HistoryIn(kBoardFile).erase(0, (kNoon + "Warm reset : User").size());  // with its line feed
    Forget();
  }

  /// @return the entry of a reset
  std::string Entry(const std::string& extended, const std::string& type = "Warm reset") const {
    const std::string text = extended.c_str();
    return kNoon + type + " : User" + (text.empty() ? "" : " (" + text + ")") + m_bootState;
  }
  /// @return the newest entry of the board file, when it is that of this text; else the whole history
  std::string Stored(const std::string& extended) const {
    const std::string history = HistoryIn(kBoardFile);
    return history.ends_with(Entry(extended)) ? Entry(extended) : history;
  }
  /// @return what is told of the last reset
  static LastReset Told() {
    fake::ClearSentMessages();
    const fake::Message answer =
        AnswerTo({.id = kResetInfoReq, .payload = Words({1, 2, 3}), .sender = kRequester}, kResetInfoResp);
    std::array<char, 60> extended{};
    if (answer.payload.size() == 80) std::copy_n(answer.payload.begin() + 16, 60, extended.begin());
    EXPECT_EQ(extended.back(), '\0');
    return {std::to_string(WordAt(answer, 12)), extended.data()};
  }
  /// Announces a reset, and looks at all that comes of it.
  void ExpectWordForWord(const std::string& extended) {
    Forget();
    const ResetRequest request{.extended = extended};
    EXPECT_EQ(Announce(request).payload, Words({0, 1, 1, 1, 7}));
    EXPECT_EQ(fake::LogLines().front(), Line(kDebug, request.Arrival()));
    EXPECT_EQ(Stored(extended), Entry(extended));
    EXPECT_EQ(fake::FileContent(kStandbyFile), fake::FileContent(kBoardFile));
    EXPECT_EQ(Told(), (LastReset{"1", model::Last({Entry(extended)}).extended}));
  }

  std::string m_bootState;
};

/// A text and what is told of it later.
struct Text {
  const char* name;
  const char* text;
  const char* told;

  friend std::ostream& operator<<(std::ostream& out, const Text& row) { return out << row.name; }
};

class HostileTextTest : public HostileResetTextTest, public testing::WithParamInterface<Text> {};

TEST_P(HostileTextTest, IsStoredAndLoggedWordForWordAndToldWithoutParentheses) {
  ExpectWordForWord(GetParam().text);
  EXPECT_EQ(Told(), (LastReset{"1", GetParam().told}));
}

TEST_P(HostileTextTest, DoesNotDisturbOtherEntries) {
  Announce({.extended = GetParam().text});
  Announce({.category = 2, .extended = "after"});
  EXPECT_EQ(HistoryIn(kBoardFile),
            Entry("") + Entry(GetParam().text) + kNoon + "Warm reset : Network (after)" + m_bootState);
  EXPECT_EQ(Told(), (LastReset{"2", "after"}));
}

INSTANTIATE_TEST_SUITE_P(
    Of, HostileTextTest,
    testing::Values(
        Text{"Conversions", "%s%n%d%5$s%99999d%%", "%s%n%d%5$s%99999d%%"}, Text{"LineFeed", "one\ntwo", "one\ntwo"},
        Text{"OnlyLineFeeds", "\n\n\n", "\n\n\n"}, Text{"CarriageReturn", "one\r\ntwo\r", "one\r\ntwo\r"},
        Text{"Tabs", "\tone\v\f\btwo", "\tone\v\f\btwo"}, Text{"Escapes", "\x1b[2J\x07\x7f", "\x1b[2J\x07\x7f"},
        Text{"Opening", "(", ""}, Text{"Closing", ")", ""}, Text{"Pair", "()", ""}, Text{"PairWithin", "a(b)c", "bc"},
        Text{"WrongWayRound", ")(", ""}, Text{"WrongWayRoundWithin", "a)b(c", "c"}, Text{"TwoOpening", "((a", "a"},
        Text{"TwoClosing", "a))", "a"}, Text{"OpeningBehind", "a(", ""}, Text{"ClosingBefore", ")a", "a"},
        Text{"ClosingWithin", "a)b", "ab"}, Text{"OpeningWithin", "a(b", "b"}, Text{"TwoPairs", "(a)(b)", "b"},
        Text{"Nested", "(a(b)c)", "bc"}, Text{"DoubleQuote", "\"; rm x; \"", "\"; rm x; \""},
        Text{"SingleQuote", "'x'", "'x'"}, Text{"Backtick", "`x`", "`x`"}, Text{"Substitution", "$(x) ${y}", "x ${y}"},
        Text{"Backslash", "\\n\\0\\", "\\n\\0\\"}, Text{"HighBytes", "\x80\x81\xC3.\xFE\xFF", "\x80\x81\xC3.\xFE\xFF"},
        Text{"Utf8", "\xC3\xA4\xE2\x82\xAC", "\xC3\xA4\xE2\x82\xAC"}, Text{"Mark", "x requested", "x requested"},
        Text{"CategoryMark", "a : Network b", "a : Network b"}, Text{"Colons", ":::", ":::"},
        Text{"Unknown", "Unknown", ""}, Text{"UnknownWithin", "anUnknownone", ""},
        Text{"LowerCaseUnknown", "unknown", "unknown"}, Text{"EndOfTheHistory", "SW VERSION:", "SW VERSION:"},
        Text{"Header", "RESET Reason and timestamp:", "RESET Reason and timestamp:"},
        Text{"Time", "2016-03-07T14:05:09.042Z ", "2016-03-07T14:05:09.042Z "}, Text{"Blanks", "   ", "   "},
        Text{"BootState", " Runnig partition: /ffs/fs1 RLC: 0", " Runnig partition: /ffs/fs1 RLC: 0"}),
    testing::PrintToStringParamName());

TEST_F(HostileResetTextTest, EveryByteMayStandInEveryPlace) {
  // One order leaves out what stands behind a zero; the other has it before.
  for (int first = 0; first < 256 && !HasFailure(); ++first) {
    for (const int step : {1, -1}) {
      std::string extended;
      for (int place = 0; place < 60; ++place) extended += static_cast<char>(first + step * place);
      SCOPED_TRACE(testing::Message() << "first byte " << first << ", step " << step);
      ExpectWordForWord(extended);
    }
  }
}

TEST_F(HostileResetTextTest, EveryByteMayFillTheField) {
  for (int byte = 0; byte < 256 && !HasFailure(); ++byte) {
    SCOPED_TRACE(byte);
    ExpectWordForWord(std::string(60, static_cast<char>(byte)));
  }
}

TEST_F(HostileResetTextTest, RandomTextsAreReadBackAsInTheModel) {
  constexpr unsigned kSeed = 4711;
  const std::string letters = std::string("()()::%%  \n\n\r\t$`'\"\\xyU\x80\xFF") + '\0';
  std::mt19937 random(kSeed);
  for (unsigned i = 0; i < 400 && !HasFailure(); ++i) {
    std::string extended(random() % 61, '\0');
    for (char& c : extended) c = letters[random() % letters.size()];
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", case " << i);
    ExpectWordForWord(extended);
    const model::Entries expected = model::ReadBack(*fake::FileContent(kBoardFile));
    EXPECT_LE(expected.size(), 10u);
    NextStart next(m_board);
    EXPECT_EQ(next.Last(), model::Last(expected));
    EXPECT_EQ(next.History(), model::Text(expected));
    BlackBoxData::getInstance()->createBlackboxFile();
  }
}

TEST_F(HostileResetTextTest, TextsOfManyLinesAreOneEntryEach) {
  std::string expected;
  for (int i = 0; i < 12; ++i) {
    const std::string extended = std::to_string(i) + "\na\nb\nc";
    Announce({.extended = extended});
    if (i >= 2) expected += Entry(extended);
  }
  EXPECT_EQ(HistoryIn(kBoardFile), expected);
}

/// What the next start reads of a text.
using HostileTextAfterAStartTest = HostileResetTextTest;

TEST_F(HostileTextAfterAStartTest, WithoutLineFeedsTheHistoryIsTheSame) {
  for (const char* text : {"%s%n", "a)b(c", "\x80\xFF", " : ", " requested", "Unknown"}) Announce({.extended = text});
  const std::string before = HistoryIn(kBoardFile);
  NextStart next(m_board);
  EXPECT_EQ(next.History(), before);
}

TEST_F(HostileTextAfterAStartTest, ALineFeedMakesTwoEntriesOfWhichTheSecondHasNoCategory) {
  Announce({.extended = "one\ntwo"});
  const std::string before = HistoryIn(kBoardFile);
  NextStart next(m_board);
  EXPECT_EQ(next.Last(), (LastReset{"Unknown", ""}));
  EXPECT_EQ(next.History(), before);
}

TEST_F(HostileTextAfterAStartTest, ALineFeedAndAnEntryAreAnEntry) {
  Announce({.extended = "x\n2016-03-07T14:05:09.042Z Warm reset : Network (y"});
  EXPECT_EQ(Told().category, "1");
  EXPECT_EQ(NextStart(m_board).Last(), (LastReset{"Network", "y"}));
}

TEST_F(HostileTextAfterAStartTest, OfManyLinesTheFirstTenStay) {
  Announce({.extended = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11"});
  NextStart next(m_board);
  EXPECT_EQ(next.History(), Entry("") + kNoon + "Warm reset : User (1\n2\n3\n4\n5\n6\n7\n8\n9\n");
}

TEST_F(HostileTextAfterAStartTest, EmptyLinesAreEntries) {
  Announce({.extended = std::string(20, '\n')});
  NextStart next(m_board);
  EXPECT_EQ(next.History(), Entry("") + kNoon + "Warm reset : User (\n" + std::string(8, '\n'));
  EXPECT_EQ(next.Last(), (LastReset{"Unknown", ""}));
}

TEST_F(HostileTextAfterAStartTest, TheEndOfTheHistoryTakesItsEntryAndTheLaterOnesAway) {
  Announce({.extended = "before"});
  Announce({.extended = "SW VERSION:"});
  Announce({.extended = "after"});
  NextStart next(m_board);
  EXPECT_EQ(next.History(), Entry("") + Entry("before"));
}

TEST_F(HostileTextAfterAStartTest, TheEndOfTheHistoryOnALineOfItsOwnLeavesTheLineBefore) {
  Announce({.extended = "one\nSW VERSION: two"});
  NextStart next(m_board);
  EXPECT_EQ(next.History(), Entry("") + kNoon + "Warm reset : User (one\n");
  EXPECT_EQ(next.Last(), (LastReset{"User", "one"}));
}

TEST_F(HostileTextAfterAStartTest, ASecondHeaderIsAnEntry) {
  Announce({.extended = "one\nRESET Reason and timestamp:\ntwo"});
  const std::string before = HistoryIn(kBoardFile);
  NextStart next(m_board);
  EXPECT_EQ(next.History(), before);
}

TEST_F(HostileTextAfterAStartTest, AMarkInItStandsForTheRequestOfTheReset) {
  Announce({.extended = "x requested y"});
  NextStart next(m_board, 5);
  EXPECT_EQ(next.History(), Entry("") + Entry("x y"));
}

TEST_F(HostileTextAfterAStartTest, OfTwoMarksTheOneOfTheResetTypeGoes) {
  Announce({.extra = 12, .extended = "x requested"});
  NextStart next(m_board, 7);
  next.SetClock();
  EXPECT_EQ(HistoryIn(kBoardFile), Entry("") + Entry("x requested", "Hardware reset"));
}

TEST_F(HostileTextAfterAStartTest, ANameOfAResetInItCountsAfterAPowerOn) {
  Announce({.extended = "Cold reset"});
  NextStart next(m_board, 0);
  next.SetClock();
  const std::string reason = "PowerOn reset (probably same as previous cold reset) : User (Cold";
  EXPECT_EQ(HistoryIn(kBoardFile), Entry("") + Entry("Cold reset") + kNoon + reason + m_bootState);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
