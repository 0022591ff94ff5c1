/// How many fans a unit version has, what fans and frequencies are called, and the info text of responses.
#include "ServiceOnBoard.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kUntouched = 77;

class FanTablesTest : public ServiceOnBoardTest {
 protected:
  /// Counts the fans of a unit version.
  EStatus CountFansOf(u32 version) {
    Start(EUnitVersion{version});
    return m_service->MapUnitVersionToFans(&m_count);
  }

  u32 m_count = kUntouched;
};

struct FansOf {
  u32 version;
  u32 fans;
};

class FanCountTest : public FanTablesTest, public testing::WithParamInterface<FansOf> {};

TEST_P(FanCountTest, FollowsFromTheUnitVersion) {
  EXPECT_EQ(CountFansOf(GetParam().version), 0u);
  EXPECT_EQ(m_count, GetParam().fans);
  EXPECT_TRUE(fake::Calls("ddal_bp_3hu_backplane_type_get").empty());
}

INSTANTIATE_TEST_SUITE_P(Versions, FanCountTest,
                         testing::Values(FansOf{15, 2}, FansOf{16, 2}, FansOf{24, 2}, FansOf{30, 2}, FansOf{33, 2},
                                         FansOf{39, 2}, FansOf{58, 2}, FansOf{26, 3}, FansOf{27, 3}, FansOf{28, 3},
                                         FansOf{41, 3}, FansOf{25, 0}, FansOf{31, 0}, FansOf{43, 0}, FansOf{51, 0}),
                         [](const auto& test) { return "Version" + std::to_string(test.param.version); });

TEST_F(FanTablesTest, VersionWithoutARowIsAnInvalidParameterAndLeavesTheCount) {
  constexpr u32 kRows[] = {15, 16, 17, 18, 24, 25, 26, 27, 28, 30, 31, 33, 39, 41, 43, 51, 58};
  for (u32 version = 0; version < 100; ++version) {
    if (std::ranges::find(kRows, version) != std::end(kRows)) continue;
    EXPECT_EQ(CountFansOf(version), 4u) << version;
    EXPECT_EQ(m_count, kUntouched) << version;
  }
}

struct Cabinet {
  u32 version;
  int backplane;
  u32 fans;
  const char* line;
};

class CabinetTest : public FanTablesTest, public testing::WithParamInterface<Cabinet> {};

TEST_P(CabinetTest, DecidesHowManyFansThereAre) {
  fake::Board().backplaneType = GetParam().backplane;
  EXPECT_EQ(CountFansOf(GetParam().version), 0u);
  EXPECT_EQ(m_count, GetParam().fans);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info, GetParam().line));
}

constexpr const char* k2Hu = "Climate Service is running in 2HU indoor cabinet";
constexpr const char* k3Hu = "Climate Service is running in 3HU indoor cabinet";

INSTANTIATE_TEST_SUITE_P(Backplanes, CabinetTest,
                         testing::Values(Cabinet{17, 1, 3, k2Hu}, Cabinet{17, 0, 2, k3Hu}, Cabinet{17, 2, 2, k3Hu},
                                         Cabinet{17, -1, 2, k3Hu}, Cabinet{18, 1, 3, k2Hu}, Cabinet{18, 0, 2, k3Hu}));

TEST_F(FanTablesTest, BackplaneThatCannotBeReadIsAnInvalidParameterAndLeavesTheCount) {
  for (const u32 version : {17u, 18u}) {
    fake::FailEvery("ddal_bp_3hu_backplane_type_get", -5);
    EXPECT_EQ(CountFansOf(version), 4u);
    EXPECT_EQ(m_count, kUntouched);
    EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error, "Indoor backplane type reading failed!"));
  }
}

TEST_F(FanTablesTest, BackplaneIsReadOnceTheFanEndpointIsAnnounced) {
  fake::Unit().version = EUnitVersion_Kelc;
  m_service.emplace().Init();
  EXPECT_TRUE(fake::CalledInOrder({{"AaConfigTagPublicSet", "app.hwapi.online.4ad"},
                                   {"ddal_bp_3hu_backplane_type_get"},
                                   {"Service::AddMsgDelegate", 0x2C13}}));
}

TEST_F(FanTablesTest, BackplaneThatCannotBeReadAtStartUpMeansTwoFans) {
  fake::FailEvery("ddal_bp_3hu_backplane_type_get", -5);
  fake::Unit().version = EUnitVersion_Kelc;
  m_service.emplace().Init();
  const auto errors = fake::LogTexts(EAaSysLogSeverityLevel_Error);
  const auto reading = std::ranges::find(errors, "Indoor backplane type reading failed!");
  ASSERT_NE(reading, errors.end());
  EXPECT_NE(std::find(reading, errors.end(),
                      "HWAPI_FAN_SERVICE is running on a unsupported unit version: 17 (0x11), default number of fans: "
                      "2"),
            errors.end());
}

TEST_F(FanTablesTest, CabinetDecidesAtStartUpWhatPollingReports) {
  fake::Board().backplaneType = 1;
  Start(EUnitVersion_Keld);
  fake::Dispatch({.id = 0x2C78, .payload = Words({7, kOtherClient})});
  ASSERT_EQ(fake::SentMessages(0x2C17).size(), 1u);
  EXPECT_EQ(WordAt(fake::SentMessages(0x2C17)[0], 4), 3u);
}

TEST_F(FanTablesTest, UnitWithoutFansHasNoFanHandlers) {
  Start(EUnitVersion_Zun);
  for (const u32 id : {0x2C13u, 0x2C15u, 0x2CF1u, 0x2C78u}) {
    EXPECT_FALSE(fake::Dispatch({.id = id, .payload = Words({1, 0, 0})})) << id;
  }
}

