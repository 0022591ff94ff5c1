#include "FanNames.h"

#include "Refusal.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

TEST(Fan, IsKnownByItsNumber) {
  EXPECT_EQ(ParseFan("201"), EFanUnit_GarFan1);
  EXPECT_EQ(ParseFan("203"), EFanUnit_GarFan3);
  EXPECT_EQ(ParseFan("0x9b"), EFanUnit_GarFan4);
}

TEST(Fan, IsKnownByItsNameInAnySpelling) {
  for (const char* name : {"GAR_FAN2", "gar_fan2", "GarFan2", "EFanUnit_GarFan2"}) {
    EXPECT_EQ(ParseFan(name), EFanUnit_GarFan2) << name;
  }
}

TEST(Fan, OfTheEnumerationIsAcceptedThoughNotServed) {
  EXPECT_EQ(ParseFan("155"), EFanUnit_GarFan4);
  EXPECT_EQ(ParseFan("GAR_FAN8"), EFanUnit_GarFan8);
}

TEST(Fan, OfAnotherNameIsRefusedWithTheFansThereAre) {
  for (const char* text : {"", "0", "1", "204", "154", "160", "GAR_FAN9", "GAR_FAN", "fan1", "EFanUnit_", "20 1"}) {
    EXPECT_NE(Refusal([text] { ParseFan(text); }).find("GAR_FAN1 to GAR_FAN3"), std::string::npos) << text;
  }
}

TEST(Fan, ReadsBackAsItIsWritten) {
  for (const EFanUnit fan : {EFanUnit_GarFan1, EFanUnit_GarFan2, EFanUnit_GarFan3, EFanUnit_GarFan4, EFanUnit_GarFan5,
                             EFanUnit_GarFan6, EFanUnit_GarFan7, EFanUnit_GarFan8}) {
    EXPECT_EQ(ParseFan(FanText(fan)), fan);
  }
  EXPECT_EQ(FanText(7), "7");
}

TEST(Frequency, HasItsUnit) {
  EXPECT_EQ(ParseFrequency("1kHz"), EFanParam_PwmFreq1k);
  EXPECT_EQ(ParseFrequency("5000Hz"), EFanParam_PwmFreq5k);
  EXPECT_EQ(ParseFrequency("25khz"), EFanParam_PwmFreq25k);
  EXPECT_EQ(ParseFrequency("5.0kHz"), EFanParam_PwmFreq5k);
}

TEST(Frequency, OfAnotherValueIsRefusedWithThoseThereAre) {
  for (const char* text : {"", "25", "kHz", "3kHz", "25kHzz", "0.025MHz", "1e3Hz", "nan", "-5kHz"}) {
    EXPECT_NE(Refusal([text] { ParseFrequency(text); }).find("1kHz, 5kHz or 25kHz"), std::string::npos) << text;
  }
}

TEST(Frequency, IsShownInKilohertz) {
  EXPECT_EQ(FrequencyText(EFanParam_PwmFreq25k), "25 kHz");
  EXPECT_EQ(FrequencyText(0), "-");
  EXPECT_EQ(FrequencyHertz(EFanParam_PwmFreq5k), 5000u);
  EXPECT_EQ(FrequencyHertz(9), std::nullopt);
}

TEST(Status, HasANameAndItsNumber) {
  EXPECT_EQ(StatusText(EStatus_NoError), "ok");
  EXPECT_EQ(StatusText(EStatus_InvalidParam), "refused: InvalidParam (4)");
  EXPECT_EQ(StatusText(99), "refused: Unknown (99)");
}

}  // namespace
}  // namespace clmctl
