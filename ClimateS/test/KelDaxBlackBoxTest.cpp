/// The names of plug-in units' sensors in the black box: they come with a unit and go with its end.
#include "BlackBoxData.h"
#include "KelDaxSensorGroup.h"
#include "ServiceOnBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;
constexpr u32 kReady = 0;
constexpr u32 kUnPlugged = 2;
constexpr u32 kBasic = 0;
constexpr u32 kM = 0x0C000;
constexpr u32 kP = 0x16000;

/// @return names of a slot's sensors: the first seven, then what is given
Names NamesOf(const std::string& unit, const Names& more = {}) {
  Names names = {unit + "_MCU"};
  for (const char* dsp : {"1", "2", "3", "4", "5", "6"}) names.push_back(unit + "_DSP" + dsp);
  for (const std::string& name : more) names.push_back(unit + name);
  return names;
}

const Names kMore = {"_DSP7", "_DSP8", "_DSP9", "_VORNIK"};

/// The group and the one black box of the process, whose log tells what it takes in and gives up.
class KelDaxBlackBoxTest : public fake::PlatformTest {
 protected:
  void Indicate(u32 unitId, u32 hwSwId, u32 state = kReady) {
    fake::ClearLog();
    m_group.HandleAutodetUnitInd(hwSwId, unitId, state);
  }
  /// @return the names that the black box took in since the last indication, in order
  static Names Added() { return Behind("BlackBoxData::addSensor(): sensor "); }
  /// @return those that it gave up
  static Names Removed() { return Behind("BlackBoxData::removeSensor(): delete sensor "); }

  KelDaxSensorGroup m_group;

 private:
  static Names Behind(const std::string& prefix) {
    Names names;
    for (const std::string& line : fake::LogTexts(kDebug)) {
      if (line.starts_with(prefix)) names.push_back(line.substr(prefix.size()));
    }
    return names;
  }
};

struct Unit {
  const char* name;
  u32 unitId;
  u32 hwSwId;
  Names sensors;

  friend std::ostream& operator<<(std::ostream& out, const Unit& unit) { return out << unit.name; }
};

class UnitInBlackBoxTest : public KelDaxBlackBoxTest, public testing::WithParamInterface<Unit> {};

TEST_P(UnitInBlackBoxTest, AddsItsNames) {
  Indicate(GetParam().unitId, GetParam().hwSwId);
  EXPECT_EQ(Added(), GetParam().sensors);
}

TEST_P(UnitInBlackBoxTest, AddsNothingWhenItIsIndicatedAgain) {
  Indicate(GetParam().unitId, GetParam().hwSwId);
  Indicate(GetParam().unitId, GetParam().hwSwId);
  EXPECT_THAT(Added(), IsEmpty());
}

TEST_P(UnitInBlackBoxTest, TakesItsNamesAlongWhenItIsUnplugged) {
  Indicate(GetParam().unitId, GetParam().hwSwId);
  Indicate(GetParam().unitId, GetParam().hwSwId, kUnPlugged);
  EXPECT_EQ(Removed(), GetParam().sensors);
  EXPECT_THAT(Added(), IsEmpty());
}

TEST_P(UnitInBlackBoxTest, AddsItsNamesAgainWhenItComesBack) {
  Indicate(GetParam().unitId, GetParam().hwSwId);
  Indicate(GetParam().unitId, GetParam().hwSwId, kUnPlugged);
  Indicate(GetParam().unitId, GetParam().hwSwId);
  EXPECT_EQ(Added(), GetParam().sensors);
}

INSTANTIATE_TEST_SUITE_P(
    Variants, UnitInBlackBoxTest,
    testing::Values(Unit{"Dax1Basic", 0x12, kBasic, NamesOf("DAX1")}, Unit{"Dax1M", 0x22, kM, NamesOf("DAX1", kMore)},
                    Unit{"Dax1P", 0x32, kP, NamesOf("DAX1")}, Unit{"Dax2Basic", 0x13, kBasic, NamesOf("DAX2")},
                    Unit{"Dax2M", 0x23, kM, NamesOf("DAX2", kMore)},
                    Unit{"Dax2P", 0x43, kP, NamesOf("DAX2", {"_VORNIK"})},
                    Unit{"Dax3Basic", 0x14, kBasic, NamesOf("DAX3")}, Unit{"Dax3M", 0x54, kM, NamesOf("DAX3", kMore)},
                    Unit{"Dax3P", 0x64, kP, NamesOf("DAX3", {"_VORNIK"})}),
    testing::PrintToStringParamName());

