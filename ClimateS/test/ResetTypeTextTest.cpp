/// The text of each reset type, and the mark of a reset that was requested.
#include "ResetHistory.h"

#include <gmock/gmock.h>

#include <ostream>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr u32 kAppHard = 5;
constexpr u32 kAppPor = 7;

fake::LogLine WaitingLine(u32 type) {
  return {EAaSysLogSeverityLevel_Info, 131143,
          "BlackBoxData::startWaitingForNTPTime(): reset reason (" + std::to_string(type) +
              ") needs to be stored to blackbox, wait for NTP time"};
}

/// A type and its text.
struct KnownType {
  u32 type;
  const char* text;

  friend std::ostream& operator<<(std::ostream& out, const KnownType& row) { return out << "Type" << row.type; }
};

constexpr KnownType kKnownTypes[] = {
    {0, "PowerOn reset"},          {2, "Watchdog reset"},         {4, "Spurious reset (probably SW crash)"},
    {5, "App Hard reset"},         {6, "Application full reset"}, {7, "App POR reset"},
    {8, "Application soft reset"}, {9, "Front panel reset"},      {10, "Temperature reset"},
    {11, "Configuration reset"},   {12, "Emulator reset"},        {14, "Spurious BTS reset"}};

class KnownLastResetTest : public ResetHistoryTest, public testing::WithParamInterface<KnownType> {
 protected:
  KnownLastResetTest() { m_board.SetResetType(GetParam().type); }
};

TEST_P(KnownLastResetTest, ItsTextIsStoredOnceTheClockIsSet) {
  m_blackBox.checkResetType();
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(History(), ElementsAre(kNow + GetParam().text + BootState() + "\n"));
}

TEST_P(KnownLastResetTest, NothingIsStoredBefore) {
  m_blackBox.checkResetType();
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaUtcTimeGet", "ddal_boot_get_reset_loop_count"}), IsEmpty());
  EXPECT_THAT(History(), IsEmpty());
}

TEST_P(KnownLastResetTest, AThreadWaitsForTheClock) {
  m_blackBox.checkResetType();
  EXPECT_EQ(fake::StartedThreads().size(), 1u);
  EXPECT_EQ(fake::LogLines().back(), WaitingLine(GetParam().type));
}

INSTANTIATE_TEST_SUITE_P(Types, KnownLastResetTest, testing::ValuesIn(kKnownTypes), testing::PrintToStringParamName());

/// A type without a text, and the number that is logged.
struct UnknownType {
  u32 type;
  const char* number;

  fake::LogLine Line() const {
    return {EAaSysLogSeverityLevel_Info, 131143,
            "Blackbox::checkResetType(): last reset type is unknown (" + std::string(number) + ")"};
  }
  friend std::ostream& operator<<(std::ostream& out, const UnknownType& row) { return out << "Type" << row.type; }
};

class UnknownLastResetTest : public ResetHistoryTest, public testing::WithParamInterface<UnknownType> {
 protected:
  UnknownLastResetTest() { m_board.SetResetType(GetParam().type); }
};

TEST_P(UnknownLastResetTest, IsLogged) {
  m_blackBox.checkResetType();
  EXPECT_EQ(fake::LogLines().back(), GetParam().Line());
  EXPECT_THAT(fake::LogTexts(kInfo), ElementsAre(GetParam().Line().text));
}

TEST_P(UnknownLastResetTest, NoThreadWaits) {
  m_blackBox.checkResetType();
  EXPECT_THAT(fake::StartedThreads(), IsEmpty());
}

TEST_P(UnknownLastResetTest, NothingIsEverStored) {
  Start(GetParam().type);
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(fake::Calls(), IsEmpty());
  EXPECT_THAT(History(), IsEmpty());
}

