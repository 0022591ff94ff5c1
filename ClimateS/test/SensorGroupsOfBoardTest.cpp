/// Which groups the board of each unit version has, and which sensor type addresses which.
#include "ServiceOnBoard.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

/// A sensor type and what its group has.
struct TypedGroup {
  u32 sensorType;
  u32 sensors;
  u32 firstDevice = 0;  ///< of the first sensor
};

struct Board {
  const char* name;
  std::vector<EUnitVersion> versions;
  std::vector<TypedGroup> groups;
  bool feedsPsuSpi = false;
  std::vector<std::string> namesInBlackBox = {};  ///< of sensors, in the order in which the black box learns them
};

const Board kBoards[] = {
    {.name = "Kel",
     .versions = {EUnitVersion{15}, EUnitVersion{16}, EUnitVersion{17}, EUnitVersion{18}, EUnitVersion{43},
                  EUnitVersion{58}},
     .groups = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {6, 5, 0x10000}, {7, 1, 0x10005}, {8, 2, 0x50000}},
     .namesInBlackBox = {"KEL_MCU", "KEL", "KEL_ENV", "KEL_VORNIK", "KEL_INTAKE", "KEL_OCXO", "TOV_MCU", "TOV"}},
    {.name = "Kelf",
     .versions = {EUnitVersion{41}},
     .groups = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {6, 5, 0x10000}, {8, 2, 0x50000}},
     .namesInBlackBox = {"KEL_MCU", "KEL", "KEL_ENV", "KEL_VORNIK", "KEL_INTAKE", "TOV_MCU", "TOV"}},
    {.name = "Kele",
     .versions = {EUnitVersion{31}},
     .groups = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {6, 5, 0x10000}, {7, 1, 0x10005}, {14, 1, 0x80006}}},
    {.name = "Vyg",
     .versions = {EUnitVersion{24}, EUnitVersion{25}, EUnitVersion{30}, EUnitVersion{38}, EUnitVersion{39}},
     .groups = {{1, 3, 0x70010},
                {2, 3, 0x70010},
                {3, 3, 0x70010},
                {4, 3, 0x70010},
                {6, 4, 0x70000},
                {7, 1, 0x70005},
                {9, 4, 0x70021},
                {10, 4, 0x70031},
                {12, 1, 0x70040},
                {13, 1, 0x70041}},
     .feedsPsuSpi = true,
     .namesInBlackBox = {"MCU", "CLK", "FAN", "ETH", "OCXO", "DSP1", "DSP2", "DSP3", "RFP1_RF_ASIC", "RFP1_PDRX",
                         "RFP1_PA", "RFP1_RF_ASIC_PA", "RFP2_RF_ASIC", "RFP2_PDRX", "RFP2_PA", "RFP2_RF_ASIC_PA",
                         "Filter", "PSU"}},
    {.name = "Vyd",
     .versions = {EUnitVersion{26}, EUnitVersion{27}, EUnitVersion{28}},
     .groups = {{1, 2, 0x60010},
                {2, 2, 0x60010},
                {3, 2, 0x60010},
                {4, 2, 0x60010},
                {6, 6, 0x60000},
                {7, 1, 0x60006},
                {9, 4, 0x60022},
                {10, 4, 0x60032},
                {11, 4, 0x60042}}},
    {.name = "Zun", .versions = {EUnitVersion{51}}, .groups = {{6, 1, 0x10007}}, .namesInBlackBox = {"ZUN_MCU"}},
    {.name = "Unsupported",
     .versions = {EUnitVersion{0}, EUnitVersion{14}, EUnitVersion{29}, EUnitVersion{32}, EUnitVersion{33},
                  EUnitVersion{40}, EUnitVersion{42}, EUnitVersion{57}, EUnitVersion{59}},
     .groups = {}},
};

/// A board with one of its unit versions.
struct BoardVersion {
  const Board* board;
  EUnitVersion version;

  friend std::ostream& operator<<(std::ostream& out, const BoardVersion& row) {
    return out << row.board->name << " version " << u32{row.version};
  }
};

std::vector<BoardVersion> EveryVersion() {
  std::vector<BoardVersion> rows;
  for (const Board& board : kBoards) {
    for (const EUnitVersion version : board.versions) rows.push_back({&board, version});
  }
  return rows;
}

