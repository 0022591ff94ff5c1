/// The black box behind the service: from requests and poll timers to the trace file.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

constexpr u32 kTempRequest = 0x2B29;
constexpr u32 kTempResponse = 0x2B2A;
constexpr u32 kTempPoll = 0x203F;
constexpr u32 kTempIndication = 0x2B2B;
constexpr u32 kFanFrequency = 0x2C13;
constexpr u32 kFanSpeed = 0x2C15;
constexpr u32 kFanSpeed2 = 0x2CF1;
constexpr u32 kFanPoll = 0x2C78;
constexpr u32 kStoreData = 0x43A2;
constexpr u32 kSubscribed = 0x2C62;
constexpr u32 kReset = 0x1134;
constexpr u32 kTagSet = 0x08E6;
constexpr u32 kResetInfo = 0x1177;
constexpr u32 kUnitIndication = 0x0BBE;

/// A service with a black box, on a board with sensors and fans.
class BlackBoxServiceTest : public ServiceOnBoardTest {
 protected:
  static constexpr EAaSysLogSeverityLevel kError = EAaSysLogSeverityLevel_Error;

  void StartOn(EUnitType type, EUnitVersion version) {
    fake::Unit().type = type;
    Start(version);
  }

  static fake::Message Request(u32 id, const std::vector<u32>& words) {
    return {.id = id, .payload = Words(words), .sender = kRequester};
  }
  static fake::Message StartMeasuring(u32 sensorType, u32 interval = 1000) {
    return Request(kTempRequest, {0, sensorType, interval, 0, 0});
  }
  static fake::Message SetSpeed() { return Request(kFanSpeed2, {7, 0, 20, 1, 201, 40}); }

  static bool Records() { return BlackBoxData::getInstance()->isTemperatureTraceEnabled() == 1; }

  /// Asks for the black-box files.
  static void Store() { EXPECT_EQ(Refusal(Request(kStoreData, {1})), ""); }

  /// @return line @p number of the trace file, from 1, tabs as '|'
  static std::string TraceLine(unsigned number) {
    std::string text = fake::FileContent(kTraceFile).value_or("");
    for (unsigned line = 1; line < number; ++line) text.erase(0, text.find('\n') + 1);
    text.resize(std::min(text.find('\n'), text.size()));
    std::replace(text.begin(), text.end(), '\t', '|');
    return text;
  }
  /// @return names of the columns
  static std::string Columns() {
    const std::string line = TraceLine(7);
    return line.substr(std::min<std::size_t>(line.size(), 20));
  }
  /// @return values of the first snapshot
  static std::string Values() {
    const std::string line = TraceLine(8);
    return line.substr(line.find('|') + 1);
  }

  BlackBoxBoard m_board;
};

TEST_F(BlackBoxServiceTest, AtTheStartNothingIsRecorded) {
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  EXPECT_FALSE(Records());
  Store();
  EXPECT_EQ(fake::FileContent(kTraceFile), std::nullopt);
  EXPECT_NE(fake::FileContent(kBoardFile), std::nullopt);
}

/// A message, and whether it lets the black box record readings.
struct Trigger {
  const char* name;
  u32 id;
  std::vector<u32> words;
  bool records;

  friend std::ostream& operator<<(std::ostream& out, const Trigger& trigger) { return out << trigger.name; }
};

class RecordingTriggerTest : public BlackBoxServiceTest, public testing::WithParamInterface<Trigger> {
 protected:
  RecordingTriggerTest() {
    StartOn(EUnitType_Kel, EUnitVersion_Kela);
    fake::SetTemperature(0x10005, 1);
    for (const u32 fan : {0u, 1u}) fake::SetFan(fan, {});
  }
};

TEST_P(RecordingTriggerTest, Records) {
  Refusal(Request(GetParam().id, GetParam().words));
  EXPECT_EQ(Records(), GetParam().records);
}

