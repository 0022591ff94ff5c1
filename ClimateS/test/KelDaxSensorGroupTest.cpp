/// The sensors of the plug-in processing units: their list, its parts by sensor type, and a timer for each type.
#include "KelDaxSensorGroup.h"
#include "ServiceOnBoard.h"

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kReady = 0;
constexpr u32 kUnPlugged = 2;
constexpr u32 kBasic = 0;
constexpr u32 kM = 0x0C000;
constexpr u32 kP = 0x11000;

class KelDaxSensorGroupTest : public fake::PlatformTest {
 protected:
  /// Plugs units in, by slot from 1.
  void Plug(u32 slot, u32 hwSwId, u32 state = kReady) { m_group.HandleAutodetUnitInd(hwSwId, 0x11 + slot, state); }
  void Unplug(u32 slot) { Plug(slot, kBasic, kUnPlugged); }

  u32 CountOf(u32 sensorType) { return m_group.GetNumberOfSensors(ETempSensorType{sensorType}); }
  /// Number of sensors of the types Dax1, Dax2, Dax3 and DaxAll.
  std::vector<u32> Counts() { return {CountOf(1), CountOf(2), CountOf(3), CountOf(4)}; }

  /// @return the codes that a read for that type reports
  std::vector<u32> CodesOf(u32 sensorType) {
    std::vector<STempMeasInfo> entries(CountOf(sensorType));
    m_group.Read(entries.data());
    std::vector<u32> codes;
    for (const STempMeasInfo& entry : entries) codes.push_back(entry.unit_name);
    return codes;
  }

  int Activate(u32 sensorType, u32 interval = 1000) {
    return m_group.ActivateTimer(ETempSensorType{sensorType}, kOtherClient, interval);
  }
  int Deactivate(u32 sensorType) { return m_group.DeactivateTimer(ETempSensorType{sensorType}); }

  KelDaxSensorGroup m_group;
};

TEST_F(KelDaxSensorGroupTest, HasNoSensorsWithoutUnits) { EXPECT_EQ(Counts(), (std::vector<u32>{0, 0, 0, 0})); }

TEST_F(KelDaxSensorGroupTest, ReadsNothingBeforeItsNumberOfSensorsIsAsked) {
  m_group.Read(nullptr);
  EXPECT_TRUE(fake::Calls("ddal_temp_get_curr").empty());
}

TEST_F(KelDaxSensorGroupTest, CountsTheSensorsOfEachSlotAndOfAll) {
  Plug(1, kBasic);
  Plug(2, kP);
  Plug(3, kM);
  EXPECT_EQ(Counts(), (std::vector<u32>{7, 8, 11, 26}));
}

TEST_F(KelDaxSensorGroupTest, HoldsThreeLargeUnits) {
  for (const u32 slot : {1u, 2u, 3u}) Plug(slot, kM);
  EXPECT_EQ(Counts(), (std::vector<u32>{11, 11, 11, 33}));
  EXPECT_EQ(CodesOf(4).back(), 69u);
}

TEST_F(KelDaxSensorGroupTest, ReadsTheSensorsOfOneSlot) {
  Plug(1, kBasic);
  Plug(3, kM);
  EXPECT_EQ(CodesOf(1), (std::vector<u32>{12, 13, 14, 15, 16, 17, 18}));
  EXPECT_EQ(CodesOf(3), (std::vector<u32>{26, 27, 28, 29, 30, 31, 32, 64, 65, 66, 69}));
}

TEST_F(KelDaxSensorGroupTest, ReadsTheSensorsOfASlotBehindThoseOfTheSlotsBeforeIt) {
  Plug(1, kBasic);
  Plug(2, kP);
  EXPECT_EQ(CodesOf(2), (std::vector<u32>{19, 20, 21, 22, 23, 24, 25, 68}));
  Plug(3, kM);
  EXPECT_EQ(CodesOf(1), (std::vector<u32>{12, 13, 14, 15, 16, 17, 18}));
  EXPECT_EQ(CodesOf(2), (std::vector<u32>{19, 20, 21, 22, 23, 24, 25, 68}));
  EXPECT_EQ(CodesOf(3), (std::vector<u32>{26, 27, 28, 29, 30, 31, 32, 64, 65, 66, 69}));
}

TEST_F(KelDaxSensorGroupTest, ReadsTheSensorsOfAllSlotsInTheirOrder) {
  Plug(3, kM);
  Plug(1, kBasic);
  EXPECT_EQ(CodesOf(4), (std::vector<u32>{12, 13, 14, 15, 16, 17, 18, 26, 27, 28, 29, 30, 31, 32, 64, 65, 66, 69}));
}

