/// Every board: whether it has a black box, and under which names its sensors and fans are in the trace file.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>

namespace ps::hwapi::common::climate {
namespace {

using testing::Contains;
using testing::Not;

/// Driver's devices by name of the sensor.
using Devices = std::map<std::string, u32>;

const Devices kNone;
const Devices kKelf = {{"KEL", 0x10001},        {"KEL_ENV", 0x10002}, {"KEL_INTAKE", 0x10004}, {"KEL_MCU", 0x10000},
                       {"KEL_VORNIK", 0x10003}, {"TOV_MCU", 0x50000}, {"TOV", 0x50001}};
const Devices kKel = {{"KEL", 0x10001},        {"KEL_ENV", 0x10002},  {"KEL_INTAKE", 0x10004}, {"KEL_MCU", 0x10000},
                      {"KEL_VORNIK", 0x10003}, {"KEL_OCXO", 0x10005}, {"TOV_MCU", 0x50000},    {"TOV", 0x50001}};
const Devices kPivo = {
    {"MCU", 0x70000},          {"CLK", 0x70001},       {"FAN", 0x70002},     {"ETH", 0x70003},
    {"OCXO", 0x70005},         {"DSP1", 0x70010},      {"DSP2", 0x70011},    {"DSP3", 0x70012},
    {"RFP1_RF_ASIC", 0x70021}, {"RFP1_PDRX", 0x70022}, {"RFP1_PA", 0x70023}, {"RFP1_RF_ASIC_PA", 0x70025},
    {"RFP2_RF_ASIC", 0x70031}, {"RFP2_PDRX", 0x70032}, {"RFP2_PA", 0x70033}, {"RFP2_RF_ASIC_PA", 0x70035},
    {"Filter", 0x70040},       {"PSU", 0x70041}};
const Devices kZun = {{"ZUN_MCU", 0x10007}};

/// A board.
struct Board {
  const char* name;
  u32 type;
  u32 version;
  bool hasBlackBox;
  const Devices& sensors;  ///< those that the black box knows
  u32 fans = 0;

  friend std::ostream& operator<<(std::ostream& out, const Board& board) { return out << board.name; }
};

const Board kBoards[] = {
    {"Kela", 9, 15, true, kKel, 2},           {"Kelb", 9, 16, true, kKel, 2},       {"Kelc", 9, 17, true, kKel, 2},
    {"Keld", 9, 18, true, kKel, 2},           {"Kele", 9, 31, false, kNone},        {"Kelbn", 9, 33, true, kNone, 2},
    {"Kelf", 9, 41, true, kKelf, 3},          {"Kelh", 9, 43, true, kKel, 0},       {"Kelg", 9, 58, true, kKel, 2},
    {"Pivoa", 10, 24, true, kPivo, 2},        {"Pivob", 10, 25, true, kPivo, 0},    {"Pivoc", 10, 38, true, kPivo, 2},
    {"Pivod", 10, 39, true, kPivo, 2},        {"Zun", 19, 51, true, kZun, 0},       {"Vyda", 11, 26, false, kNone},
    {"Vydj", 11, 27, false, kNone},           {"Vyea", 11, 28, false, kNone},       {"Vyga", 12, 30, false, kNone},
    {"UnknownVersion", 9, 0, true, kNone, 2}, {"UnknownUnit", 22, 0, false, kNone},
};

/// A service on a board whose sensors show the numbers of their devices, and whose fans turn at 3000, 3001, ...
class BlackBoxOfBoardTest : public ServiceOnBoardTest, public testing::WithParamInterface<Board> {
 protected:
  BlackBoxOfBoardTest() {
    fake::Unit().type = EUnitType{GetParam().type};
    for (const auto& [name, device] : GetParam().sensors) fake::SetTemperature(device, static_cast<int>(device));
    for (const u32 fan : {0u, 1u, 2u}) fake::SetFan(fan, {.rpm = static_cast<int>(3000 + fan)});
    Start(EUnitVersion{GetParam().version});
  }

  /// Asks for all measurements and for fan speeds, lets each timer expire, and asks for the files.
  static void MeasureAndStore() {
    for (u32 sensorType = 0; sensorType < 48; ++sensorType) {
      fake::Dispatch({.id = 0x2B29, .payload = Words({0, sensorType, 100000, 0, 0}), .sender = kRequester});
    }
    fake::Dispatch({.id = 0x2CF1, .payload = Words({7, 0, 8, 1, 201, 40}), .sender = kRequester});
    Pass(8'000'000);
    fake::Dispatch({.id = 0x43A2, .payload = Words({1}), .sender = kRequester});
  }

  static std::string Trace() { return fake::FileContent(kTraceFile).value_or("(no file)"); }

  BlackBoxBoard m_board;
};

TEST_P(BlackBoxOfBoardTest, IsThereOrNot) {
  EXPECT_EQ(BlackBoxData::getInstance()->isInitialized(), GetParam().hasBlackBox ? 1u : 0u);
}

TEST_P(BlackBoxOfBoardTest, DecidesOnTheHandlersOfResets) {
  for (const u32 id : {0x2C62u, 0x1134u, 0x08E6u, 0x1177u}) {
    if (GetParam().hasBlackBox) {
      EXPECT_THAT(fake::RegisteredIds(), Contains(id));
    } else {
      EXPECT_THAT(fake::RegisteredIds(), Not(Contains(id)));
    }
  }
}

TEST_P(BlackBoxOfBoardTest, LeavesTheStoreRequestsToEveryBoard) {
  EXPECT_THAT(fake::RegisteredIds(), Contains(0x43A2u));
  EXPECT_THAT(fake::RegisteredIds(), Contains(0x1302u));
}

TEST_P(BlackBoxOfBoardTest, HasEachReadingUnderItsName) {
  MeasureAndStore();
  if (!GetParam().hasBlackBox) {
    EXPECT_EQ(Trace(), "(no file)");
    return;
  }
  std::string sensors, values;
  for (const auto& [name, device] : GetParam().sensors) {
    sensors += name + "\t";
    values += std::to_string(device) + "\t";
  }
  std::string fans, speeds;
  for (u32 fan = 0; fan < GetParam().fans; ++fan) {
    fans += "GAR_FAN" + std::to_string(fan + 1) + "\t";
    speeds += std::to_string(3000 + fan) + "\t";
  }
  EXPECT_EQ(Trace(), "#MINMAX: Minimum and maximum measured temperatures\n#\t" + sensors + "\nMIN:\t" + values +
                         "\nMAX:\t" + values + "\n\n#TEMPANDSPEED: temperatures and fan speeds\n#" +
                         std::string(18, ' ') + "\t" + sensors + fans + "\n2024-06-15T12:00:08.000Z\t" + values +
                         speeds + "\n");
}

TEST_P(BlackBoxOfBoardTest, NeverMissesAName) {
  MeasureAndStore();
  for (const std::string& line : fake::LogTexts(EAaSysLogSeverityLevel_Error)) {
    EXPECT_EQ(line.find("not found"), std::string::npos) << line;
  }
}

INSTANTIATE_TEST_SUITE_P(Board, BlackBoxOfBoardTest, testing::ValuesIn(kBoards),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace ps::hwapi::common::climate