TEST_F(KelDaxBlackBoxTest, EveryStateButUnPluggedAddsTheNames) {
  for (const u32 state : {0u, 1u, 3u, 4u, 5u, 6u, 7u, 8u, 99u}) {
    Indicate(0x13, kBasic, kUnPlugged);
    Indicate(0x13, kBasic, state);
    EXPECT_EQ(Added(), NamesOf("DAX2")) << "state " << state;
    EXPECT_THAT(Removed(), IsEmpty()) << "state " << state;
  }
}

TEST_F(KelDaxBlackBoxTest, SwapForALargerUnitAddsWhatIsNew) {
  Indicate(0x12, kBasic);
  Indicate(0x12, kM);
  EXPECT_THAT(Added(), ElementsAre("DAX1_DSP7", "DAX1_DSP8", "DAX1_DSP9", "DAX1_VORNIK"));
}

TEST_F(KelDaxBlackBoxTest, SwapForASmallerUnitRemovesNothing) {
  Indicate(0x12, kM);
  Indicate(0x12, kBasic);
  EXPECT_THAT(Removed(), IsEmpty());
  EXPECT_EQ(m_group.GetNumberOfSensors(ETempSensorType_Dax1), 7u);
}

TEST_F(KelDaxBlackBoxTest, NamesLeftByASwapStayWhenTheSmallerUnitGoes) {
  Indicate(0x12, kM);
  Indicate(0x12, kBasic);
  Indicate(0x12, kBasic, kUnPlugged);
  EXPECT_EQ(Removed(), NamesOf("DAX1"));
}

TEST_F(KelDaxBlackBoxTest, UnpluggingRemovesTheNamesOfTheVariantThatTheIndicationTells) {
  Indicate(0x13, kM);
  Indicate(0x13, kP, kUnPlugged);
  EXPECT_EQ(Removed(), NamesOf("DAX2", {"_VORNIK"}));
  EXPECT_EQ(m_group.GetNumberOfSensors(ETempSensorType_Dax2), 0u);
}

TEST_F(KelDaxBlackBoxTest, UnpluggingAsALargerVariantAsksForAllOfItsNames) {
  Indicate(0x14, kBasic);
  Indicate(0x14, kM, kUnPlugged);
  const Names lines = fake::LogTexts(kDebug);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "BlackBoxData::removeSensor"), 11);
  EXPECT_EQ(Removed(), NamesOf("DAX3"));
}

TEST_F(KelDaxBlackBoxTest, UnpluggingOneUnitLeavesTheNamesOfTheOthers) {
  for (const u32 unitId : {0x12u, 0x13u, 0x14u}) Indicate(unitId, kBasic);
  Indicate(0x13, kBasic, kUnPlugged);
  EXPECT_EQ(Removed(), NamesOf("DAX2"));
  EXPECT_THAT(Added(), IsEmpty());
}

TEST_F(KelDaxBlackBoxTest, NamesAreRemovedBeforeTheUnplugIsLoggedAndTheListMadeAnew) {
  Indicate(0x23, kBasic);
  Indicate(0x23, kBasic, kUnPlugged);
  const std::vector<fake::LogLine> lines = fake::LogLines();
  ASSERT_EQ(lines.size(), 1u + 1 + 7 * 2 + 1 + 1);
  EXPECT_EQ(lines[1].text, "Dax2");
  EXPECT_EQ(lines[2].text, "BlackBoxData::removeSensor");
  EXPECT_EQ(lines[15].text, "BlackBoxData::removeSensor(): delete sensor DAX2_DSP6");
  EXPECT_EQ(lines[16].text, "Unit 0x23 unplugged");
  EXPECT_EQ(lines[17].text, "GetNumberOfSensors dax1'0' dax2'0' dax3'0'");
}

TEST_F(KelDaxBlackBoxTest, IndicationOfOneUnitAddsTheNamesOfAllThatArePresent) {
  Indicate(0x12, kBasic);
  Indicate(0x14, kBasic);
  for (const char* name : {"DAX1_MCU", "DAX3_DSP6"}) BlackBoxData::getInstance()->removeSensor(name);
  Indicate(0x13, kBasic);
  EXPECT_EQ(Added().size(), 9u);
  EXPECT_THAT(Added(), Contains("DAX1_MCU"));
  EXPECT_THAT(Added(), Contains("DAX3_DSP6"));
}

TEST_F(KelDaxBlackBoxTest, IndicationOfAnUndeterminedUnitAddsTheNamesOfAllThatArePresentToo) {
  Indicate(0x12, kBasic);
  BlackBoxData::getInstance()->removeSensor("DAX1_MCU");
  Indicate(0x15, kM, kUnPlugged);
  EXPECT_THAT(Added(), ElementsAre("DAX1_MCU"));
  EXPECT_THAT(Removed(), IsEmpty());
}

}  // namespace
}  // namespace ps::hwapi::common::climate
