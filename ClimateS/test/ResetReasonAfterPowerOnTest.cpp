/// A power-on is explained by the reset that was logged before it.
#include "ResetHistory.h"

#include <gmock/gmock.h>

#include <ostream>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;

constexpr u32 kPowerOn = 0;
const std::string kPlain = "PowerOn reset";
const std::string kCold = "PowerOn reset (probably same as previous cold reset)";
const std::string kFpga = "PowerOn reset (probably FPGA reconfiguration reset)";
const std::string kBootState = " Runnig partition: /ffs/fs1 RLC: 0\n";

/// The newest entry, without its time, and the text of the power-on behind it.
struct Newest {
  const char* name;
  std::string entry;
  std::string text;

  friend std::ostream& operator<<(std::ostream& out, const Newest& row) { return out << row.name; }
};

class ResetReasonAfterPowerOnTest : public ResetHistoryTest {
 protected:
  /// @return the text that is stored after a history
  std::string TextAfter(const std::vector<std::string>& entries) {
    Remember(entries);
    Start(kPowerOn);
    m_blackBox.writeResetReasonToBlackbox();
    const std::string entry = History().back();
    const std::string end = BootState() + "\n";
    EXPECT_THAT(entry, testing::StartsWith(kNow));
    EXPECT_THAT(entry, testing::EndsWith(end));
    return entry.size() < kNow.size() + end.size() ? ""
                                                   : entry.substr(kNow.size(), entry.size() - kNow.size() - end.size());
  }
};

TEST_F(ResetReasonAfterPowerOnTest, WithoutAnyResetBeforeItIsPlain) { EXPECT_EQ(TextAfter({}), kPlain); }

class NewestResetTest : public ResetReasonAfterPowerOnTest, public testing::WithParamInterface<Newest> {};

TEST_P(NewestResetTest, GivesTheText) { EXPECT_EQ(TextAfter({kEarlier + GetParam().entry}), GetParam().text); }

TEST_P(NewestResetTest, StaysAsItIs) {
  const std::string entry = kEarlier + GetParam().entry;
  TextAfter({entry});
  EXPECT_EQ(History().front(), entry);
}

INSTANTIATE_TEST_SUITE_P(
    Resets, NewestResetTest,
    testing::Values(
        Newest{"AnyOther", "Watchdog reset" + kBootState, kPlain},
        Newest{"AnyOtherWithACategory", "Warm reset : User (by hand)" + kBootState, kPlain},
        Newest{"PlainPowerOn", kPlain + kBootState, kPlain},
        Newest{"ColdInSmallLetters", "cold reset : User" + kBootState, kPlain},
        Newest{"ColdPowerOnBefore", kCold + " : User Runnig" + kBootState, kPlain},
        Newest{"Cold", "Cold reset" + kBootState, kCold},
        Newest{"ColdWithAColonButNoCategory", "Cold reset: User" + kBootState, kCold},
        Newest{"ColdWithACategory", "Cold reset : User" + kBootState, kCold + " : User Runnig"},
        Newest{"ColdWithOneWord", "Cold reset : User (hand)" + kBootState, kCold + " : User (hand)"},
        Newest{"ColdWithTwoWords", "Cold reset : User (by hand)" + kBootState, kCold + " : User (by"},
        Newest{"ColdWithoutAnythingBehindTheCategory", "Cold reset : User\n", kCold + " : User "},
        Newest{"ColdWithoutACategoryBehindTheColon", "Cold reset : \n", kCold + " :  "},
        Newest{"ColdBehindTheColon", "Reset : Cold reset\n", kCold + " : Cold reset"},
        Newest{"ColdThatWasRequested", "Cold reset requested : User" + kBootState, kCold + " : User Runnig"},
        Newest{"Fpga", "FPGA reconfiguration" + kBootState, kFpga},
        Newest{"FpgaWithAColonButNoCategory", "FPGA reconfiguration: User" + kBootState, kFpga},
        Newest{"FpgaWithACategory", "FPGA reconfiguration : User" + kBootState, kFpga + " : User Runnig"},
        Newest{"FpgaWithOneWord", "FPGA reconfiguration : User (hand)" + kBootState, kFpga + " : User (hand)"},
        Newest{"FpgaWithTwoWords", "FPGA reconfiguration : User (by hand)" + kBootState, kFpga + " : User (by"},
        Newest{"FpgaInSmallLetters", "fpga reconfiguration : User" + kBootState, kPlain},
        Newest{"FpgaPowerOnBefore", kFpga + " : User Runnig" + kBootState, kFpga + " : User Runnig"},
        Newest{"FpgaBeforeCold", "FPGA reconfiguration Cold reset : User" + kBootState, kFpga + " : User Runnig"},
        Newest{"FpgaBehindCold", "Cold reset FPGA reconfiguration : User" + kBootState, kFpga + " : User Runnig"},
        Newest{"FpgaBehindColdWithoutACategory", "Cold reset FPGA reconfiguration\n", kFpga}),
    testing::PrintToStringParamName());

TEST_F(ResetReasonAfterPowerOnTest, OlderResetsAreNoMatter) {
  EXPECT_EQ(TextAfter({kEarlier + "FPGA reconfiguration : User\n", kEarlier + "Cold reset : User\n",
                       kEarlier + "Watchdog reset\n"}),
            kPlain);
}

TEST_F(ResetReasonAfterPowerOnTest, ANewerColdResetComesBeforeAnOlderFpgaOne) {
  EXPECT_EQ(TextAfter({kEarlier + "FPGA reconfiguration : User\n", kEarlier + "Cold reset : Alarm (hot)\n"}),
            kCold + " : Alarm (hot)");
}

TEST_F(ResetReasonAfterPowerOnTest, AnEntryWithoutATimeIsTakenApartToo) {
  EXPECT_EQ(TextAfter({"Cold reset : User (hand)\n"}), kCold + " : User (hand)");
}

TEST_F(ResetReasonAfterPowerOnTest, AnEntryOfAnUnsetClockIsTakenApartFromItsTime) {
  EXPECT_EQ(TextAfter({"0000-00-00T00:00:00.000Z Cold reset : User (hand)\n"}), kCold + " : 00:00.000Z Cold");
}

TEST_F(ResetReasonAfterPowerOnTest, CategoryAndWordAreKeptTo39And59Characters) {
  EXPECT_EQ(TextAfter({kEarlier + "Cold reset : " + std::string(39, 'c') + " " + std::string(70, 'e') + "\n"}),
            kCold + " : " + std::string(39, 'c') + " " + std::string(59, 'e'));
}

TEST_F(ResetReasonAfterPowerOnTest, TheOldEntryStaysBehindTheNewOne) {
  const std::string old = kEarlier + "Cold reset : User\n";
  Remember({old});
  Start(kPowerOn);
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_THAT(History(), ElementsAre(old, kNow + kCold + " : User " + BootState() + "\n"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
