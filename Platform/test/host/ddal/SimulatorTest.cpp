// The simulated hardware between processes.
#include "Simulator.h"

#include "TestBoard.h"
#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_sim.h"
#include "ddal_temp.h"

#include <gtest/gtest.h>

namespace {

constexpr u32 kDevice = 0x10000;
constexpr const char kDescription[] =
    "[[temperature]]\ndevice = 0x10000\nsim = { base = 41.5 }\n[[fan]]\nid = 0\nsim = {}\n";

bool Simulate() { return ddal_sim_temp_set(kDevice, 12345) == DDAL_OK && ddal_sim_start() == DDAL_OK; }

class SimulatorTest : public testing::Test {
 protected:
  SimulatorTest() { m_board.Describe(kDescription); }

  TestBoard m_board;
  int m_value = -77;
};

TEST_F(SimulatorTest, WhatOneProcessSetsAnotherOneReads) {
  const Simulator simulator(Simulate);
  ASSERT_TRUE(simulator.Up());
  ASSERT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 12345);
}

TEST_F(SimulatorTest, ASimulatorThatIsKilledNoLongerRuns) {
  Simulator simulator(Simulate);
  ASSERT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_OK);
  simulator.Kill();
  EXPECT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_ERR_NOT_RUNNING);
}

TEST_F(SimulatorTest, ANewSimulatorTakesOverFromADeadOne) {
  Simulator first(Simulate);
  ASSERT_TRUE(first.Up());
  first.Kill();
  const Simulator second([] { return ddal_sim_temp_set(kDevice, 222) == DDAL_OK && ddal_sim_start() == DDAL_OK; });
  ASSERT_TRUE(second.Up());
  ASSERT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 222);
}

TEST_F(SimulatorTest, ASecondSimulatorIsRefused) {
  const Simulator simulator(Simulate);
  ASSERT_TRUE(simulator.Up());
  EXPECT_EQ(ddal_sim_start(), DDAL_ERR_IO);
}

TEST_F(SimulatorTest, FanSettingsReachTheSimulator) {
  ASSERT_EQ(ddal_sim_start(), DDAL_OK);
  const pid_t service = fork();
  if (service == 0) _exit(ddal_fan_set_pwm(0, 35) == DDAL_OK ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(service, &status, 0), service);
  ASSERT_EQ(status, 0);
  SDdalSimFan state{};
  ASSERT_EQ(ddal_sim_fan_get(0, &state), DDAL_OK);
  EXPECT_EQ(state.control, 35);
}

TEST_F(SimulatorTest, WhoeverComesLaterKeepsWhatIsThere) {
  const Simulator first([] { return ddal_sim_temp_set(kDevice, 5) == DDAL_OK; });
  ASSERT_TRUE(first.Up());
  ASSERT_EQ(ddal_sim_start(), DDAL_OK);
  ASSERT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 5);
}

TEST_F(SimulatorTest, ABoardWithMoreSensorsFindsThemAll) {
  const Simulator first(Simulate);
  ASSERT_TRUE(first.Up());
  m_board.Describe(std::string(kDescription) + "[[temperature]]\ndevice = 2\nsim = { base = 2 }\n");
  ASSERT_EQ(ddal_temp_get_curr(2, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 2000);
}

TEST_F(SimulatorTest, HardwareOfAnotherVersionIsRefusedWithTheWayOut) {
  TestBoard::Write(m_board.Folder() / "run/hardware", "something else");
  char text[512] = "";
  EXPECT_EQ(ddal_init(text, sizeof text), DDAL_ERR_CONFIG);
  EXPECT_NE(std::string(text).find("remove the file"), std::string::npos) << text;
  EXPECT_EQ(ddal_temp_get_curr(kDevice, &m_value), DDAL_ERR_IO);
  EXPECT_EQ(ddal_sim_start(), DDAL_ERR_IO);
}

TEST_F(SimulatorTest, InitNeedsNoSimulator) { EXPECT_EQ(ddal_init(nullptr, 0), DDAL_OK); }

}  // namespace
