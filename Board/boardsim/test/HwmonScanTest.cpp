#include "HwmonScan.h"

#include "MadeUpSysfs.h"

#include <gtest/gtest.h>

namespace boardsim {
namespace {

TEST(HwmonScan, FindsChipPlaceAndInput) {
  MadeUpSysfs sysfs;
  sysfs.AddChip("hwmon3", "lm75", "3-0048", {{"temp1_input", "41500"}, {"temp1_label", "board"}});
  const auto found = ScanHwmon(sysfs.Root());
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].chip, "lm75");
  EXPECT_EQ(found[0].at, "3-0048");
  EXPECT_EQ(found[0].input, "temp1");
  EXPECT_EQ(found[0].label, "board");
}

TEST(HwmonScan, SortsInputsByNumber) {
  MadeUpSysfs sysfs;
  sysfs.AddChip("hwmon0", "tmp", "a", {{"temp10_input", "1"}, {"temp2_input", "1"}});
  const auto found = ScanHwmon(sysfs.Root());
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].input, "temp2");
}

TEST(HwmonScan, LeavesOutChannelsThatDoNotAnswer) {
  MadeUpSysfs sysfs;
  sysfs.AddChip("hwmon0", "tmp", "a", {{"temp1_input", ""}});
  EXPECT_TRUE(ScanHwmon(sysfs.Root()).empty());
}

TEST(HwmonScan, LeavesOutChipsThatCannotBeToldApart) {
  MadeUpSysfs sysfs;
  sysfs.AddChip("hwmon0", "acpitz", "", {{"temp1_input", "30000"}});
  sysfs.AddChip("hwmon1", "acpitz", "", {{"temp1_input", "31000"}});
  EXPECT_TRUE(ScanHwmon(sysfs.Root()).empty());
}

TEST(HwmonScan, FindsFansThatHaveASpeedAndAControl) {
  MadeUpSysfs sysfs;
  sysfs.AddChip("hwmon0", "nct", "nct.656",
                {{"pwm1", "100"}, {"pwm1_enable", "2"}, {"pwm2", "100"}, {"fan2_input", "900"}, {"fan3_input", "900"}});
  const auto fans = ScanHwmonFans(sysfs.Root());
  ASSERT_EQ(fans.size(), 1u);
  EXPECT_EQ(fans[0].input, "fan2");
  EXPECT_TRUE(ScanHwmon(sysfs.Root()).empty());
}

TEST(HwmonScan, OfAMachineWithoutSensorsIsEmpty) { EXPECT_TRUE(ScanHwmon("/nonexistent").empty()); }

}  // namespace
}  // namespace boardsim
