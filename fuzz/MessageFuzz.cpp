/// One made-up message to a started service. The entry has the name and form that libFuzzer calls.
#include "ClimateService.h"
#include "HwapiException.h"
#include "fake/Board.h"
#include "fake/Hardware.h"
#include "fake/Log.h"
#include "fake/Messages.h"
#include "fake/Platform.h"
#include "fake/Recorder.h"
#include "fake/Service.h"
#include "messages/MessageIds.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using ps::hwapi::common::MsgHandlingException;
using ps::hwapi::common::climate::ClimateService;

constexpr u32 kIds[] = {API_SET_FAN_PWM_FREQ_REQ_MSG,    API_SET_FAN_SPEED_REQ_MSG,
                        API2_SET_FAN_SPEED_REQ_MSG,      API_FAN_SPEED_POLL_TIMER_IND_MSG,
                        API_TEMP_MEAS_REQ_MSG,           API_TEMPERATURE_POLL_TIMER_IND_MSG,
                        API_STORE_BLACKBOX_DATA_REQ_MSG, API_BLACKBOX_STORE_FILE_REQ_MSG};
constexpr u32 kFans = 3;
constexpr u8 kOtherEndianBit = 0x80;
constexpr u8 kIdBits = 0x7F;

/// The service under test, on a board with three fans. Lives as long as the program.
ClimateService& StartedService() {
  static ClimateService* const service = [] {
    fake::Reset();
    fake::Unit() = {.type = EUnitType_Kel, .version = EUnitVersion_Kelf};
    for (u32 fan = 0; fan < kFans; ++fan) fake::SetFan(fan, {.rpm = 3000});
    auto* const started = new ClimateService;
    fake::ServeTask(0x4B6);
    started->Init();
    return started;
  }();
  return *service;
}

void Forget() {
  fake::Clear();
  fake::ClearLog();
  fake::ClearSentMessages();
}

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "message_fuzz: %s\n", what);
  std::abort();
}

void Check() {
  if (const auto violations = fake::Violations(); !violations.empty()) Fail(violations.front().c_str());
  if (fake::LiveMessages() != 0) Fail("a message was neither sent nor destroyed");
}

}  // namespace

/// @param data first byte: which message, and whether it is in the other byte order; the rest is its payload
extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                                                             std::size_t size) {
  if (size == 0) return 0;
  StartedService();
  fake::Message message;
  message.id = kIds[(data[0] & kIdBits) % std::size(kIds)];
  message.otherEndian = (data[0] & kOtherEndianBit) != 0;
  message.sender = 0x01018000;
  message.receiver = 0x010104B6;
  message.payload.assign(data + 1, data + size);
  try {
    fake::Dispatch(message);
  } catch (const MsgHandlingException&) {
    // The receive loop logs it and goes on.
  }
  Check();
  Forget();
  return 0;
}
