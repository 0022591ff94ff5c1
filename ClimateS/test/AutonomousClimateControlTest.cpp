/// The operating system's own climate control is stopped by the first fan request of a process. That each test sees a
/// first one, it sends its requests in a child of a process that has sent none, which is why these tests are a program
/// of their own: whichever of them run, and however often, their process sends no fan request.
#include "ServiceOnBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kSetPwmFreq = 0x2C13;
constexpr u32 kSetSpeed = 0x2C15;
constexpr u32 kSetSpeed2 = 0x2CF1;

constexpr const char* kStopLine = "ddal_temp_set_autonomous_climate_ctrl(DDAL_TEMP_AUTONOMOUS_CLIMATE_CTRL_STOP)";
constexpr const char* kStopped =
    "2 ddal_temp_set_autonomous_climate_ctrl(DDAL_TEMP_AUTONOMOUS_CLIMATE_CTRL_STOP)\n"
    "2 ROQ temperature management succesfully killed\n";

class AutonomousClimateControlDeathTest : public fake::PlatformTest {
 protected:
  /// Prints level and text of the lines, from a level on, that requests with these ids log.
  [[noreturn]] static void RequestAndExit(const std::vector<u32>& ids, const fake::Bytes& payload,
                                          EAaSysLogSeverityLevel from = EAaSysLogSeverityLevel_Info) {
    fake::Unit() = {.type = EUnitType_Vyd, .version = EUnitVersion_Vyda};
    for (ddal_fan_id_t fan = 0; fan < 3; ++fan) fake::SetFan(fan, {});
    ClimateService service;
    service.Init();
    fake::ClearLog();
    for (const u32 id : ids) {
      try {
        fake::Dispatch({.id = id, .payload = payload, .sender = 0x01020345, .receiver = 0x010104AD});
      } catch (const MsgHandlingException&) {
        // Requests without a payload are refused; what they stop before that is looked at.
      }
    }
    for (const fake::LogLine& line : fake::LogLines()) {
      if (line.level >= from) std::fprintf(stderr, "%u %s\n", u32{line.level}, line.text.c_str());
    }
    std::exit(0);
  }
};

/// Says in which order the first request's payload is looked at and the control is stopped.
[[noreturn]] void SayOrderAndExit(u32 id) {
  fake::Unit() = {.type = EUnitType_Vyd, .version = EUnitVersion_Vyda};
  ClimateService service;
  service.Init();
  fake::Clear();
  fake::Dispatch({.id = id, .payload = Words({77, 0, 0, 0, 0, 0}), .sender = 0x01020345, .receiver = 0x010104AD});
  for (const fake::Call& call : fake::Calls({"AaSysComMsgGetPayloadSize", "AaSysComMsgGetPayload", "AaSysLogPrintE"})) {
    const bool isStop = call.arguments.size() > 2 && call.arguments[2] == fake::Value(kStopLine);
    if (call.function != "AaSysLogPrintE" || isStop) std::fprintf(stderr, "%s ", call.function.c_str());
    if (call.function == "AaSysComMsgGetPayload") break;
  }
  std::exit(0);
}

/// Each of the requests that set something.
class FanSettingDeathTest : public AutonomousClimateControlDeathTest, public testing::WithParamInterface<u32> {};

TEST_P(FanSettingDeathTest, TheFirstRequestStopsTheAutonomousControl) {
  EXPECT_EXIT(RequestAndExit({GetParam()}, {}), testing::ExitedWithCode(0), testing::Eq(kStopped));
}

TEST_P(FanSettingDeathTest, TheControlIsStoppedBetweenThePayloadsSizeAndThePayload) {
  EXPECT_EXIT(SayOrderAndExit(GetParam()), testing::ExitedWithCode(0),
              testing::Eq("AaSysComMsgGetPayloadSize AaSysLogPrintE AaSysComMsgGetPayload "));
}

INSTANTIATE_TEST_SUITE_P(Request, FanSettingDeathTest, testing::Values(kSetPwmFreq, kSetSpeed, kSetSpeed2),
                         testing::PrintToStringParamName());

TEST_F(AutonomousClimateControlDeathTest, ItIsStoppedOnce) {
  EXPECT_EXIT(RequestAndExit({kSetPwmFreq, kSetPwmFreq, kSetSpeed, kSetSpeed2}, {}), testing::ExitedWithCode(0),
              testing::Eq(kStopped));
}

TEST_F(AutonomousClimateControlDeathTest, AGoodRequestLogsNothingElse) {
  EXPECT_EXIT(RequestAndExit({kSetPwmFreq}, Words({77, 1, 201, 2})), testing::ExitedWithCode(0), testing::Eq(kStopped));
}

TEST_F(AutonomousClimateControlDeathTest, ItIsStoppedBeforeTheRequestIsLogged) {
  EXPECT_EXIT(RequestAndExit({kSetPwmFreq}, Words({77, 1, 201, 2}), EAaSysLogSeverityLevel_Debug),
              testing::ExitedWithCode(0),
              testing::Eq(std::string(kStopped) + "1 ApiSetFanPwmFreqReqMsg message arrived 77 1 0xc9 2 0x0 0 0x0 0\n"
                                                  "1 ApiSetFanPwmFreqReqMsg message handled, status: 0x0\n"));
}

TEST_F(AutonomousClimateControlDeathTest, AnExpiryOfThePollTimerDoesNotStopIt) {
  EXPECT_EXIT(RequestAndExit({0x2C78}, Words({7, 0x01020345})), testing::ExitedWithCode(0),
              testing::Not(testing::HasSubstr("CLIMATE_CTRL")));
}

TEST_F(AutonomousClimateControlDeathTest, ATemperatureRequestDoesNotStopIt) {
  EXPECT_EXIT(RequestAndExit({0x2B29}, Words({0, 6, 1000, 0, 0})), testing::ExitedWithCode(0), testing::Eq(""));
}

TEST_F(AutonomousClimateControlDeathTest, StartingUpDoesNotStopIt) {
  EXPECT_EXIT(RequestAndExit({}, {}), testing::ExitedWithCode(0), testing::Eq(""));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