TEST_F(FanTablesTest, FansAreKnownToTheDriverByTheirIndex) {
  ddal_fan_id_t id = kUntouched;
  EXPECT_EQ(ClimateService::GetFanId(EFanUnit{201}, &id), 0u);
  EXPECT_EQ(id, 0u);
  EXPECT_EQ(ClimateService::GetFanId(EFanUnit{202}, &id), 0u);
  EXPECT_EQ(id, 1u);
  EXPECT_EQ(ClimateService::GetFanId(EFanUnit{203}, &id), 0u);
  EXPECT_EQ(id, 2u);
}

TEST_F(FanTablesTest, OtherFansAreInvalid) {
  ddal_fan_id_t id = kUntouched;
  for (u32 fan = 0; fan < 300; ++fan) {
    if (fan >= 201 && fan <= 203) continue;
    EXPECT_EQ(ClimateService::GetFanId(static_cast<EFanUnit>(fan), &id), 4u) << fan;
  }
  EXPECT_EQ(id, kUntouched);
}

TEST_F(FanTablesTest, InvalidFanIsLoggedInHexadecimal) {
  ddal_fan_id_t id = 0;
  ClimateService::GetFanId(EFanUnit{155}, &id);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Invalid EFanUnit: 0x9b"));
}

TEST_F(FanTablesTest, FrequencyCodesMeanTheirHertz) {
  int hertz = 0;
  EXPECT_EQ(ClimateService::GetPwmFreqInHz(EFanParam{3}, &hertz), 0u);
  EXPECT_EQ(hertz, 1000);
  EXPECT_EQ(ClimateService::GetPwmFreqInHz(EFanParam{1}, &hertz), 0u);
  EXPECT_EQ(hertz, 5000);
  EXPECT_EQ(ClimateService::GetPwmFreqInHz(EFanParam{2}, &hertz), 0u);
  EXPECT_EQ(hertz, 25000);
}

TEST_F(FanTablesTest, OtherFrequencyCodesAreInvalid) {
  int hertz = kUntouched;
  EXPECT_EQ(ClimateService::GetPwmFreqInHz(EFanParam{0}, &hertz), 4u);
  EXPECT_EQ(ClimateService::GetPwmFreqInHz(static_cast<EFanParam>(4), &hertz), 4u);
  EXPECT_EQ(hertz, static_cast<int>(kUntouched));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Invalid EFanParam: 4"));
}

TEST_F(FanTablesTest, HertzAreConvertedToTheirCodes) {
  EFanParam param{};
  EXPECT_EQ(ClimateService::ConvertPwmFreqToEFanParam(1000, &param), 0u);
  EXPECT_EQ(param, 3u);
  EXPECT_EQ(ClimateService::ConvertPwmFreqToEFanParam(5000, &param), 0u);
  EXPECT_EQ(param, 1u);
  EXPECT_EQ(ClimateService::ConvertPwmFreqToEFanParam(25000, &param), 0u);
  EXPECT_EQ(param, 2u);
}

TEST_F(FanTablesTest, HertzThatMatchNoCodeExactlyAreInvalid) {
  EFanParam param = EFanParam_PwmFreq25k;
  for (const int hertz : {0, 3000, 999, 1001, 5001, 24999}) {
    EXPECT_EQ(ClimateService::ConvertPwmFreqToEFanParam(hertz, &param), 4u) << hertz;
  }
  EXPECT_EQ(param, EFanParam_PwmFreq25k);
}

TEST_F(FanTablesTest, InvalidHertzAreLoggedInWholeKilohertz) {
  EFanParam param{};
  ClimateService::ConvertPwmFreqToEFanParam(3000, &param);
  ClimateService::ConvertPwmFreqToEFanParam(999, &param);
  ClimateService::ConvertPwmFreqToEFanParam(-3999, &param);
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Warning),
            (std::vector<std::string>{"Invalid frequency rate 3 kHz to be converted",
                                      "Invalid frequency rate 0 kHz to be converted",
                                      "Invalid frequency rate -3 kHz to be converted"}));
}

/// A field of 32 bytes and what follows it, filled before.
class InfoTextTest : public testing::Test {
 protected:
  InfoTextTest() { m_bytes.fill('#'); }

  std::string Fill(const std::string& text) {
    ClimateService::ClearAndFillInfotext(m_bytes.data(), text.c_str());
    return std::string(m_bytes.begin(), m_bytes.end());
  }

  std::array<unsigned char, 36> m_bytes{};
};

TEST_F(InfoTextTest, ShortTextIsFollowedByZeros) { EXPECT_EQ(Fill("fans"), "fans" + std::string(28, '\0') + "####"); }

TEST_F(InfoTextTest, EmptyTextClearsTheField) { EXPECT_EQ(Fill(""), std::string(32, '\0') + "####"); }

TEST_F(InfoTextTest, TextOf31CharactersKeepsATerminatingZero) {
  EXPECT_EQ(Fill(std::string(31, 'x')), std::string(31, 'x') + '\0' + "####");
}

TEST_F(InfoTextTest, TextOf32CharactersFillsTheFieldWithoutATerminatingZero) {
  EXPECT_EQ(Fill(std::string(32, 'x')), std::string(32, 'x') + "####");
}

TEST_F(InfoTextTest, LongerTextIsCutTo31Characters) {
  EXPECT_EQ(Fill(std::string(33, 'x')), std::string(31, 'x') + '\0' + "####");
  EXPECT_EQ(Fill(std::string(100, 'y')), std::string(31, 'y') + '\0' + "####");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
