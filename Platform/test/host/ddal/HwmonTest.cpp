// Sensors on chips of the kernel, in a made-up device tree.
#include "TestBoard.h"
#include "ddal_error.h"
#include "ddal_sim.h"
#include "ddal_temp.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr u32 kDevice = 0x10000;
constexpr int kUntouched = -77;

class HwmonTest : public testing::Test {
 protected:
  /// Describes one sensor; @p more are further keys of its table.
  void Bind(const std::string& hwmon, const std::string& more = "") {
    m_board.Describe("[[temperature]]\ndevice = 0x10000\nhwmon = { " + hwmon + " }\n" + more);
  }
  int Read() {
    m_value = kUntouched;
    return ddal_temp_get_curr(kDevice, &m_value);
  }
  std::string Problem() {
    char text[1024] = "?";
    EXPECT_EQ(ddal_init(text, sizeof text), DDAL_ERR_CONFIG);
    return text;
  }

  TestBoard m_board;
  int m_value = kUntouched;
};

TEST_F(HwmonTest, ASensorIsFoundByChipDeviceAndInput) {
  m_board.BindChip(0, "lm75", "3-0049");
  m_board.Show(0, "temp1_input", "1000");
  m_board.BindChip(1, "lm75", "3-0048");
  m_board.Show(1, "temp1_input", "41500");
  Bind("chip = 'lm75', at = '3-0048', input = 'temp1'");
  ASSERT_EQ(Read(), DDAL_OK);
  EXPECT_EQ(m_value, 41500);
}

TEST_F(HwmonTest, ASensorIsFoundByLabel) {
  m_board.BindChip(4, "coretemp", "coretemp.0");
  m_board.Show(4, "temp1_input", "1000");
  m_board.Show(4, "temp1_label", "Core 0");
  m_board.Show(4, "temp2_input", "52000");
  m_board.Show(4, "temp2_label", "Package id 0");
  Bind("chip = 'coretemp', input = 'Package id 0'");
  ASSERT_EQ(Read(), DDAL_OK);
  EXPECT_EQ(m_value, 52000);
}

TEST_F(HwmonTest, AChipWithoutADeviceIsFoundByItsName) {
  m_board.BindChip(0, "acpitz", "");
  m_board.Show(0, "temp1_input", "30000");
  Bind("chip = 'acpitz', input = 'temp1'");
  EXPECT_EQ(Read(), DDAL_OK);
}

TEST_F(HwmonTest, NegativeTemperaturesAreRead) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "-12250");
  Bind("chip = 'lm75', input = 'temp1'");
  ASSERT_EQ(Read(), DDAL_OK);
  EXPECT_EQ(m_value, -12250);
}

TEST_F(HwmonTest, EveryReadShowsTheNewestValue) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  Bind("chip = 'lm75', input = 'temp1'");
  ASSERT_EQ(Read(), DDAL_OK);
  m_board.Show(0, "temp1_input", "2000");
  ASSERT_EQ(Read(), DDAL_OK);
  EXPECT_EQ(m_value, 2000);
}

TEST_F(HwmonTest, WhatIsNoNumberIsAnIoErrorAndLeavesTheOutputAlone) {
  m_board.BindChip(0, "lm75", "3-0048");
  Bind("chip = 'lm75', input = 'temp1'");
  for (const char* text :
       {"warm", "-", "1 2", "99999999999999999999", "2147483648", "12345678901234567890123456789012345"}) {
    m_board.Show(0, "temp1_input", text);
    EXPECT_EQ(Read(), DDAL_ERR_IO) << text;
    EXPECT_EQ(m_value, kUntouched) << text;
  }
}

TEST_F(HwmonTest, AChipThatGoesAwayIsNoDevice) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  Bind("chip = 'lm75', input = 'temp1'");
  ASSERT_EQ(Read(), DDAL_OK);
  m_board.UnbindChip(0);
  EXPECT_EQ(Read(), DDAL_ERR_NO_DEVICE);
  EXPECT_EQ(m_value, kUntouched);
}

TEST_F(HwmonTest, AChipThatComesBackUnderAnotherNumberIsFoundAgain) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  Bind("chip = 'lm75', at = '3-0048', input = 'temp1'");
  ASSERT_EQ(Read(), DDAL_OK);
  m_board.UnbindChip(0);
  ASSERT_EQ(Read(), DDAL_ERR_NO_DEVICE);
  m_board.BindChip(0, "other", "3-0050");
  m_board.BindChip(7, "lm75", "3-0048");
  m_board.Show(7, "temp1_input", "7000");
  ASSERT_EQ(Read(), DDAL_OK);
  EXPECT_EQ(m_value, 7000);
}

