#include "Rig.h"
#include "ddal_board.h"
#include "ddal_error.h"
#include "ddal_product.h"
#include "ddal_rf.h"
#include "ddal_temp.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>

namespace contract {
namespace {

/// @return what a driver's read of one number gives
template <typename T>
T Get(int (*read)(T*)) {
  T value{};
  EXPECT_EQ(read(&value), DDAL_OK);
  return value;
}

i32 GetAtZero(int (*read)(u32, i32*)) {
  i32 value = 0;
  EXPECT_EQ(read(0, &value), DDAL_OK);
  return value;
}

u32 MountState(u32 fileSystem) {
  u32 state = 99;
  EXPECT_EQ(ddal_ffs_is_mounted(fileSystem, &state), DDAL_OK);
  return state;
}

TEST(ErrorText, ExistsForEveryCode) {
  for (const int code : {DDAL_OK + 0, -1, -2, -3, -4, -5, -6, -7, -1001, -1004, 1, 12345, INT_MAX, INT_MIN}) {
    std::array<char, 100> buffer;
    buffer.fill('x');
    EXPECT_EQ(ddal_strerror(code, buffer.data(), buffer.size()), buffer.data());
    EXPECT_NE(std::memchr(buffer.data(), '\0', buffer.size()), nullptr) << code;
    EXPECT_STRNE(buffer.data(), "") << code;
  }
}

TEST(ErrorText, IsCutToTheBuffer) {
  std::array<char, 8> buffer;
  buffer.fill('#');
  EXPECT_EQ(ddal_strerror(DDAL_ERR_IO, buffer.data(), 4), buffer.data());
  EXPECT_EQ(std::strlen(buffer.data()), 3u);
  EXPECT_EQ(buffer[4], '#');
}

TEST(Sensor, ShowsItsTemperature) {
  for (const int shown : {41250, -40000, 0}) {
    rig::SetTemperature(shown);
    int thousandths = 1;
    EXPECT_EQ(ddal_temp_get_curr(rig::kSensor, &thousandths), DDAL_OK);
    EXPECT_EQ(thousandths, shown);
  }
}

TEST(Sensor, ThatIsAbsentLeavesTheOutput) {
  int thousandths = 5;
  EXPECT_EQ(ddal_temp_get_curr(rig::kAbsentSensor, &thousandths), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(thousandths, 5);
}

TEST(Sensor, NeedsAnOutput) { EXPECT_EQ(ddal_temp_get_curr(rig::kSensor, nullptr), DDAL_ERR_INVALID); }

/// Every kind of fan that the board has.
class Fan : public testing::TestWithParam<ddal_fan_id_t> {};

INSTANTIATE_TEST_SUITE_P(Fans, Fan, testing::Values(rig::kFan, rig::kChipFan));

TEST_P(Fan, KeepsItsControlValue) {
  for (const u32 set : {0u, 55u, 100u}) {
    EXPECT_EQ(ddal_fan_set_pwm(GetParam(), set), DDAL_OK);
    int control = -1;
    EXPECT_EQ(ddal_fan_get_pwm(GetParam(), &control), DDAL_OK);
    EXPECT_EQ(control, static_cast<int>(set));
  }
}

TEST_P(Fan, RefusesMoreThanFullSpeed) {
  EXPECT_EQ(ddal_fan_set_pwm(GetParam(), 40), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_pwm(GetParam(), 101), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_fan_set_pwm(GetParam(), 0xFFFFFFFF), DDAL_ERR_INVALID);
  int control = 0;
  ddal_fan_get_pwm(GetParam(), &control);
  EXPECT_EQ(control, 40);
}

TEST_P(Fan, KeepsItsFrequency) {
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(GetParam(), 1000), DDAL_OK);
  int hertz = 0;
  EXPECT_EQ(ddal_fan_get_fan_pwm_freq(GetParam(), &hertz), DDAL_OK);
  EXPECT_EQ(hertz, 1000);
}

TEST_P(Fan, RefusesAFrequencyOfNothing) {
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(GetParam(), 5000), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(GetParam(), 0), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(GetParam(), -1), DDAL_ERR_INVALID);
  int hertz = 0;
  ddal_fan_get_fan_pwm_freq(GetParam(), &hertz);
  EXPECT_EQ(hertz, 5000);
}

TEST_P(Fan, TellsItsSpeed) {
  int rpm = -1;
  EXPECT_EQ(ddal_fan_get_rpm(GetParam(), &rpm), DDAL_OK);
  EXPECT_GE(rpm, 0);
}

TEST(AbsentFan, LeavesTheOutputs) {
  int value = 5;
  EXPECT_EQ(ddal_fan_get_rpm(rig::kAbsentFan, &value), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(ddal_fan_get_pwm(rig::kAbsentFan, &value), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(ddal_fan_get_fan_pwm_freq(rig::kAbsentFan, &value), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(ddal_fan_set_pwm(rig::kAbsentFan, 5), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(rig::kAbsentFan, 5), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(value, 5);
}

TEST_P(Fan, NeedsAnOutput) {
  EXPECT_EQ(ddal_fan_get_rpm(GetParam(), nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_fan_get_pwm(GetParam(), nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_fan_get_fan_pwm_freq(GetParam(), nullptr), DDAL_ERR_INVALID);
}

TEST(Rf, NeedsAnOutput) {
  EXPECT_EQ(ddal_rf_asic_read_reg(0, 1, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_rf_chain_status_get(0, nullptr), DDAL_ERR_INVALID);
}

TEST(Rf, OutOfRangeLeavesTheOutput) {
  u32 value = 5;
  EXPECT_NE(ddal_rf_asic_read_reg(3, 1, &value), DDAL_OK);
  EXPECT_NE(ddal_rf_chain_status_get(3, &value), DDAL_OK);
  EXPECT_EQ(value, 5u);
}

TEST(Board, TellsItsBackplane) { EXPECT_EQ(Get(ddal_bp_3hu_backplane_type_get), rig::kBackplane); }

TEST(Board, TellsHowItWasBooted) {
  EXPECT_EQ(Get(ddal_boot_get_linux_active), rig::kActiveFileSystem);
  EXPECT_EQ(Get(ddal_boot_get_linux_id), rig::kImage);
  EXPECT_EQ(Get(ddal_boot_get_reset_loop_count), rig::kResetLoopCount);
}

TEST(Board, TellsItsMounts) {
  EXPECT_EQ(MountState(DDAL_FFS_FS1), DDAL_FFS_READ_ONLY);
  EXPECT_EQ(MountState(DDAL_FFS_FS2), DDAL_FFS_WRITABLE);
}

TEST(Board, KnowsNoOtherFileSystem) {
  u32 state = 99;
  EXPECT_NE(ddal_ffs_is_mounted(55, &state), DDAL_OK);
  EXPECT_EQ(state, 99u);
}

TEST(Board, TellsItsDeviceTree) {
  EXPECT_EQ(GetAtZero(ddal_devicetree_get_isti), rig::kIsti);
  EXPECT_EQ(GetAtZero(ddal_devicetree_get_ecc_single), rig::kEccSingle);
  EXPECT_EQ(GetAtZero(ddal_devicetree_get_ecc_double), rig::kEccDouble);
}

TEST(Board, HasItsDeviceTreeAtIndexZeroOnly) {
  i32 value = 5;
  EXPECT_NE(ddal_devicetree_get_isti(1, &value), DDAL_OK);
  EXPECT_EQ(value, 5);
}

TEST(Board, NeedsOutputs) {
  EXPECT_EQ(ddal_bp_3hu_backplane_type_get(nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_boot_get_linux_active(nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_boot_get_linux_id(nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_boot_get_reset_loop_count(nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_ffs_is_mounted(DDAL_FFS_FS1, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_devicetree_get_isti(0, nullptr), DDAL_ERR_INVALID);
}

TEST(ProductData, AreTexts) {
  std::array<char, DDAL_PRODUCT_DATA_SIZE> out{};
  EXPECT_EQ(ddal_psu_get_product_data(DDAL_PSU_VENDOR, out.data()), DDAL_OK);
  EXPECT_STREQ(out.data(), rig::kPsuVendor);
  EXPECT_EQ(ddal_filter_get_product_data(DDAL_FILTER_PRODUCT_CODE, out.data()), DDAL_OK);
  EXPECT_STREQ(out.data(), rig::kFilterProductCode);
}

TEST(ProductData, OfTheFiltersHardwareAndSoftwareIdIsANumber) {
  std::array<char, DDAL_PRODUCT_DATA_SIZE> out{};
  EXPECT_EQ(ddal_filter_get_product_data(DDAL_FILTER_HWSWID, out.data()), DDAL_OK);
  i32 number = 0;
  std::memcpy(&number, out.data(), sizeof number);
  EXPECT_EQ(number, rig::kFilterHwswid);
}

TEST(ProductData, OfAnUnknownKindLeaveTheOutput) {
  std::array<char, DDAL_PRODUCT_DATA_SIZE> out{'x'};
  EXPECT_NE(ddal_psu_get_product_data(0, out.data()), DDAL_OK);
  EXPECT_NE(ddal_filter_get_product_data(3, out.data()), DDAL_OK);
  EXPECT_EQ(out[0], 'x');
}

TEST(ProductData, NeedAnOutput) {
  EXPECT_EQ(ddal_psu_get_product_data(DDAL_PSU_VENDOR, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_filter_get_product_data(DDAL_FILTER_VENDOR, nullptr), DDAL_ERR_INVALID);
}

}  // namespace
}  // namespace contract
