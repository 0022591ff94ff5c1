#include "FanText.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace clmctl {
namespace {

const FanIndication kTwoFans{.readings = {{.fan = EFanUnit_GarFan1, .rpm = 3100, .frequency = EFanParam_PwmFreq25k},
                                          {.fan = EFanUnit_GarFan2, .rpm = 0, .frequency = 0}}};

TEST(FanLines, HaveColumnsThatDoNotMove) {
  EXPECT_EQ(FanLines(kTwoFans, "T"),
            "T  GAR_FAN1           3100 rpm  25 kHz  ok\n"
            "T  GAR_FAN2              0 rpm       -  no speed\n");
}

TEST(FanObjects, TellWhatIsKnownAndNullForTheRest) {
  const auto objects = FanObjects(kTwoFans, 3, "T");
  ASSERT_EQ(objects.size(), 2u);
  EXPECT_EQ(objects[0].dump(),
            R"({"time":"T","indication":3,"fan":"GAR_FAN1","fan_number":201,"state":"ok","speed_rpm":3100,)"
            R"("pwm_frequency_hz":25000})");
  EXPECT_EQ(objects[1]["state"].get<std::string>(), "no speed");
  EXPECT_TRUE(objects[1]["pwm_frequency_hz"].is_null());
}

TEST(FanAnswerLines, ShowWhatWasAskedAndWhatBecameOfIt) {
  const FanAnswer answer{.status = EStatus_InvalidParam,
                         .info = "",
                         .periodSeconds = 8,
                         .fans = {{.fan = 201, .value = 60, .status = 0}, {.fan = 155, .value = 7, .status = 4}}};
  EXPECT_EQ(AnswerLines(answer, FanQuantity::Speed),
            "FAN          ASKED  STATUS\n"
            "GAR_FAN1       60%  ok\n"
            "GAR_FAN4        7%  refused: InvalidParam (4)\n");
}

TEST(FanAnswerObjects, HaveTheQuantityTheyAreAbout) {
  const FanAnswer answer{
      .status = 0, .info = "passed", .periodSeconds = 0, .fans = {{.fan = 201, .value = 2, .status = 0}}};
  const auto frequency = AnswerObjects(answer, FanQuantity::Frequency);
  ASSERT_EQ(frequency.size(), 1u);
  EXPECT_EQ(frequency[0]["pwm_frequency_hz"], 25000);
  EXPECT_FALSE(frequency[0].contains("period_seconds"));
  const auto speed = AnswerObjects(answer, FanQuantity::Speed);
  ASSERT_EQ(speed.size(), 1u);
  EXPECT_EQ(speed[0]["speed_percent"], 2);
  EXPECT_TRUE(speed[0].contains("period_seconds"));
}

}  // namespace
}  // namespace clmctl
