// Simulated devices as the drivers see them.
#include "TestBoard.h"
#include "ddal_board.h"
#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_rf.h"
#include "ddal_sim.h"
#include "ddal_temp.h"

#include <gtest/gtest.h>

namespace {

constexpr const char kDescription[] = R"(
[boot]
active = 53
reset_loop_count = 2
[[temperature]]
device = 0x10000
sim = { base = 41.5 }
[[fan]]
id = 1
sim = { max_rpm = 6000 }
[[rf]]
index = 1
register = 0
chain = 2
)";

class SimDevicesTest : public testing::Test {
 protected:
  SimDevicesTest() {
    m_board.Describe(kDescription);
    EXPECT_EQ(ddal_sim_start(), DDAL_OK);
  }

  TestBoard m_board;
  int m_value = -77;
};

TEST_F(SimDevicesTest, ASensorShowsItsBaseUntilItIsSet) {
  ASSERT_EQ(ddal_temp_get_curr(0x10000, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 41500);
}

TEST_F(SimDevicesTest, ASensorShowsWhatWasSet) {
  ASSERT_EQ(ddal_sim_temp_set(0x10000, -5), DDAL_OK);
  ASSERT_EQ(ddal_temp_get_curr(0x10000, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, -5);
}

TEST_F(SimDevicesTest, ASensorFailsAsToldUntilThatEnds) {
  ASSERT_EQ(ddal_sim_temp_fail(0x10000, -1001), DDAL_OK);
  EXPECT_EQ(ddal_temp_get_curr(0x10000, &m_value), -1001);
  EXPECT_EQ(m_value, -77);
  ASSERT_EQ(ddal_sim_temp_fail(0x10000, 0), DDAL_OK);
  EXPECT_EQ(ddal_temp_get_curr(0x10000, &m_value), DDAL_OK);
}

TEST_F(SimDevicesTest, AnUnknownSensorCannotBeSet) { EXPECT_EQ(ddal_sim_temp_set(0x10001, 1), DDAL_ERR_NO_DEVICE); }

TEST_F(SimDevicesTest, WithoutASimulatorNothingCanBeRead) {
  ASSERT_EQ(ddal_sim_stop(), DDAL_OK);
  u32 word = 0;
  EXPECT_EQ(ddal_temp_get_curr(0x10000, &m_value), DDAL_ERR_NOT_RUNNING);
  EXPECT_EQ(ddal_fan_get_rpm(1, &m_value), DDAL_ERR_NOT_RUNNING);
  EXPECT_EQ(ddal_fan_set_pwm(1, 50), DDAL_ERR_NOT_RUNNING);
  EXPECT_EQ(ddal_rf_asic_read_reg(0, 0x3268, &word), DDAL_ERR_NOT_RUNNING);
}

TEST_F(SimDevicesTest, StartingAndStoppingTwiceIsHarmless) {
  EXPECT_EQ(ddal_sim_start(), DDAL_OK);
  EXPECT_EQ(ddal_sim_stop(), DDAL_OK);
  EXPECT_EQ(ddal_sim_stop(), DDAL_OK);
  EXPECT_EQ(ddal_sim_start(), DDAL_OK);
  EXPECT_EQ(ddal_temp_get_curr(0x10000, &m_value), DDAL_OK);
}

TEST_F(SimDevicesTest, AFanThatNobodyToldAnythingRunsAtFullSpeed) {
  SDdalSimFan state{};
  ASSERT_EQ(ddal_sim_fan_get(1, &state), DDAL_OK);
  EXPECT_EQ(state.control, 100);
  ASSERT_EQ(ddal_fan_get_rpm(1, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 6000);
}

TEST_F(SimDevicesTest, AFanKeepsItsControlValueAndFrequency) {
  ASSERT_EQ(ddal_fan_set_pwm(1, 60), DDAL_OK);
  ASSERT_EQ(ddal_fan_set_fan_pwm_freq(1, 22500), DDAL_OK);
  SDdalSimFan state{};
  ASSERT_EQ(ddal_sim_fan_get(1, &state), DDAL_OK);
  EXPECT_EQ(state.control, 60);
  EXPECT_EQ(state.hertz, 22500);
  ASSERT_EQ(ddal_fan_get_pwm(1, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 60);
  ASSERT_EQ(ddal_fan_get_fan_pwm_freq(1, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 22500);
}

TEST_F(SimDevicesTest, AFanShowsTheSpeedThatWasSet) {
  ASSERT_EQ(ddal_sim_fan_rpm_set(1, 1234), DDAL_OK);
  ASSERT_EQ(ddal_fan_get_rpm(1, &m_value), DDAL_OK);
  EXPECT_EQ(m_value, 1234);
}

TEST_F(SimDevicesTest, AControlValueAbove100IsInvalid) {
  EXPECT_EQ(ddal_fan_set_pwm(1, 100), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_pwm(1, 101), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_fan_set_pwm(1, 0xFFFFFFFF), DDAL_ERR_INVALID);
}

TEST_F(SimDevicesTest, AFrequencyBelow1IsInvalid) { EXPECT_EQ(ddal_fan_set_fan_pwm_freq(1, 0), DDAL_ERR_INVALID); }

TEST_F(SimDevicesTest, AFanFailsForReadsAndWritesSeparately) {
  ASSERT_EQ(ddal_sim_fan_fail(1, -2, 0), DDAL_OK);
  EXPECT_EQ(ddal_fan_get_rpm(1, &m_value), -2);
  EXPECT_EQ(ddal_fan_set_pwm(1, 10), DDAL_OK);
  ASSERT_EQ(ddal_sim_fan_fail(1, 0, -9), DDAL_OK);
  EXPECT_EQ(ddal_fan_get_rpm(1, &m_value), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_pwm(1, 20), -9);
}

TEST_F(SimDevicesTest, AnUnknownFanIsNoDevice) {
  EXPECT_EQ(ddal_fan_get_rpm(0, &m_value), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(ddal_fan_set_pwm(99, 1), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(ddal_sim_fan_rpm_set(0, 1), DDAL_ERR_NO_DEVICE);
}

TEST_F(SimDevicesTest, NullOutputsAreInvalid) {
  EXPECT_EQ(ddal_fan_get_rpm(1, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_rf_asic_read_reg(0, 0, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_rf_chain_status_get(0, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_sim_fan_get(1, nullptr), DDAL_ERR_INVALID);
}

TEST_F(SimDevicesTest, AnRfPartIsAsDescribedOrEnabled) {
  u32 value = 77;
  ASSERT_EQ(ddal_rf_asic_read_reg(1, 0x3268, &value), DDAL_OK);
  EXPECT_EQ(value, 0u);
  ASSERT_EQ(ddal_rf_chain_status_get(1, &value), DDAL_OK);
  EXPECT_EQ(value, 2u);
  ASSERT_EQ(ddal_rf_asic_read_reg(2, 0x3268, &value), DDAL_OK);
  EXPECT_EQ(value, 1u);
  EXPECT_EQ(ddal_rf_chain_status_get(3, &value), DDAL_ERR_NO_DEVICE);
}

TEST_F(SimDevicesTest, AnRfPartShowsWhatWasSet) {
  ASSERT_EQ(ddal_sim_rf_set(0, 5, 0), DDAL_OK);
  u32 value = 77;
  ASSERT_EQ(ddal_rf_asic_read_reg(0, 0x3268, &value), DDAL_OK);
  EXPECT_EQ(value, 5u);
  ASSERT_EQ(ddal_rf_chain_status_get(0, &value), DDAL_OK);
  EXPECT_EQ(value, 0u);
  EXPECT_EQ(ddal_sim_rf_set(3, 1, 1), DDAL_ERR_NO_DEVICE);
}

TEST_F(SimDevicesTest, TheResetCounterIsAsDescribedUntilItIsSet) {
  i32 count = 0;
  ASSERT_EQ(ddal_boot_get_reset_loop_count(&count), DDAL_OK);
  EXPECT_EQ(count, 2);
  ASSERT_EQ(ddal_sim_reset_loop_count_set(7), DDAL_OK);
  ASSERT_EQ(ddal_boot_get_reset_loop_count(&count), DDAL_OK);
  EXPECT_EQ(count, 7);
}

TEST_F(SimDevicesTest, TheActiveFileSystemIsAsDescribedUntilItIsSet) {
  u32 active = 0;
  ASSERT_EQ(ddal_boot_get_linux_active(&active), DDAL_OK);
  EXPECT_EQ(active, DDAL_FFS_FS1);
  ASSERT_EQ(ddal_sim_linux_active_set(DDAL_FFS_FS2), DDAL_OK);
  ASSERT_EQ(ddal_boot_get_linux_active(&active), DDAL_OK);
  EXPECT_EQ(active, DDAL_FFS_FS2);
}

TEST_F(SimDevicesTest, NoOtherFileSystemCanBeActive) {
  EXPECT_EQ(ddal_sim_linux_active_set(0), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_sim_linux_active_set(2), DDAL_ERR_INVALID);
}

}  // namespace
