/// @file
/// The two versions of the speed request, and the fixture of their tests.
#pragma once

#include "FanTest.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <vector>

namespace ps::hwapi::common::climate {

/// A version of the request. The second one carries a period.
struct SpeedVersion {
  const char* name;
  std::string message;  ///< beginning of the names of request and response
  std::string logName;  ///< name in the arrival and outcome lines
  u32 requestId;
  u32 responseId;
  bool hasPeriod;
  u32 head;                ///< bytes before a request's items
  std::size_t numOfItems;  ///< offset in the response

  friend std::ostream& operator<<(std::ostream& out, const SpeedVersion& version) { return out << version.name; }
};

inline const SpeedVersion kVersion1 = {.name = "Version1",
                                       .message = "API_SET_FAN_SPEED",
                                       .logName = "ApiSetFanSpeedReqMsg",
                                       .requestId = 0x2C15,
                                       .responseId = 0x2C16,
                                       .hasPeriod = false,
                                       .head = 12,
                                       .numOfItems = 40};
inline const SpeedVersion kVersion2 = {.name = "Version2",
                                       .message = "API2_SET_FAN_SPEED",
                                       .logName = "Api2SetFanSpeedReqMsg",
                                       .requestId = 0x2CF1,
                                       .responseId = 0x2CF2,
                                       .hasPeriod = true,
                                       .head = 16,
                                       .numOfItems = 44};

/// What a request says.
struct SpeedRequest {
  u32 receiver = 0;
  u32 timePeriod = 20;
  std::optional<u32> numOfItems = {};  ///< as many as there are when it is not given
  std::vector<u32> items = {201, 40};  ///< fan and speed of each
};

class FanSpeedTest : public FanTest {
 protected:
  static fake::Message MessageOf(const SpeedVersion& version, fake::Bytes payload) {
    return {.id = version.requestId, .payload = std::move(payload), .sender = kRequester, .receiver = kFanEndpoint};
  }
  static fake::Message MessageOf(const SpeedVersion& version, const SpeedRequest& request) {
    std::vector<u32> words = {7, request.receiver};
    if (version.hasPeriod) words.push_back(request.timePeriod);
    words.push_back(request.numOfItems.value_or(static_cast<u32>(request.items.size() / 2)));
    words.insert(words.end(), request.items.begin(), request.items.end());
    return MessageOf(version, Words(words));
  }

  /// @return the response
  template <typename Content>
  static fake::Message Ask(const SpeedVersion& version, const Content& content) {
    return AnswerTo(MessageOf(version, content), version.responseId);
  }

  static std::vector<fake::Call> SpeedCalls() { return fake::Calls("ddal_fan_set_pwm"); }
  /// The calls that tell the platform about the state of the service.
  static std::vector<fake::Call> StateCalls() {
    return fake::Calls({"Service::SetServiceStateRad", "Service::SetUseCommonServiceState"});
  }
};

/// Tests that hold for both versions.
class EachFanSpeedVersionTest : public FanSpeedTest, public testing::WithParamInterface<SpeedVersion> {
 protected:
  template <typename Content>
  static fake::Message RequestOf(const Content& content) {
    return MessageOf(GetParam(), content);
  }
  template <typename Content>
  static fake::Message Ask(const Content& content) {
    return FanSpeedTest::Ask(GetParam(), content);
  }
  /// @return number of items and items of a response
  static std::vector<u32> ItemsOf(const fake::Message& response) { return WordsFrom(response, GetParam().numOfItems); }

  static bool LoggedDebug(const std::string& text) {
    return fake::HasLogLine(EAaSysLogSeverityLevel_Debug, GetParam().logName + text);
  }
  /// @return whether the size error was logged
  static testing::AssertionResult LoggedSizes(u32 actual, u32 expected) {
    return fake::Logged(EAaSysLogSeverityLevel_Error, "Message payload size seems wrong in " + GetParam().message +
                                                          "_REQ_MSG (size " + std::to_string(actual) +
                                                          " != calculated size " + std::to_string(expected) + ")");
  }
};

/// Instantiates a suite for both versions.
#define INSTANTIATE_FOR_BOTH_SPEED_VERSIONS(suite)                             \
  INSTANTIATE_TEST_SUITE_P(Both, suite, testing::Values(kVersion1, kVersion2), \
                           [](const auto& test) { return std::string(test.param.name); })

}  // namespace ps::hwapi::common::climate
