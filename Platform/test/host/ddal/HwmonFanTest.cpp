// Fans on chips of the kernel, in a made-up device tree.
#include "FanBoard.h"
#include "ddal_error.h"
#include "ddal_fan.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <thread>

namespace {

constexpr int kUntouched = -77;

class HwmonFanTest : public testing::Test {
 protected:
  int Rpm() { return ddal_fan_get_rpm(0, &(m_value = kUntouched)); }
  int Control() { return ddal_fan_get_pwm(0, &(m_value = kUntouched)); }
  int Frequency() { return ddal_fan_get_fan_pwm_freq(0, &(m_value = kUntouched)); }

  FanBoard m_fans;
  int m_value = kUntouched;
};

/// Lets every write to a file fail as long as it lives.
class FailingWrites {
 public:
  FailingWrites() {
    signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit none{0, m_before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
  }
  FailingWrites(const FailingWrites&) = delete;
  FailingWrites& operator=(const FailingWrites&) = delete;
  ~FailingWrites() { setrlimit(RLIMIT_FSIZE, &m_before); }

 private:
  rlimit m_before{};
};

TEST_F(HwmonFanTest, TheSpeedIsReadInRevolutionsAMinute) {
  ASSERT_EQ(Rpm(), DDAL_OK);
  EXPECT_EQ(m_value, 6000);
}

TEST_F(HwmonFanTest, EveryReadShowsTheNewestValue) {
  ASSERT_EQ(Rpm(), DDAL_OK);
  m_fans.Show("fan1_input", "0");
  ASSERT_EQ(Rpm(), DDAL_OK);
  EXPECT_EQ(m_value, 0);
}

TEST_F(HwmonFanTest, FansOfOneChipAreToldApart) {
  ASSERT_EQ(ddal_fan_set_pwm(1, 100), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm2"), "255");
  EXPECT_EQ(m_fans.Shown("pwm1"), "80");
  int rpm = 0;
  ASSERT_EQ(ddal_fan_get_rpm(1, &rpm), DDAL_OK);
  EXPECT_EQ(rpm, 6100);
}

TEST_F(HwmonFanTest, EveryControlValueIsReadAsItWasSet) {
  for (u32 percent = 0; percent <= 100; ++percent) {
    ASSERT_EQ(ddal_fan_set_pwm(0, percent), DDAL_OK);
    ASSERT_EQ(Control(), DDAL_OK);
    EXPECT_EQ(m_value, static_cast<int>(percent));
  }
}

TEST_F(HwmonFanTest, TheControlValueIsRoundedToTheNearestStep) {
  const std::pair<u32, const char*> steps[] = {{0, "0"},    {1, "3"},    {9, "23"},   {33, "84"},
                                               {50, "128"}, {60, "153"}, {99, "252"}, {100, "255"}};
  for (const auto& [percent, pwm] : steps) {
    ASSERT_EQ(ddal_fan_set_pwm(0, percent), DDAL_OK);
    EXPECT_EQ(m_fans.Shown("pwm1"), pwm) << percent;
  }
}

TEST_F(HwmonFanTest, AStepIsReadAsTheNearestPerCent) {
  const std::pair<const char*, int> steps[] = {{"0", 0}, {"1", 0}, {"2", 1}, {"127", 50}, {"254", 100}, {"255", 100}};
  for (const auto& [pwm, percent] : steps) {
    m_fans.Show("pwm1", pwm);
    ASSERT_EQ(Control(), DDAL_OK);
    EXPECT_EQ(m_value, percent) << pwm;
  }
}

TEST_F(HwmonFanTest, ADriverThatShowsPerCentIsTakenAtItsWord) {
  m_fans.Describe("", "max31785");
  m_fans.Unbind();
  m_fans.Bind(2, "max31785");
  ASSERT_EQ(Control(), DDAL_OK);
  EXPECT_EQ(m_value, 80);
  ASSERT_EQ(ddal_fan_set_pwm(0, 60), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");  // what it takes; it would show 60
  EXPECT_EQ(Control(), DDAL_ERR_IO);
}

TEST_F(HwmonFanTest, AControlValueBeyondFullSpeedChangesNothing) {
  for (const u32 percent : {101u, 256u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ddal_fan_set_pwm(0, percent), DDAL_ERR_INVALID) << percent;
  }
  EXPECT_EQ(m_fans.Shown("pwm1"), "80");
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "2");
}

TEST_F(HwmonFanTest, ASetFanIsInManualMode) {
  ASSERT_EQ(ddal_fan_set_pwm(0, 50), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "1");
}

TEST_F(HwmonFanTest, AFanThatWasTakenBackMeanwhileIsPutInManualModeAgain) {
  ASSERT_EQ(ddal_fan_set_pwm(0, 50), DDAL_OK);
  m_fans.Show("pwm1_enable", "2");
  ASSERT_EQ(ddal_fan_set_pwm(0, 50), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "1");
}

TEST_F(HwmonFanTest, AFanInManualModeKeepsItsModeUntouched) {
  TestBoard::Write(m_fans.Path("pwm1_enable"), "1");  // a write would add a line feed
  ASSERT_EQ(ddal_fan_set_pwm(0, 50), DDAL_OK);
  EXPECT_EQ(std::filesystem::file_size(m_fans.Path("pwm1_enable")), 1u);
}

TEST_F(HwmonFanTest, AChipWithoutModesIsDrivenAsItIs) {
  m_fans.Remove("pwm1_enable");
  ASSERT_EQ(ddal_fan_set_pwm(0, 50), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1"), "128");
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "none");
}

TEST_F(HwmonFanTest, AModeThatCannotBeReadKeepsTheFanFromBeingChanged) {
  m_fans.Show("pwm1_enable", "automatic");
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_IO);
  EXPECT_EQ(m_fans.Shown("pwm1"), "80");
}

TEST_F(HwmonFanTest, TheFrequencyIsWrittenInHertz) {
  ASSERT_EQ(ddal_fan_set_fan_pwm_freq(0, 1000), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1_freq"), "1000");
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "2");
}

TEST_F(HwmonFanTest, TheFrequencyIsWhatTheChipMadeOfIt) {
  ASSERT_EQ(ddal_fan_set_fan_pwm_freq(0, 5000), DDAL_OK);
  m_fans.Show("pwm1_freq", "4882");
  ASSERT_EQ(Frequency(), DDAL_OK);
  EXPECT_EQ(m_value, 4882);
}

TEST_F(HwmonFanTest, AFrequencyThatIsNotPositiveChangesNothing) {
  for (const int hertz : {0, -1, -2147483647 - 1}) EXPECT_EQ(ddal_fan_set_fan_pwm_freq(0, hertz), DDAL_ERR_INVALID);
  EXPECT_EQ(m_fans.Shown("pwm1_freq"), "25000");
}

TEST_F(HwmonFanTest, AChipWithoutAFrequencyDoesNotSupportIt) {
  m_fans.Remove("pwm1_freq");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(Frequency(), DDAL_ERR_NOT_SUPPORTED);
    EXPECT_EQ(m_value, kUntouched);
    EXPECT_EQ(ddal_fan_set_fan_pwm_freq(0, 1000), DDAL_ERR_NOT_SUPPORTED);
  }
  EXPECT_EQ(m_fans.Shown("pwm1_freq"), "none");
}

TEST_F(HwmonFanTest, AFrequencyThatCanOnlyBeReadCannotBeSet) {
  m_fans.Remove("pwm1_freq");
  // A number that nobody may write, not even root.
  std::filesystem::create_symlink("/proc/sys/kernel/cap_last_cap", m_fans.Path("pwm1_freq"));
  EXPECT_EQ(Frequency(), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(0, 1000), DDAL_ERR_NOT_SUPPORTED);
}

TEST_F(HwmonFanTest, WhatIsNoNumberIsAnIoErrorAndLeavesTheOutputAlone) {
  m_fans.Show("fan1_input", "fast");
  m_fans.Show("pwm1", "much");
  m_fans.Show("pwm1_freq", "often");
  for (const int result : {Rpm(), Control(), Frequency()}) EXPECT_EQ(result, DDAL_ERR_IO);
  EXPECT_EQ(m_value, kUntouched);
}

TEST_F(HwmonFanTest, AStepThatDoesNotExistIsAnIoError) {
  for (const char* pwm : {"256", "-1"}) {
    m_fans.Show("pwm1", pwm);
    EXPECT_EQ(Control(), DDAL_ERR_IO) << pwm;
    EXPECT_EQ(m_value, kUntouched) << pwm;
    EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_IO) << pwm;
    EXPECT_EQ(m_fans.Shown("pwm1_enable"), "2") << pwm;
  }
}