INSTANTIATE_TEST_SUITE_P(Message, RecordingTriggerTest,
                         testing::Values(Trigger{"StartOfAMeasurement", kTempRequest, {0, 7, 1000, 0, 0}, true},
                                         Trigger{"StartWithARefusedInterval", kTempRequest, {0, 7, 899, 0, 0}, true},
                                         Trigger{"StartOfATypeWithoutATimer", kTempRequest, {0, 4, 1000, 0, 0}, true},
                                         Trigger{"StartOfATypeWithoutAGroup", kTempRequest, {0, 9, 1000, 0, 0}, false},
                                         Trigger{"StartWithoutPayload", kTempRequest, {}, false},
                                         Trigger{"StopOfAMeasurement", kTempRequest, {1, 7, 1000, 0, 0}, false},
                                         Trigger{"UnknownTemperatureCommand", kTempRequest, {2, 7, 1000, 0, 0}, false},
                                         Trigger{"ExpiryOfATemperatureTimer", kTempPoll, {7}, false},
                                         Trigger{"FanSpeed", kFanSpeed, {7, 0, 1, 201, 40}, true},
                                         Trigger{"FanSpeedOfAnUnknownFan", kFanSpeed, {7, 0, 1, 999, 40}, true},
                                         Trigger{"FanSpeedWithoutPayload", kFanSpeed, {}, false},
                                         Trigger{"FanSpeed2", kFanSpeed2, {7, 0, 20, 1, 201, 40}, true},
                                         Trigger{
                                             "FanSpeed2WithARefusedPeriod", kFanSpeed2, {7, 0, 1, 1, 201, 40}, true},
                                         Trigger{"FanSpeed2WithoutPayload", kFanSpeed2, {}, false},
                                         Trigger{"FanFrequency", kFanFrequency, {7, 1, 201, 2}, false},
                                         Trigger{"ExpiryOfTheFanTimer", kFanPoll, {7, kOtherClient}, false},
                                         Trigger{"StoreData", kStoreData, {1}, false}),
                         testing::PrintToStringParamName());

/// A version of the request that sets the speed of fans.
struct SpeedRequest {
  u32 id;
  std::vector<u32> words;
  const char* logName;

  friend std::ostream& operator<<(std::ostream& out, const SpeedRequest& request) { return out << request.logName; }
};

class RecordingAfterSpeedRequestTest : public BlackBoxServiceTest, public testing::WithParamInterface<SpeedRequest> {
 protected:
  RecordingAfterSpeedRequestTest() {
    StartOn(EUnitType_Kel, EUnitVersion_Kela);
    fake::SetFan(0, {});
  }
  static void Ask() { EXPECT_EQ(Refusal(Request(GetParam().id, GetParam().words)), ""); }
  /// @return the debug line that tells the outcome
  static fake::Call Outcome(char status) {
    return {"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 131143,
            std::string(GetParam().logName) + " message handled, status: 0x" + status};
  }

  const fake::Call m_recording{"AaSysComEuCreateAndStart", "BlackBoxData"};
  const fake::Call m_answer{"AaSysComMsgSend", GetParam().id + 1};
};

TEST_P(RecordingAfterSpeedRequestTest, BeginsAlsoWhenPollingCannotBeStarted) {
  fake::FailEvery("AaSysTimermCreate");
  Ask();
  EXPECT_TRUE(Records());
}

TEST_P(RecordingAfterSpeedRequestTest, BeginsBetweenTheStartOfPollingAndTheOutcome) {
  Ask();
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysTimermCreate"}, m_recording, Outcome('0'), m_answer}));
}

TEST_P(RecordingAfterSpeedRequestTest, BeginsBetweenAFailedStartOfPollingAndTheOutcome) {
  fake::FailEvery("AaSysTimermCreate");
  Ask();
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgDestroy", kFanPoll}, m_recording, Outcome('1'), m_answer}));
}

INSTANTIATE_TEST_SUITE_P(Both, RecordingAfterSpeedRequestTest,
                         testing::Values(SpeedRequest{kFanSpeed, {7, 0, 1, 201, 40}, "ApiSetFanSpeedReqMsg"},
                                         SpeedRequest{kFanSpeed2, {7, 0, 20, 1, 201, 40}, "Api2SetFanSpeedReqMsg"}),
                         testing::PrintToStringParamName());

TEST_F(BlackBoxServiceTest, RecordingBeginsOnceASpeedRequestHasSetTheState) {
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  Refusal(Request(kFanSpeed, {7, 0, 1, 201, 40}));
  EXPECT_TRUE(fake::CalledInOrder({{"Service::SetUseCommonServiceState", 0},
                                   {"Service::SetServiceStateRad", 4097},
                                   {"AaSysComEuCreateAndStart", "BlackBoxData"}}));
}

TEST_F(BlackBoxServiceTest, LaterRequestsStartNoFurtherThreads) {
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  for (const u32 sensorType : {6u, 7u}) Refusal(StartMeasuring(sensorType));
  Refusal(SetSpeed());
  EXPECT_EQ(fake::Calls("AaSysComEuCreateAndStart").size(), 2u);
}

