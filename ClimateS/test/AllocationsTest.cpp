/// What the service takes of the memory for requests that come again and again: nothing.
#include "BlackBoxTest.h"
#include "FailingMemory.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

constexpr TAaSysComSicad kFanService = 0x010104AD;
constexpr u32 kOcxo = 0x60006;

/// The service; its base is the recording platform's, whose allocations do not count.
class ServiceUnderCount : public ClimateService {
 public:
  void SetServiceStateRad(unsigned state) override {
    const EnoughMemory memory;
    ClimateService::SetServiceStateRad(state);
  }
};

/// A message that comes again and again.
struct Repeated {
  const char* name;
  void (ClimateService::*handler)(void* msg);
  u32 id;
  std::vector<u32> words;
  bool otherEndian = false;

  friend std::ostream& operator<<(std::ostream& out, const Repeated& repeated) { return out << repeated.name; }
};

const Repeated kRepeated[] = {
    {"TemperatureStart", &ClimateService::HandleApiTempMeasReqMsg, 0x2B29, {0, 6, 1000, 0, 0}},
    {"TemperatureStop", &ClimateService::HandleApiTempMeasReqMsg, 0x2B29, {1, 6, 1000, 0, 0}},
    {"TemperatureRefusal", &ClimateService::HandleApiTempMeasReqMsg, 0x2B29, {2, 6, 1000, 0, 0}},
    {"TemperaturePoll", &ClimateService::HandleApiTemperaturePollTimerIndMsg, 0x203F, {6}},
    {"TemperaturePollOfLongNames", &ClimateService::HandleApiTemperaturePollTimerIndMsg, 0x203F, {9}},
    {"TemperaturePollOfASensorThatFails", &ClimateService::HandleApiTemperaturePollTimerIndMsg, 0x203F, {7}},
    {"FanFrequency", &ClimateService::HandleApiSetFanPwmFreqReqMsg, 0x2C13, {7, 2, 201, 2, 155, 2}},
    {"FanSpeed", &ClimateService::HandleApiSetFanSpeedReqMsg, 0x2C15, {7, 0, 2, 201, 40, 155, 50}},
    {"FanSpeed2", &ClimateService::HandleApi2SetFanSpeedReqMsg, 0x2CF1, {7, 0, 20, 2, 201, 40, 155, 50}},
    {"FanSpeedOfTheOtherByteOrder",
     &ClimateService::HandleApiSetFanSpeedReqMsg,
     0x2C15,
     {0x07000000, 0, 0x01000000, 0xC9000000, 0x28000000},
     true},
    {"FanPoll", &ClimateService::HandleFanSpeedPollTimerIndMsg, 0x2C78, {7, kRequester}},
};

class AllocationsTest : public fake::PlatformTest, public testing::WithParamInterface<Repeated> {
 protected:
  AllocationsTest() {
    fake::Unit() = {.type = EUnitType_Kel, .version = EUnitVersion_Vyda};  // long names, three fans and a black box
    for (u32 device = 0x60000; device < 0x60030; ++device) fake::SetTemperature(device, 41000);
    fake::FailTemperature(kOcxo, DDAL_ERR_IO);
    fake::SetRfRegister(0, 0x3268, 1);
    fake::SetRfChain(0, 1);
    for (ddal_fan_id_t fan = 0; fan < 2; ++fan) fake::SetFan(fan, {});
    m_service.Init();
    for (const char* sensor : {"MCU", "OCXO", "RFP1_PA", "RFP1_RF_ASIC_ENV"}) {
      BlackBoxData::getInstance()->addSensor(sensor);
    }
  }

  /// @return how many allocations the handler of the message makes
  unsigned Handle() {
    const Repeated& repeated = GetParam();
    const fake::ReceivedMessage received({.id = repeated.id,
                                          .payload = Words(repeated.words),
                                          .sender = kRequester,
                                          .receiver = kFanService,
                                          .otherEndian = repeated.otherEndian});
    const CountedAllocations counted;
    (m_service.*repeated.handler)(received);
    return counted.Count();
  }

  BlackBoxBoard m_board;
  ServiceUnderCount m_service;
};

TEST_P(AllocationsTest, ThereAreNoneOnceItRuns) {
  BlackBoxData::getInstance()->enableTemperatureTrace();
  Handle();
  EXPECT_EQ(BlackBoxData::getInstance()->isTemperatureTraceEnabled(), 1u);
  EXPECT_EQ(Handle(), 0u);
}

INSTANTIATE_TEST_SUITE_P(For, AllocationsTest, testing::ValuesIn(kRepeated),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace ps::hwapi::common::climate
