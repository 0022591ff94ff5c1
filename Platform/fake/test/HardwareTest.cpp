#include "fake/PlatformTest.h"

#include <cstring>

namespace {

using Hardware = fake::PlatformTest;

constexpr u32 kSensor = 0x10000;

int Read(u32 device) {
  int thousandths = 0;
  const int code = ddal_temp_get_curr(device, &thousandths);
  return code != DDAL_OK ? code : thousandths;
}

TEST_F(Hardware, ReadingsComeOneAfterTheOtherAndTheLastStays) {
  fake::QueueTemperatures(kSensor, {{.value = 41000}, {.error = DDAL_ERR_IO}, {.value = 42000}});
  EXPECT_EQ(Read(kSensor), 41000);
  EXPECT_EQ(Read(kSensor), DDAL_ERR_IO);
  EXPECT_EQ(Read(kSensor), 42000);
  EXPECT_EQ(Read(kSensor), 42000);
}

TEST_F(Hardware, DevicesThatWereNotSetUpAreAbsent) {
  EXPECT_EQ(Read(kSensor), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(ddal_fan_set_pwm(0, 1), DDAL_ERR_NO_DEVICE);
}

TEST_F(Hardware, AFanKeepsWhatWasAskedOfIt) {
  fake::SetFan(2, {.rpm = 3000});
  EXPECT_EQ(ddal_fan_set_pwm(2, 55), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(2, 1000), DDAL_OK);
  EXPECT_EQ(fake::GetFan(2).control, 55);
  EXPECT_EQ(fake::GetFan(2).hertz, 1000);
}

TEST_F(Hardware, AFanFailsReadsAndWritesForItself) {
  fake::SetFan(2, {.rpm = 3000, .writeError = DDAL_ERR_IO});
  int rpm = 0;
  EXPECT_EQ(ddal_fan_get_rpm(2, &rpm), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_pwm(2, 55), DDAL_ERR_IO);
}

TEST_F(Hardware, AFanThatFailsMayLeaveGarbage) {
  int value = 1;
  fake::SetFan(2, {.readError = DDAL_ERR_IO});
  EXPECT_EQ(ddal_fan_get_rpm(2, &value), DDAL_ERR_IO);
  EXPECT_EQ(value, 1);
  fake::SetFan(2, {.readError = DDAL_ERR_IO, .garbage = 5555});
  EXPECT_EQ(ddal_fan_get_rpm(2, &value), DDAL_ERR_IO);
  EXPECT_EQ(value, 5555);
}

TEST_F(Hardware, ARegisterMayDifferFromTheRestOfItsChip) {
  fake::SetRfAsic(0, 1);
  fake::SetRfRegister(0, 0x20, 5);
  u32 value = 0;
  ddal_rf_asic_read_reg(0, 0x20, &value);
  EXPECT_EQ(value, 5u);
  ddal_rf_asic_read_reg(0, 0x21, &value);
  EXPECT_EQ(value, 1u);
}

TEST_F(Hardware, BoardDataAreGiven) {
  fake::Board().mountStates[DDAL_FFS_FS2] = DDAL_FFS_READ_ONLY;
  u32 state = 0;
  EXPECT_EQ(ddal_ffs_is_mounted(DDAL_FFS_FS2, &state), DDAL_OK);
  EXPECT_EQ(state, DDAL_FFS_READ_ONLY);
}

TEST_F(Hardware, ProductDataAreTextsOrNumbers) {
  fake::Board().filter[DDAL_FILTER_VENDOR] = "V";
  fake::Board().filterNumbers[DDAL_FILTER_HWSWID] = -2;
  char out[DDAL_PRODUCT_DATA_SIZE] = {};
  ddal_filter_get_product_data(DDAL_FILTER_VENDOR, out);
  EXPECT_STREQ(out, "V");
  ddal_filter_get_product_data(DDAL_FILTER_HWSWID, out);
  EXPECT_EQ(0, std::memcmp(out, fake::BytesOf(i32{-2}).data(), sizeof(i32)));
}

TEST_F(Hardware, TextsMayFillTheirBuffersWithoutAZero) {
  fake::Board().unterminated = true;
  fake::Board().psu[DDAL_PSU_VENDOR] = std::string(150, 'v');
  char out[DDAL_PRODUCT_DATA_SIZE] = {};
  ddal_psu_get_product_data(DDAL_PSU_VENDOR, out);
  EXPECT_EQ(std::string(out, sizeof out), std::string(DDAL_PRODUCT_DATA_SIZE, 'v'));
  fake::Unit().unterminated = true;
  fake::Unit().serialNumber = "K9000000001";
  EXPECT_EQ(ApiGetModuleSerialNumber(out, 4), 1u);
  EXPECT_EQ(std::string(out, 4), "K900");
}

}  // namespace