TEST_F(BlackBoxServiceTest, ReadingsBeforeTheFirstRequestAreDroppedSilently) {
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  fake::SetTemperature(0x10005, 41000);
  Refusal(Request(kTempPoll, {7}));
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
  Refusal(StartMeasuring(7));
  Store();
  EXPECT_EQ(TraceLine(3).find("41000"), std::string::npos);
}

TEST_F(BlackBoxServiceTest, AFailedSensorIsAnErrorInTheFile) {
  StartOn(EUnitType_Zun, EUnitVersion_Zun);
  fake::QueueTemperatures(0x10007, {{.value = 30000}, {.error = -3}});
  Refusal(StartMeasuring(6));
  Pass(1);
  Pass(1'000'000);
  Store();
  EXPECT_EQ(TraceLine(3), "MIN:|30000|");
  EXPECT_EQ(TraceLine(4), "MAX:|30000|");
  EXPECT_EQ(Values(), "error|");
}

TEST_F(BlackBoxServiceTest, TheExtremesOfAllPollsAreInTheFile) {
  StartOn(EUnitType_Zun, EUnitVersion_Zun);
  fake::QueueTemperatures(0x10007, {{.value = 30000}, {.value = 31000}, {.value = 29500}, {.value = 30200}});
  Refusal(StartMeasuring(6));
  Pass(1);
  Pass(3'000'000);
  Store();
  EXPECT_EQ(TraceLine(3), "MIN:|29500|");
  EXPECT_EQ(TraceLine(4), "MAX:|31000|");
  EXPECT_EQ(Values(), "30200|");
}

TEST_F(BlackBoxServiceTest, SpeedsAndFailedFansAreInTheFile) {
  StartOn(EUnitType_Kel, EUnitVersion_Kelbn);
  fake::SetFan(0, {.rpm = 3000});
  fake::SetFan(1, {.readError = 5});
  Refusal(SetSpeed());
  Pass(20'000'000);
  Store();
  EXPECT_EQ(Columns(), "GAR_FAN1|GAR_FAN2|");
  EXPECT_EQ(Values(), "3000|error|");
}

TEST_F(BlackBoxServiceTest, WithoutTheFanEndpointThereAreNoColumnsOfFans) {
  fake::FailCall("AaSysComUserRegister", 1);
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  Refusal(StartMeasuring(7));
  Store();
  EXPECT_EQ(Columns(), "KEL|KEL_ENV|KEL_INTAKE|KEL_MCU|KEL_OCXO|KEL_VORNIK|TOV|TOV_MCU|");
}

TEST_F(BlackBoxServiceTest, TheTraceGoesOnAfterAMeasurementIsStopped) {
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  Refusal(StartMeasuring(7));
  Refusal(Request(kTempRequest, {1, 7, 0, 0, 0}));
  EXPECT_TRUE(Records());
}