TEST_F(HwmonFanTest, AFanThatDoesNotTellItsControlValueIsNotChanged) {
  m_fans.Show("pwm1", "much");
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_IO);
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "2");
}

TEST_F(HwmonFanTest, AChipThatTakesNoValueIsAnIoError) {
  m_fans.Show("pwm1_enable", "1");
  const FailingWrites failing;
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_IO);
  EXPECT_EQ(ddal_fan_set_fan_pwm_freq(0, 50), DDAL_ERR_IO);
}

TEST_F(HwmonFanTest, AChipThatRefusesManualModeIsAnIoError) {
  const FailingWrites failing;
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_IO);
  EXPECT_EQ(m_fans.Shown("pwm1"), "80");
}

TEST_F(HwmonFanTest, AChipThatGoesAwayIsNoDevice) {
  ASSERT_EQ(Rpm(), DDAL_OK);
  m_fans.Unbind();
  for (const int result : {Rpm(), Control(), Frequency(), ddal_fan_set_pwm(0, 50), ddal_fan_set_fan_pwm_freq(0, 50)}) {
    EXPECT_EQ(result, DDAL_ERR_NO_DEVICE);
  }
  EXPECT_EQ(m_value, kUntouched);
}

TEST_F(HwmonFanTest, AChipThatComesBackUnderAnotherNumberIsFoundAgain) {
  ASSERT_EQ(Rpm(), DDAL_OK);
  m_fans.Unbind();
  ASSERT_EQ(Rpm(), DDAL_ERR_NO_DEVICE);
  m_fans.Board().BindChip(2, "other", "3-0050");
  m_fans.Bind(7);
  m_fans.Show("fan1_input", "7000");
  ASSERT_EQ(Rpm(), DDAL_OK);
  EXPECT_EQ(m_value, 7000);
}