TEST_F(KelDaxSensorGroupTest, ReadsSensorsFromTheirDevices) {
  Plug(2, kP);
  for (u32 i = 0; i < 7; ++i) fake::SetTemperature(0x30000 + i, 1000);
  fake::SetTemperature(0x3000A, 8500);
  std::vector<STempMeasInfo> entries(CountOf(2));
  m_group.Read(entries.data());
  ASSERT_EQ(entries.size(), 8u);
  EXPECT_FLOAT_EQ(entries[0].unit_temp[0], 1.0f);
  EXPECT_FLOAT_EQ(entries[7].unit_temp[0], 8.5f);
}

TEST_F(KelDaxSensorGroupTest, OtherTypesHaveNoSensors) {
  Plug(1, kBasic);
  for (const u32 sensorType : {0u, 5u, 6u, 44u}) {
    EXPECT_EQ(CountOf(4), 7u);
    EXPECT_TRUE(CodesOf(sensorType).empty()) << sensorType;
  }
}

TEST_F(KelDaxSensorGroupTest, UnpluggedUnitLeavesTheList) {
  for (const u32 slot : {1u, 2u, 3u}) Plug(slot, kBasic);
  Unplug(2);
  EXPECT_EQ(Counts(), (std::vector<u32>{7, 0, 7, 14}));
  EXPECT_EQ(CodesOf(4)[7], 26u);
  EXPECT_EQ(CodesOf(3)[0], 26u);
}

TEST_F(KelDaxSensorGroupTest, UnitThatComesBackAsAnotherVariantHasItsSensors) {
  Plug(2, kM);
  Unplug(2);
  Plug(2, kP);
  EXPECT_EQ(CodesOf(2), (std::vector<u32>{19, 20, 21, 22, 23, 24, 25, 68}));
}

TEST_F(KelDaxSensorGroupTest, IndicationIsLogged) {
  m_group.HandleAutodetUnitInd(0x0C000, 0x15, 7);
  EXPECT_EQ(fake::LogLines().at(0),
            (fake::LogLine{EAaSysLogSeverityLevel_Info, 131143,
                           "KelDaxSensorGroup::HandleAutodetUnitInd hw_sw_id'49152' unit_id'21' "
                           "autodetectionState'7'"}));
}

TEST_F(KelDaxSensorGroupTest, IndicationMakesTheListAnew) {
  Plug(1, kBasic);
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Info).back(), "GetNumberOfSensors dax1'7' dax2'0' dax3'0'");
}

TEST_F(KelDaxSensorGroupTest, IndicationOfAnUndeterminedUnitMakesTheListAnewToo) {
  m_group.HandleAutodetUnitInd(0, 0x15, kReady);
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Info).back(), "GetNumberOfSensors dax1'0' dax2'0' dax3'0'");
}

TEST_F(KelDaxSensorGroupTest, EachCountIsLoggedWhateverTheType) {
  Plug(1, kBasic);
  Plug(2, kP);
  Plug(3, kM);
  fake::ClearLog();
  CountOf(6);
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Info),
            std::vector<std::string>{"GetNumberOfSensors dax1'7' dax2'8' dax3'11'"});
}

TEST_F(KelDaxSensorGroupTest, EachEntryOfTheListIsLoggedBeforeTheCounts) {
  Plug(1, kBasic);
  Plug(3, kBasic);
  fake::ClearLog();
  CountOf(1);
  const std::vector<fake::LogLine> lines = fake::LogLines();
  ASSERT_EQ(lines.size(), 15u);
  EXPECT_EQ(lines[0].text, "InitTables m_addresses'131072' m_names'12' m_namesStr'DAX1_MCU'");
  EXPECT_EQ(lines[13].text, "InitTables m_addresses'262150' m_names'32' m_namesStr'DAX3_DSP6'");
  EXPECT_EQ(lines[13].level, EAaSysLogSeverityLevel_Debug);
  EXPECT_EQ(lines[14].text, "GetNumberOfSensors dax1'7' dax2'0' dax3'7'");
}

TEST_F(KelDaxSensorGroupTest, EachTypeHasATimerOfItsOwn) {
  for (const u32 sensorType : {1u, 2u, 3u, 4u}) EXPECT_EQ(Activate(sensorType, 1000 + sensorType), 0) << sensorType;
  ASSERT_EQ(fake::Timers().size(), 4u);
  for (u32 i = 0; i < 4; ++i) {
    EXPECT_EQ(fake::Timers()[i].message.payload, Words({i + 1}));
    EXPECT_EQ(fake::Timers()[i].periodUs, 1000000 + 1000 * (i + 1));
  }
}

TEST_F(KelDaxSensorGroupTest, SecondStartOfAnyTypeIsRefused) {
  for (const u32 sensorType : {1u, 2u, 3u, 4u}) Activate(sensorType);
  for (const u32 sensorType : {1u, 2u, 3u, 4u}) EXPECT_EQ(Activate(sensorType), 6) << sensorType;
  EXPECT_EQ(fake::Timers().size(), 4u);
}