TEST_P(UnknownLastResetTest, ARequestedResetStandsAlone) {
  Start(GetParam().type);
  m_blackBox.addResetReasonWithTimestamp("Cold reset requested : User");
  EXPECT_THAT(History(), ElementsAre(kNow + "Cold reset requested : User" + BootState() + "\n"));
}

TEST_P(UnknownLastResetTest, TheMarkOfARequestStays) {
  Remember({kEarlier + "Cold reset requested : User\n"});
  m_blackBox.checkResetType();
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold reset requested : User\n"));
}

INSTANTIATE_TEST_SUITE_P(Types, UnknownLastResetTest,
                         testing::Values(UnknownType{1, "1"}, UnknownType{3, "3"}, UnknownType{13, "13"},
                                         UnknownType{15, "15"}, UnknownType{16, "16"}, UnknownType{17, "17"},
                                         UnknownType{256, "256"}, UnknownType{0x10000, "65536"},
                                         UnknownType{0x80000000, "-2147483648"}, UnknownType{0xFFFFFFFF, "-1"}),
                         testing::PrintToStringParamName());

using UntoldLastResetTest = ResetHistoryTest;

TEST_F(UntoldLastResetTest, AServiceThatAnswersAnErrorTellsNoType) {
  m_board.answer = Words({0, 2, 2});
  m_blackBox.checkResetType();
  EXPECT_EQ(fake::LogLines().back(), (UnknownType{0xFFFFFFFF, "-1"}).Line());
  EXPECT_THAT(fake::StartedThreads(), IsEmpty());
}

TEST_F(UntoldLastResetTest, AServiceThatDoesNotAnswerTellsNoType) {
  m_board.answer.reset();
  m_blackBox.checkResetType();
  EXPECT_EQ(fake::LogLines().back(), (UnknownType{0xFFFFFFFF, "-1"}).Line());
  EXPECT_THAT(fake::StartedThreads(), IsEmpty());
}

/// The types of resets that this service asked for.
class RequestedLastResetTest : public ResetHistoryTest, public testing::WithParamInterface<KnownType> {
 protected:
  /// @return the history once the reason of this start is stored
  std::vector<std::string> HistoryAfterStart() {
    Start(GetParam().type);
    m_blackBox.writeResetReasonToBlackbox();
    return History();
  }
  std::string OwnEntry() const { return kNow + GetParam().text + BootState() + "\n"; }
};

TEST_P(RequestedLastResetTest, TheEntryOfTheRequestStandsForTheReset) {
  Remember({kEarlier + "Cold reset requested : User (by hand)\n"});
  EXPECT_THAT(HistoryAfterStart(), ElementsAre(kEarlier + "Cold reset : User (by hand)\n"));
}

TEST_P(RequestedLastResetTest, TheMarkGoesAtOnce) {
  Remember({kEarlier + "Cold reset requested : User\n"});
  Start(GetParam().type);
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold reset : User\n"));
}

TEST_P(RequestedLastResetTest, OfTwoMarksTheFirstGoes) {
  Remember({kEarlier + "Cold reset requested : User (as requested)\n"});
  EXPECT_THAT(HistoryAfterStart(), ElementsAre(kEarlier + "Cold reset : User (as requested)\n"));
}

TEST_P(RequestedLastResetTest, AMarkInAnOlderEntryStays) {
  const std::string older = kEarlier + "Cold reset requested : User\n", newest = kEarlier + "Watchdog reset\n";
  Remember({older, newest});
  EXPECT_THAT(HistoryAfterStart(), ElementsAre(older, newest, OwnEntry()));
}

TEST_P(RequestedLastResetTest, OnlyTheNewestEntryLosesItsMark) {
  const std::string marked = kEarlier + "Cold reset requested : User\n";
  Remember({marked, marked});
  EXPECT_THAT(HistoryAfterStart(), ElementsAre(marked, kEarlier + "Cold reset : User\n"));
}

