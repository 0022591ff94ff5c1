#include "MessageFuzz.h"

#include "Boards.h"
#include "HwapiException.h"
#include "Steps.h"
#include "fake/Config.h"
#include "fake/Failures.h"
#include "fake/Files.h"
#include "fake/Platform.h"
#include "fake/Service.h"
#include "fake/Time.h"
#include "messages/MessageIds.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {
namespace {

using ps::hwapi::common::MsgHandlingException;
using ps::hwapi::common::climate::ClimateService;

/// Handlers that are registered on some boards or later than at the start, but hold on every started service.
struct Direct {
  u32 id;
  void (ClimateService::*handler)(void* msg);
};
constexpr Direct kDirect[] = {
    {.id = API_SET_FAN_PWM_FREQ_REQ_MSG, .handler = &ClimateService::HandleApiSetFanPwmFreqReqMsg},
    {.id = API_SET_FAN_SPEED_REQ_MSG, .handler = &ClimateService::HandleApiSetFanSpeedReqMsg},
    {.id = API2_SET_FAN_SPEED_REQ_MSG, .handler = &ClimateService::HandleApi2SetFanSpeedReqMsg},
    {.id = API_FAN_SPEED_POLL_TIMER_IND_MSG, .handler = &ClimateService::HandleFanSpeedPollTimerIndMsg},
    {.id = API_AUTODET_RESP_MSG, .handler = &ClimateService::HandleAutodetResp},
    {.id = API_AUTODET_UNIT_IND_MSG, .handler = &ClimateService::HandleAutodetUnitInd},
};

std::map<u32, Tally>& TheTallies() {
  static auto& tallies = *new std::map<u32, Tally>;
  return tallies;
}

/// @return whether there is a handler for the message
bool Handle(ClimateService& service, const fake::Message& message) {
  if (fake::Dispatch(message)) return true;
  for (const Direct& direct : kDirect) {
    if (direct.id != message.id) continue;
    const fake::ReceivedMessage received(message);
    (service.*direct.handler)(received);
    return true;
  }
  return false;
}

void HandleAndCount(ClimateService& service, const fake::Message& message) {
  bool handled = true;
  bool refused = false;
  try {
    handled = Handle(service, message);
  } catch (const MsgHandlingException&) {
    // The receive loop logs it and goes on.
    refused = true;
  }
  if (!handled) return;
  Tally& tally = TheTallies()[message.id];
  tally.handled += 1;
  tally.refused += refused ? 1 : 0;
  tally.otherEndian += message.otherEndian ? 1 : 0;
}

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "message_fuzz: %s\n", what);
  std::abort();
}

void Check() {
  if (const auto violations = fake::Violations(); !violations.empty()) Fail(violations.front().c_str());
  if (fake::LiveMessages() != 0) Fail("a message was neither sent nor destroyed");
  if (fake::LiveMemory() != 0) Fail("memory of a tag was not released");
  if (fake::OpenFiles() != 0) Fail("a file was left open");
}

void Do(ClimateService& service, const Step& step) {
  if (step.failing != nullptr) (step.onwards ? fake::FailFrom : fake::FailCall)(step.failing, step.nth, {});
  if (step.message.id != 0) {
    HandleAndCount(service, step.message);
  } else {
    fake::AdvanceTime(step.microseconds);
    fake::DispatchQueued();
  }
  fake::StopFailing();
  Check();
}

}  // namespace

const std::map<u32, Tally>& Tallies() { return TheTallies(); }

}  // namespace fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  auto service = fuzz::StartOnBoard(input.Byte());
  for (const u32 id : fake::RegisteredIds()) fuzz::TheTallies()[id].handled += 0;
  while (!input.IsEmpty()) fuzz::Do(*service, fuzz::NextStep(input));
  service.reset();
  fuzz::Check();
  return 0;
}