/// Plug-in units, which the one service of the process learns of.
class PlugInUnitTest : public BlackBoxServiceTest {
 protected:
  PlugInUnitTest() {
    fake::Unit().version = EUnitVersion_Kelf;
    fake::SetTag("app.hwapi.online.4b3", 6u);
    Service::Get().Init();
    Forget();
    Refusal(StartMeasuring(6));
  }
  static void Indicate(u32 state) {
    Refusal(Request(kUnitIndication, {state, 0x12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  }
  static bool IsInTheFile(const std::string& name) {
    Store();
    return Columns().find(name + "|") != std::string::npos;
  }
};

TEST_F(PlugInUnitTest, AUnitThatIsPluggedInGetsItsColumns) {
  EXPECT_FALSE(IsInTheFile("DAX1_MCU"));
  Indicate(0);
  EXPECT_TRUE(IsInTheFile("DAX1_MCU"));
}

TEST_F(PlugInUnitTest, AUnitThatIsPulledOutLosesItsColumns) {
  Indicate(0);
  Indicate(2);
  EXPECT_FALSE(IsInTheFile("DAX1_MCU"));
  EXPECT_TRUE(IsInTheFile("TOV_MCU"));
}

TEST_F(PlugInUnitTest, ItsReadingsAreInTheFile) {
  Indicate(0);
  fake::SetTemperature(0x20000, 51000);
  Refusal(Request(kTempPoll, {1}));
  Store();
  EXPECT_NE(Values().find("|51000|"), std::string::npos);
}

TEST_F(PlugInUnitTest, ItsExtremesStartAfreshWhenItComesBack) {
  for (const int thousandths : {51000, 52000}) {
    Indicate(2);
    Indicate(0);
    fake::SetTemperature(0x20000, thousandths);
    Refusal(Request(kTempPoll, {1}));
  }
  Store();
  for (const unsigned extremes : {3u, 4u}) {
    EXPECT_NE(TraceLine(extremes).find("|52000|"), std::string::npos) << TraceLine(extremes);
    EXPECT_EQ(TraceLine(extremes).find("51000"), std::string::npos) << TraceLine(extremes);
  }
}

/// A service whose black box could not be initialized.
class FailedBlackBoxTest : public BlackBoxServiceTest {
 protected:
  FailedBlackBoxTest() {
    fake::RemoveTag("app.hwapi.blackbox.sfp.file");
    StartOn(EUnitType_Kel, EUnitVersion_Kela);
  }
};

TEST_F(FailedBlackBoxTest, MeasuringWorks) {
  fake::SetTemperature(0x10005, 45500);
  EXPECT_EQ(AnswerTo(StartMeasuring(7), kTempResponse).payload, Words({0, 7, 0}));
  Pass(1);
  EXPECT_EQ(fake::SentMessages(kTempIndication).size(), 1u);
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(FailedBlackBoxTest, FanControlWorks) {
  for (const u32 fan : {0u, 1u}) fake::SetFan(fan, {.rpm = 3000});
  EXPECT_EQ(WordAt(AnswerTo(SetSpeed(), 0x2CF2), 4), 0u);
  Pass(20'000'000);
  EXPECT_EQ(fake::SentMessages(0x2C17).size(), 1u);
  EXPECT_EQ(fake::GetFan(0).control, 40);
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(FailedBlackBoxTest, NothingIsRecorded) {
  Refusal(StartMeasuring(7));
  EXPECT_FALSE(Records());
  EXPECT_THAT(fake::StartedThreads(), IsEmpty());
}

TEST_F(FailedBlackBoxTest, TheStoreRequestIsAnsweredAndWritesNothing) {
  EXPECT_EQ(AnswerTo(Request(kStoreData, {77}), 0x43A3).payload, Words({77, 0}));
  EXPECT_EQ(fake::FileContent(kBoardFile), std::nullopt);
}

TEST_F(FailedBlackBoxTest, TheHandlersOfResetsAreMissing) {
  for (const u32 id : {kSubscribed, kReset, kTagSet, kResetInfo}) EXPECT_FALSE(fake::Dispatch({.id = id})) << id;
}

TEST_F(BlackBoxServiceTest, TheHandlersOfResetsComeBeforeThoseOfTheStoreRequests) {
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  EXPECT_EQ(fake::RegisteredIds(),
            (std::vector<u32>{kTempRequest, kTempPoll, kFanFrequency, kFanSpeed, kFanSpeed2, kFanPoll, kSubscribed,
                              kReset, kTagSet, kResetInfo, kStoreData, 0x1302}));
}

TEST_F(BlackBoxServiceTest, TheEndpointIsAnnouncedOnceTheBlackBoxIsReady) {
  fake::Unit().version = EUnitVersion_Kela;
  m_service.emplace();
  m_service->Init();
  EXPECT_TRUE(fake::CalledInOrder({{"AaConfigTagPublicSet", "app.hwapi.online.4ad", fake::BytesOf(6u)},
                                   {"AaConfigTagGet", "app.hwapi.blackbox.config.file"},
                                   {"AaConfigTagRegister", "sys.hwapi.bootimage.link.created"},
                                   {"Service::AddMsgDelegate", kSubscribed},
                                   {"AaSysComUserRegister", 0x4D9},
                                   {"AaConfigTagPublicSet", "app.hwapi.online.4d9", fake::BytesOf(6u)}}));
}

TEST_F(BlackBoxServiceTest, ANewBootImageLinkLetsTheServiceWriteTheFiles) {
  StartOn(EUnitType_Kel, EUnitVersion_Kela);
  fake::SetTag("sys.hwapi.bootimage.link.created", 1u);
  EXPECT_EQ(fake::FileContent(kBoardFile), std::nullopt);
  EXPECT_EQ(fake::DispatchQueued(), 1u);
  EXPECT_NE(fake::FileContent(kBoardFile), std::nullopt);
  EXPECT_EQ(fake::TagValue("sys.hwapi.bootimage.link.created"), fake::BytesOf(0u));
  EXPECT_THAT(fake::QueuedMessages(), IsEmpty());
}

}  // namespace
}  // namespace ps::hwapi::common::climate