TEST_P(RequestedLastResetTest, TheWordWithoutItsBlankIsNoMark) {
  const std::string entry = kEarlier + "Cold reset (requested) : User\n";
  Remember({entry});
  EXPECT_THAT(HistoryAfterStart(), ElementsAre(entry, OwnEntry()));
}

TEST_P(RequestedLastResetTest, AThreadWaitsForTheClockAlsoWithoutATextOfItsOwn) {
  Remember({kEarlier + "Cold reset requested : User\n"});
  m_board.SetResetType(GetParam().type);
  m_blackBox.checkResetType();
  EXPECT_EQ(fake::StartedThreads().size(), 1u);
  EXPECT_EQ(fake::LogLines().back(), WaitingLine(GetParam().type));
}

TEST_P(RequestedLastResetTest, ARequestBeforeTheClockIsSetAddsAnEntryWithoutAText) {
  Remember({kEarlier + "Cold reset requested : User\n"});
  Start(GetParam().type);
  m_blackBox.addResetReasonWithTimestamp("Warm reset");
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold reset : User\n", kNow + BootState() + "\n",
                                     kNow + "Warm reset" + BootState() + "\n"));
}

INSTANTIATE_TEST_SUITE_P(Types, RequestedLastResetTest,
                         testing::Values(KnownType{kAppHard, "App Hard reset"}, KnownType{kAppPor, "App POR reset"}),
                         testing::PrintToStringParamName());

/// The types that are never requested.
class OtherLastResetTest : public ResetHistoryTest, public testing::WithParamInterface<KnownType> {};

TEST_P(OtherLastResetTest, TheMarkOfARequestStays) {
  const std::string marked = kEarlier + "Warm reset requested : User\n";
  Remember({marked});
  Start(GetParam().type);
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(History(), ElementsAre(marked, kNow + GetParam().text + BootState() + "\n"));
}

INSTANTIATE_TEST_SUITE_P(Types, OtherLastResetTest,
                         testing::Values(kKnownTypes[0], kKnownTypes[1], kKnownTypes[2], kKnownTypes[4], kKnownTypes[6],
                                         kKnownTypes[7], kKnownTypes[8], kKnownTypes[9], kKnownTypes[10],
                                         kKnownTypes[11]),
                         testing::PrintToStringParamName());

using RequestMarkTest = ResetHistoryTest;

TEST_F(RequestMarkTest, ItsRemovalIsTold) {
  Remember({kEarlier + "Cold reset requested : User\n"});
  EXPECT_EQ(m_blackBox.updateLastResetResonIfRequested(), 1u);
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(RequestMarkTest, ASecondRemovalFindsNone) {
  Remember({kEarlier + "Cold reset requested : User\n"});
  m_blackBox.updateLastResetResonIfRequested();
  EXPECT_EQ(m_blackBox.updateLastResetResonIfRequested(), 0u);
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold reset : User\n"));
}

TEST_F(RequestMarkTest, TwoMarksAreRemovedOneByOne) {
  Remember({kEarlier + "Cold reset requested requested\n"});
  EXPECT_EQ(m_blackBox.updateLastResetResonIfRequested(), 1u);
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold reset requested\n"));
}

TEST_F(RequestMarkTest, ALongerWordLosesTheMarkToo) {
  Remember({kEarlier + "Cold reset requestedly : User\n"});
  EXPECT_EQ(m_blackBox.updateLastResetResonIfRequested(), 1u);
  EXPECT_THAT(History(), ElementsAre(kEarlier + "Cold resetly : User\n"));
}

TEST_F(RequestMarkTest, WithoutAnyResetThereIsNone) { EXPECT_EQ(m_blackBox.updateLastResetResonIfRequested(), 0u); }

TEST_F(RequestMarkTest, InAnOlderEntryItDoesNotCount) {
  Remember({kEarlier + "Cold reset requested\n", kEarlier + "Watchdog reset\n"});
  EXPECT_EQ(m_blackBox.updateLastResetResonIfRequested(), 0u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
