#include "FanSettings.h"

#include "Refusal.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

using std::chrono::seconds;

TEST(FanSpeeds, ArePerCentWithOrWithoutTheSign) {
  const auto settings = ParseFanSpeeds({"201=60", "GAR_FAN2=80%", "203=0", "155=100%"});
  ASSERT_EQ(settings.size(), 4u);
  EXPECT_EQ(settings[0].fan, EFanUnit_GarFan1);
  EXPECT_EQ(settings[0].value, 60u);
  EXPECT_EQ(settings[1].value, 80u);
  EXPECT_EQ(settings[2].value, 0u);
  EXPECT_EQ(settings[3].value, 100u);
}

TEST(FanSpeeds, OutsideTheirRangeAreRefused) {
  for (const char* word :
       {"201=101", "201=-1", "201=60.5", "201=", "201=%", "201=0x10", "201=fast", "201=4294967296"}) {
    EXPECT_NE(Refusal([word] { ParseFanSpeeds({word}); }).find("from 0 to 100"), std::string::npos) << word;
  }
}

TEST(FanSpeeds, WithoutAnEqualsSignAreRefusedWithAnExample) {
  EXPECT_NE(Refusal([] { ParseFanSpeeds({"60"}); }).find("201=60"), std::string::npos);
}

TEST(FanSpeeds, OfOneFanComeOnce) {
  EXPECT_NE(Refusal([] { ParseFanSpeeds({"201=60", "GAR_FAN1=70"}); }).find("second time"), std::string::npos);
}

TEST(FanFrequencies, AreThoseOfTheEnumeration) {
  const auto settings = ParseFanFrequencies({"201=25kHz", "202=1000Hz"});
  ASSERT_EQ(settings.size(), 2u);
  EXPECT_EQ(settings[0].value, EFanParam_PwmFreq25k);
  EXPECT_EQ(settings[1].value, EFanParam_PwmFreq1k);
}

TEST(FanPeriod, IsWholeSecondsOfTheServicesRange) {
  EXPECT_EQ(ParseFanPeriod("8s"), seconds(8));
  EXPECT_EQ(ParseFanPeriod("8000ms"), seconds(8));
  EXPECT_EQ(ParseFanPeriod("1min"), seconds(60));
  EXPECT_EQ(ParseFanPeriod("120s"), seconds(120));
}

TEST(FanPeriod, OutsideItsRangeIsRefusedWithIt) {
  for (const char* text : {"7s", "7999ms", "121s", "120001ms", "8500ms", "1h", "0s"}) {
    EXPECT_NE(Refusal([text] { ParseFanPeriod(text); }).find("8s to 120s"), std::string::npos) << text;
  }
  EXPECT_NE(Refusal([] { ParseFanPeriod("8"); }), "");
}

TEST(FanReceiver, IsAnAddressWithATask) {
  const SMessageAddress receiver = ParseFanReceiver("1/2/0x7000");
  EXPECT_EQ(receiver.board, 1);
  EXPECT_EQ(receiver.cpu, 2);
  EXPECT_EQ(receiver.task, 0x7000);
}

TEST(FanReceiver, WithoutATaskIsRefused) {
  EXPECT_NE(Refusal([] { ParseFanReceiver("1/2/0"); }), "");
}

}  // namespace
}  // namespace clmctl