class SensorGroupsOfBoardTest : public ServiceOnBoardTest, public testing::WithParamInterface<BoardVersion> {
 protected:
  const Board& TheBoard() const { return *GetParam().board; }

  /// @return the names of sensors that the black box has learnt, in that order
  static std::vector<std::string> NamesInBlackBox() {
    constexpr std::string_view kLearnt = "BlackBoxData::addSensor(): sensor ";
    std::vector<std::string> names;
    for (const std::string& text : fake::LogTexts(EAaSysLogSeverityLevel_Debug)) {
      if (text.starts_with(kLearnt)) names.push_back(text.substr(kLearnt.size()));
    }
    return names;
  }

  bool HasGroupFor(u32 sensorType) const {
    return std::ranges::find(TheBoard().groups, sensorType, &TypedGroup::sensorType) != TheBoard().groups.end();
  }
};

TEST_P(SensorGroupsOfBoardTest, OnlyTheTypesOfItsGroupsAreAnswered) {
  Start(GetParam().version);
  for (u32 sensorType = 0; sensorType <= 45; ++sensorType) {
    fake::ClearSentMessages();
    const fake::Message response =
        AnswerTo({.id = 0x2B29, .payload = Words({1, sensorType, 0, 0, 0}), .sender = kRequester}, 0x2B2A);
    EXPECT_EQ(WordAt(response, 8), HasGroupFor(sensorType) ? 0u : 3u) << "type " << sensorType;
  }
}

TEST_P(SensorGroupsOfBoardTest, EachTypeReadsTheSensorsOfItsGroup) {
  Start(GetParam().version);
  for (const TypedGroup& group : TheBoard().groups) {
    Forget();
    const fake::Message indication = AnswerTo({.id = 0x203F, .payload = Words({group.sensorType})}, 0x2B2B);
    EXPECT_EQ(WordAt(indication, 4), group.sensors) << "type " << group.sensorType;
    const std::vector<fake::Call> reads = fake::Calls("ddal_temp_get_curr");
    const std::int64_t firstDevice = reads.empty() ? 0 : reads.front().arguments[0].Number();
    EXPECT_EQ(firstDevice, group.firstDevice) << "type " << group.sensorType;
  }
}

TEST_P(SensorGroupsOfBoardTest, ThreadThatFeedsThePsuSpiIsStartedWhereItIsNeeded) {
  Start(GetParam().version);
  const auto feeders = std::ranges::count(fake::StartedThreads(), "PsuSpiPoller", &fake::StartedThread::name);
  EXPECT_EQ(feeders, TheBoard().feedsPsuSpi ? 1 : 0);
}

TEST_P(SensorGroupsOfBoardTest, BlackBoxLearnsTheNamesOfAllSensorsInTheirOrderOrNone) {
  fake::Unit().version = GetParam().version;
  m_service.emplace().Init();
  EXPECT_EQ(NamesInBlackBox(), TheBoard().namesInBlackBox);
}

TEST_P(SensorGroupsOfBoardTest, UnsupportedVersionIsLoggedOnce) {
  fake::Unit().version = GetParam().version;
  m_service.emplace().Init();
  const auto lines = fake::LogTexts(EAaSysLogSeverityLevel_Error);
  const auto isOurs = [](const std::string& text) { return text.starts_with("HWAPI_TEMPERATURE_SERVICE"); };
  EXPECT_EQ(std::ranges::count_if(lines, isOurs), TheBoard().groups.empty() ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Versions, SensorGroupsOfBoardTest, testing::ValuesIn(EveryVersion()), [](const auto& test) {
  return test.param.board->name + std::to_string(u32{test.param.version});
});

using UnsupportedBoardTest = ServiceOnBoardTest;

TEST_F(UnsupportedBoardTest, ErrorTellsTheVersionInDecimalAndHexadecimal) {
  fake::Unit().version = EUnitVersion_Kelbn;
  m_service.emplace().Init();
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "HWAPI_TEMPERATURE_SERVICE is running on a unsupported unit version: 33 (0x21). Sensors are "
                           "not initialized"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
