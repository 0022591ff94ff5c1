// What a description says and what its gaps mean.
#include "BoardDescription.h"
#include "TestBoard.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace hwapi::board;

namespace {

class BoardDescriptionTest : public testing::Test {
 protected:
  BoardDescription Read(const std::string& toml) {
    m_board.Describe(toml);
    return Load(m_board.Description());
  }

  TestBoard m_board;
};

TEST_F(BoardDescriptionTest, AnEmptyFileIsABoardOfDefaults) {
  const BoardDescription board = Read("");
  EXPECT_EQ(board.unit.type, EUnitType_Unknown);
  EXPECT_EQ(board.unit.version, EUnitVersion_Unallocated);
  EXPECT_EQ(board.node.board, 1);
  EXPECT_EQ(board.clock.speed, 1u);
  EXPECT_FALSE(board.clock.startMs);
  EXPECT_TRUE(board.temperatures.empty());
  EXPECT_FALSE(board.backplaneType);
}

TEST_F(BoardDescriptionTest, TheUnitHasTheNumbersOfItsNames) {
  const Unit unit = Read("[unit]\ntype = 'Pivo'\nversion = 'Pivod'\nproduct_code = 'P'\nserial_number = 'S'").unit;
  EXPECT_EQ(unit.type, EUnitType_Pivo);
  EXPECT_EQ(unit.version, EUnitVersion_Pivod);
  EXPECT_EQ(unit.productCode, "P");
  EXPECT_EQ(unit.serialNumber, "S");
}

TEST_F(BoardDescriptionTest, ATypeAndAVersionThatDoNotBelongTogetherAreAllowed) {
  EXPECT_EQ(Read("[unit]\ntype = 'Zun'\nversion = 'Kela'").unit.version, EUnitVersion_Kela);
}

TEST_F(BoardDescriptionTest, TheNodeIsRead) {
  const Node node = Read("[node]\nboard = 0\ncpu = 255").node;
  EXPECT_EQ(node.board, 0);
  EXPECT_EQ(node.cpu, 255);
}

TEST_F(BoardDescriptionTest, TheSoftwareBuildsAndTheLastResetAreRead) {
  const Boot boot = Read("[boot]\nreset_type = 7\nfs1_build = 'R2_4.1'\nfs2_build = 'R2_4.0'").boot;
  EXPECT_EQ(boot.resetType, 7u);
  EXPECT_EQ(boot.fs1Build, "R2_4.1");
  EXPECT_EQ(boot.fs2Build, "R2_4.0");
}

TEST_F(BoardDescriptionTest, TheClocksStartIsTheInstantInUtc) {
  const Clock clock = Read("[clock]\nspeed = 86400\nstart = 1970-01-02T01:00:00.250+01:00").clock;
  EXPECT_EQ(clock.speed, 86400u);
  EXPECT_EQ(clock.startMs, 86'400'250);
}

TEST_F(BoardDescriptionTest, AStartBeyond2038IsKept) {
  EXPECT_EQ(Read("[clock]\nstart = 2100-01-01T00:00:00Z").clock.startMs, 4'102'444'800'000);
}

TEST_F(BoardDescriptionTest, SendersAreUsersAndGroups) {
  const std::vector<std::string> expected = {"root", "group:hwapi"};
  EXPECT_EQ(Read("[access]\nsend = ['root', 'group:hwapi']").access.send, expected);
}

TEST_F(BoardDescriptionTest, FoldersWhoseFilesMayBeStored) {
  EXPECT_TRUE(Read("[access]\nsend = []").access.store.empty());
  EXPECT_EQ(Read("[access]\nstore = ['/var/log', '/srv']").access.store,
            (std::vector<std::string>{"/var/log", "/srv"}));
}

TEST_F(BoardDescriptionTest, ATextTagHoldsItsBytes) {
  EXPECT_EQ(Read("[tags]\n\"app.file\" = \"/ffs/x\"").tags.at("app.file"), "/ffs/x");
}

TEST_F(BoardDescriptionTest, ANumberTagHoldsFourBytesInTheHostsOrder) {
  const std::string bytes = Read("[tags]\n\"app.state\" = 0x01020306").tags.at("app.state");
  u32 value = 0;
  ASSERT_EQ(bytes.size(), sizeof value);
  std::memcpy(&value, bytes.data(), sizeof value);
  EXPECT_EQ(value, 0x01020306u);
}

TEST_F(BoardDescriptionTest, RadIdsAreHexadecimalOrDecimal) {
  const auto rad = Read("[rad]\n\"0x200B5\" = 24\n\"17\" = 1").rad;
  EXPECT_EQ(rad.at(0x200B5), 24u);
  EXPECT_EQ(rad.at(17), 1u);
}

TEST_F(BoardDescriptionTest, ASensorOnAChipIsRead) {
  const auto sensors = Read(
                           "[[temperature]]\ndevice = 0x10000\nhwmon = { chip = 'lm75', at = '3-0048', input = 'temp1' "
                           "}\noptional = true")
                           .temperatures;
  ASSERT_EQ(sensors.size(), 1u);
  const auto& hwmon = std::get<HwmonTemperature>(sensors[0].source);
  EXPECT_EQ(sensors[0].device, 0x10000u);
  EXPECT_TRUE(sensors[0].optional);
  EXPECT_EQ(sensors[0].line, 1u);
  EXPECT_EQ(hwmon.chip, "lm75");
  EXPECT_EQ(hwmon.at, "3-0048");
  EXPECT_EQ(hwmon.input, "temp1");
  EXPECT_EQ(hwmon.deadlineMs, 100u);
}

TEST_F(BoardDescriptionTest, ASimulatedSensorIsRead) {
  const auto sensors = Read("[[temperature]]\ndevice = 1\nsim = { base = 41, load = 12.5, seed = 7 }").temperatures;
  ASSERT_EQ(sensors.size(), 1u);
  const auto& sim = std::get<SimTemperature>(sensors[0].source);
  EXPECT_EQ(sim.base, 41.0);
  EXPECT_EQ(sim.load, 12.5);
  EXPECT_EQ(sim.seed, 7u);
  EXPECT_FALSE(sensors[0].optional);
}

TEST_F(BoardDescriptionTest, FansAreRead) {
  const auto fans = Read(
                        "[[fan]]\nid = 0\nhwmon = { chip = 'c', fan = 'fan1', pwm = 'pwm2', deadline_ms = 250 "
                        "}\n[[fan]]\nid = 1\nsim = { max_rpm = 7 }")
                        .fans;
  ASSERT_EQ(fans.size(), 2u);
  EXPECT_EQ(std::get<HwmonFan>(fans[0].source).pwm, "pwm2");
  EXPECT_EQ(std::get<HwmonFan>(fans[0].source).deadlineMs, 250u);
  EXPECT_EQ(std::get<SimFan>(fans[1].source).maxRpm, 7u);
}

TEST_F(BoardDescriptionTest, AnRfPartIsEnabledUnlessItSaysOtherwise) {
  const auto parts = Read("[[rf]]\nindex = 0\n[[rf]]\nindex = 2\nregister = 0\nchain = 3").rf;
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_EQ(parts[0].registerValue, 1u);
  EXPECT_EQ(parts[0].chainStatus, 1u);
  EXPECT_EQ(parts[1].registerValue, 0u);
  EXPECT_EQ(parts[1].chainStatus, 3u);
}

TEST_F(BoardDescriptionTest, TheDescriptionOfTheEnvironmentComesFirst) {
  EXPECT_EQ(DescriptionPath(), m_board.Description());
}

TEST_F(BoardDescriptionTest, TheRunFoldersDescriptionComesSecond) {
  unsetenv("HWAPI_BOARD");
  TestBoard::Write(RunDirectory() + "/board.toml", "");
  EXPECT_EQ(DescriptionPath(), RunDirectory() + "/board.toml");
}

TEST_F(BoardDescriptionTest, TheSystemsDescriptionComesLast) {
  unsetenv("HWAPI_BOARD");
  EXPECT_EQ(DescriptionPath(), "/etc/hwapi/board.toml");
}

TEST_F(BoardDescriptionTest, TheRunFolderHasADefault) {
  unsetenv("HWAPI_RUN");
  EXPECT_EQ(RunDirectory(), "/run/hwapi");
}

TEST_F(BoardDescriptionTest, TheOwnBoardIsReadOnce) {
  m_board.Describe("[node]\nboard = 3");
  EXPECT_EQ(OwnBoard().node.board, 3);
  m_board.Describe("[node]\nboard = 4");
  EXPECT_EQ(OwnBoard().node.board, 3);
}

}  // namespace