TEST_F(HwmonFanTest, AChipThatWasBoundAgainBetweenTwoChangesIsNotMissed) {
  ASSERT_EQ(ddal_fan_set_pwm(0, 50), DDAL_OK);
  m_fans.Unbind();
  m_fans.Bind(5);
  ASSERT_EQ(ddal_fan_set_pwm(0, 60), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "1");
}

TEST_F(HwmonFanTest, AChipThatComesBackWithoutAFrequencyHasNone) {
  ASSERT_EQ(Frequency(), DDAL_OK);
  m_fans.Unbind();
  m_fans.Bind(5);
  m_fans.Remove("pwm1_freq");
  EXPECT_EQ(Frequency(), DDAL_ERR_NOT_SUPPORTED);
}

TEST_F(HwmonFanTest, ThreadsUseAFanWhileItsChipComesAndGoes) {
  const auto expected = [](int error) {
    return error == DDAL_OK || error == DDAL_ERR_NO_DEVICE || error == DDAL_ERR_IO;
  };
  const auto use = [&](u32 fan) {
    for (u32 i = 0; i < 200; ++i) {
      int value = 0;
      EXPECT_TRUE(expected(ddal_fan_get_rpm(fan, &value)));
      EXPECT_TRUE(expected(ddal_fan_get_pwm(0, &value)));
      EXPECT_TRUE(expected(ddal_fan_set_pwm(fan, i % 101)));
    }
  };
  std::thread first(use, 0u), second(use, 1u);
  for (int i = 3; i < 20; ++i) {
    m_fans.Unbind();
    m_fans.Bind(i);
  }
  first.join();
  second.join();
  EXPECT_EQ(ddal_fan_set_pwm(0, 60), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");
}

}  // namespace