TEST_F(KelDaxSensorGroupTest, StopOfATypeLeavesTheOthersRunning) {
  for (const u32 sensorType : {1u, 2u, 3u, 4u}) Activate(sensorType);
  EXPECT_EQ(Deactivate(2), 0);
  EXPECT_EQ(fake::Timers().size(), 3u);
  EXPECT_EQ(Activate(2), 0);
  EXPECT_EQ(Activate(4), 6);
}

TEST_F(KelDaxSensorGroupTest, OtherTypesHaveNoTimer) {
  Activate(1);
  for (const u32 sensorType : {0u, 5u, 6u, 44u}) {
    EXPECT_EQ(Activate(sensorType), 3) << sensorType;
    EXPECT_EQ(Deactivate(sensorType), 0) << sensorType;
  }
  EXPECT_EQ(fake::Timers().size(), 1u);
}

TEST_F(KelDaxSensorGroupTest, IntervalIsCheckedAsForAnyGroup) {
  EXPECT_EQ(Activate(1, 899), 5);
  EXPECT_EQ(Activate(1, 900), 0);
}

class PluggableUnitsTest : public ServiceOnBoardTest {
 protected:
  PluggableUnitsTest() { Start(EUnitVersion_Kela); }

  /// Tells the service of a unit as the autodetection service does.
  void Indicate(u32 unitId, u32 hwSwId, u32 state = kReady) {
    std::vector<u32> words(21);
    words[0] = state;
    words[1] = unitId;
    words[3] = hwSwId;
    const fake::ReceivedMessage received({.id = 0x0BBE, .payload = Words(words)});
    m_service->HandleAutodetUnitInd(received);
  }

  static fake::Message Poll(u32 sensorType) {
    Forget();
    return AnswerTo({.id = 0x203F, .payload = Words({sensorType}), .sender = kOtherClient}, 0x2B2B);
  }
};

TEST_F(PluggableUnitsTest, StartForAnEmptySlotIsAcceptedAndReportsNoSensors) {
  const fake::Message response =
      AnswerTo({.id = 0x2B29, .payload = Words({0, 2, 1000, 0, 0}), .sender = kRequester}, 0x2B2A);
  EXPECT_EQ(response.payload, Words({0, 2, 0}));
  Pass(1);
  const auto indications = fake::SentMessages(0x2B2B);
  ASSERT_EQ(indications.size(), 1u);
  EXPECT_EQ(indications[0].payload, Words({2, 0}));
}

TEST_F(PluggableUnitsTest, IndicationsReportTheUnitsOfTheirType) {
  Indicate(0x12, kBasic);
  Indicate(0x64, kM);
  EXPECT_EQ(WordAt(Poll(1), 4), 7u);
  EXPECT_EQ(WordAt(Poll(3), 8), 26u);
  EXPECT_EQ(WordAt(Poll(4), 4), 18u);
  EXPECT_EQ(WordAt(Poll(2), 4), 0u);
}

TEST_F(PluggableUnitsTest, IndicationOfThreeLargeUnitsHoldsThemAll) {
  for (const u32 unitId : {0x12u, 0x13u, 0x14u}) Indicate(unitId, kM);
  const fake::Message indication = Poll(4);
  EXPECT_EQ(indication.payload.size(), 1064u);
  EXPECT_EQ(WordAt(indication, 8 + 32 * 32), 69u);
}

TEST_F(PluggableUnitsTest, IndicationOfOneUnitReadsItsOwnDevicesBesideOtherUnits) {
  for (const u32 unitId : {0x12u, 0x13u, 0x14u}) Indicate(unitId, kBasic);
  for (const u32 board : {2u, 3u, 4u}) {
    Poll(board - 1);
    std::vector<fake::Call> reads;
    for (u32 i = 0; i < 7; ++i) reads.emplace_back("ddal_temp_get_curr", board << 16 | i);
    EXPECT_EQ(fake::Calls("ddal_temp_get_curr"), reads);
  }
}

TEST_F(PluggableUnitsTest, RunningMeasurementFollowsUnitsThatComeAndGo) {
  fake::Dispatch({.id = 0x2B29, .payload = Words({0, 4, 1000, 0, 0}), .sender = kRequester});
  Pass(1);
  Indicate(0x12, kM);
  Pass(1000000);
  Indicate(0x12, kM, kUnPlugged);
  Pass(1000000);
  std::vector<u32> counts;
  for (const fake::Message& indication : fake::SentMessages(0x2B2B)) counts.push_back(WordAt(indication, 4));
  EXPECT_EQ(counts, (std::vector<u32>{0, 11, 0}));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
