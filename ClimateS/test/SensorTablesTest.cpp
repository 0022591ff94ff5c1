/// The sensors of every fixed group: name, code and driver device, in the order in which they are reported.
#include "ServiceOnBoard.h"

#include <ostream>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

struct Row {
  const char* text;
  u32 code;
  u32 device;
};

struct Table {
  const char* group;
  EUnitVersion version;  ///< a board that has the group
  u32 sensorType;        ///< what addresses it there
  std::vector<Row> rows;

  friend std::ostream& operator<<(std::ostream& out, const Table& table) { return out << table.group; }
};

const Table kTables[] = {
    {"KelKel",
     EUnitVersion_Kela,
     6,
     {{"KEL_MCU", 6, 0x10000},
      {"KEL", 7, 0x10001},
      {"KEL_ENV", 8, 0x10002},
      {"KEL_VORNIK", 9, 0x10003},
      {"KEL_INTAKE", 10, 0x10004}}},
    {"KelOcxo", EUnitVersion_Kela, 7, {{"KEL_OCXO", 11, 0x10005}}},
    {"KelTov", EUnitVersion_Kela, 8, {{"TOV_MCU", 33, 0x50000}, {"TOV", 34, 0x50001}}},
    {"KelOcxoDcm", EUnitVersion_Kele, 14, {{"KEL_OCXO_DCM", 57, 0x80006}}},
    {"KelZun", EUnitVersion_Zun, 6, {{"ZUN_MCU", 233, 0x10007}}},
    {"VydKel",
     EUnitVersion_Vyda,
     6,
     {{"MCU", 6, 0x60000},
      {"MCU_ENV", 48, 0x60001},
      {"MIPO", 49, 0x60002},
      {"MIPO_ENV", 50, 0x60003},
      {"VORNIK", 9, 0x60004},
      {"VORNIK_ENV", 51, 0x60005}}},
    {"VydOcxo", EUnitVersion_Vyda, 7, {{"OCXO", 11, 0x60006}}},
    {"VydDax", EUnitVersion_Vyda, 1, {{"DSP", 13, 0x60010}, {"DSP_ENV", 52, 0x60011}}},
    {"VydRfp1",
     EUnitVersion_Vyda,
     9,
     {{"RFP1_RF_ASIC", 35, 0x60022},
      {"RFP1_PDRX", 36, 0x60024},
      {"RFP1_PA", 37, 0x60025},
      {"RFP1_RF_ASIC_ENV", 53, 0x60023}}},
    {"VydRfp2",
     EUnitVersion_Vyda,
     10,
     {{"RFP2_RF_ASIC", 39, 0x60032},
      {"RFP2_PDRX", 40, 0x60034},
      {"RFP2_PA", 41, 0x60035},
      {"RFP2_RF_ASIC_ENV", 54, 0x60033}}},
    {"VydRfp3",
     EUnitVersion_Vyda,
     11,
     {{"RFP3_RF_ASIC", 43, 0x60042},
      {"RFP3_PDRX", 44, 0x60044},
      {"RFP3_PA", 45, 0x60045},
      {"RFP3_RF_ASIC_ENV", 55, 0x60043}}},
    {"VygKel",
     EUnitVersion_Vyga,
     6,
     {{"MCU", 6, 0x70000}, {"CLK", 7, 0x70001}, {"FAN", 10, 0x70002}, {"ETH", 8, 0x70003}}},
    {"VygOcxo", EUnitVersion_Vyga, 7, {{"OCXO", 11, 0x70005}}},
    {"VygDax", EUnitVersion_Vyga, 1, {{"DSP1", 13, 0x70010}, {"DSP2", 14, 0x70011}, {"DSP3", 15, 0x70012}}},
    {"VygRfp1",
     EUnitVersion_Vyga,
     9,
     {{"RFP1_RF_ASIC", 35, 0x70021},
      {"RFP1_PDRX", 36, 0x70022},
      {"RFP1_PA", 37, 0x70023},
      {"RFP1_RF_ASIC_PA", 38, 0x70025}}},
    {"VygRfp2",
     EUnitVersion_Vyga,
     10,
     {{"RFP2_RF_ASIC", 39, 0x70031},
      {"RFP2_PDRX", 40, 0x70032},
      {"RFP2_PA", 41, 0x70033},
      {"RFP2_RF_ASIC_PA", 42, 0x70035}}},
    {"VygFilter", EUnitVersion_Vyga, 12, {{"Filter", 47, 0x70040}}},
    {"VygPsu", EUnitVersion_Vyga, 13, {{"PSU", 56, 0x70041}}},
};

class SensorTablesTest : public ServiceOnBoardTest, public testing::WithParamInterface<Table> {
 protected:
  SensorTablesTest() {
    Start(GetParam().version);
    for (u32 rf = 0; rf < 3; ++rf) {
      fake::SetRfAsic(rf, 1);
      fake::SetRfChain(rf, 1);
    }
  }

  const std::vector<Row>& Rows() const { return GetParam().rows; }

  /// Lets the service read the group. Sensor number i shows i + 1 degrees.
  fake::Message Poll() {
    int degrees = 0;
    for (const Row& row : Rows()) fake::SetTemperature(row.device, ++degrees * 1000);
    return AnswerTo({.id = 0x203F, .payload = Words({GetParam().sensorType}), .sender = kOtherClient}, 0x2B2B);
  }
};

TEST_P(SensorTablesTest, GroupHasThatManySensors) {
  const fake::Message indication = Poll();
  EXPECT_EQ(WordAt(indication, 4), Rows().size());
  EXPECT_EQ(indication.payload.size(), 8 + 32 * Rows().size());
}

TEST_P(SensorTablesTest, CodesAreReportedInOrder) {
  const fake::Message indication = Poll();
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    EXPECT_EQ(WordAt(indication, 8 + 32 * i), Rows()[i].code) << Rows()[i].text;
  }
}

TEST_P(SensorTablesTest, EachCodeIsReadFromItsDevice) {
  const auto indication = Poll().As<std::array<u32, 2 + 8 * 6>>();
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    EXPECT_EQ(std::bit_cast<float>(indication[2 + 8 * i + 1]), static_cast<float>(i + 1)) << Rows()[i].text;
  }
}

TEST_P(SensorTablesTest, SensorsAreLoggedUnderTheirNames) {
  Poll();
  int degrees = 0;
  for (const Row& row : Rows()) {
    EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "Temperature read from sensor: " + std::string(row.text) +
                                                               " (" + std::to_string(row.code) + ") temperature " +
                                                               std::to_string(++degrees) + ".00"));
  }
}

INSTANTIATE_TEST_SUITE_P(Groups, SensorTablesTest, testing::ValuesIn(kTables),
                         [](const auto& test) { return test.param.group; });

}  // namespace
}  // namespace ps::hwapi::common::climate