TEST_F(HwmonTest, AChipThatWasBoundAgainBetweenTwoReadsIsNotMissed) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  Bind("chip = 'lm75', input = 'temp1'");
  ASSERT_EQ(Read(), DDAL_OK);
  m_board.UnbindChip(0);
  m_board.BindChip(1, "lm75", "3-0048");
  m_board.Show(1, "temp1_input", "2000");
  ASSERT_EQ(Read(), DDAL_OK);
  EXPECT_EQ(m_value, 2000);
}

TEST_F(HwmonTest, ThreadsReadWhileAChipComesAndGoes) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "5000");
  Bind("chip = 'lm75', input = 'temp1'");
  const auto reads = [] {
    for (int i = 0; i < 300; ++i) {
      int value = 5000;
      const int error = ddal_temp_get_curr(kDevice, &value);
      EXPECT_TRUE(error == DDAL_OK || error == DDAL_ERR_NO_DEVICE || error == DDAL_ERR_IO) << error;
      EXPECT_EQ(value, 5000);
    }
  };
  std::thread first(reads), second(reads);
  for (int i = 0; i < 20; ++i) {
    m_board.UnbindChip(i);
    std::filesystem::create_directories(m_board.Hwmon(100));
    m_board.Show(100, "temp1_input", "5000");
    m_board.Show(100, "name", "lm75");
    std::filesystem::rename(m_board.Hwmon(100), m_board.Hwmon(i + 1));
  }
  first.join();
  second.join();
  EXPECT_EQ(Read(), DDAL_OK);
}

TEST_F(HwmonTest, AnUnknownDeviceIsNoDevice) {
  m_board.Describe("");
  EXPECT_EQ(Read(), DDAL_ERR_NO_DEVICE);
}

TEST_F(HwmonTest, ANullOutputIsInvalid) {
  m_board.Describe("");
  EXPECT_EQ(ddal_temp_get_curr(kDevice, nullptr), DDAL_ERR_INVALID);
}

TEST_F(HwmonTest, InitFindsABoardThatFits) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  Bind("chip = 'lm75', input = 'temp1'");
  char text[64] = "?";
  EXPECT_EQ(ddal_init(text, sizeof text), DDAL_OK);
  EXPECT_STREQ(text, "");
}

TEST_F(HwmonTest, InitNamesTheChipsThatAreThere) {
  m_board.BindChip(0, "acpitz", "");
  m_board.BindChip(1, "tmp105", "1-0048");
  Bind("chip = 'lm75', at = '3-0048', input = 'temp1'");
  EXPECT_EQ(Problem(), m_board.Description() + ":1: temperature 0x10000: no chip \"lm75\" at \"3-0048\" in " +
                           (m_board.Folder() / "sys/class/hwmon").string() +
                           "; chips here: acpitz, tmp105 at 1-0048; bind the sensor to one of them, load the chip's "
                           "driver, or write optional = true");
}

TEST_F(HwmonTest, InitNamesTheInputsOfTheChip) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  m_board.Show(0, "temp1_label", "Board");
  Bind("chip = 'lm75', input = 'temp2'");
  EXPECT_NE(Problem().find("no input or label \"temp2\"; it has: temp1 (Board)"), std::string::npos);
}

TEST_F(HwmonTest, InitAsksForTheDeviceWhereSeveralChipsFit) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.BindChip(1, "lm75", "3-0049");
  Bind("chip = 'lm75', input = 'temp1'");
  EXPECT_NE(Problem().find("name one of their devices with at: 3-0048, 3-0049"), std::string::npos);
}

TEST_F(HwmonTest, InitTellsAChipThatDoesNotAnswer) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "nothing");
  Bind("chip = 'lm75', input = 'temp1'");
  EXPECT_NE(Problem().find("does not tell a temperature at \"temp1\""), std::string::npos);
}

TEST_F(HwmonTest, InitLetsOptionalSensorsBeMissing) {
  Bind("chip = 'lm75', input = 'temp1'", "optional = true");
  EXPECT_EQ(ddal_init(nullptr, 0), DDAL_OK);
  EXPECT_EQ(Read(), DDAL_ERR_NO_DEVICE);
}

TEST_F(HwmonTest, InitCutsTheProblemToTheRoomThereIs) {
  Bind("chip = 'lm75', input = 'temp1'");
  char text[9] = "????????";
  EXPECT_EQ(ddal_init(text, 8), DDAL_ERR_CONFIG);
  EXPECT_EQ(std::string(text), m_board.Description().substr(0, 7));
}

TEST_F(HwmonTest, ASensorOnAChipCannotBeSimulated) {
  Bind("chip = 'lm75', input = 'temp1'");
  EXPECT_EQ(ddal_sim_temp_set(kDevice, 1), DDAL_ERR_NOT_SUPPORTED);
}

}  // namespace
