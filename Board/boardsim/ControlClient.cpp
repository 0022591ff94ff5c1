#include "ControlClient.h"

#include "AaSysCom.h"
#include "BoardDescription.h"
#include "SimError.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>

namespace boardsim {
namespace {

constexpr std::chrono::seconds kTimeout{5};

struct Destroyer {
  void operator()(void* msg) const { AaSysComMsgDestroy(&msg); }
};
using Message = std::unique_ptr<void, Destroyer>;

[[noreturn]] void FailUnreachable(const std::string& why) {
  throw SimError(ExitCode::Unreachable, why + " on the board of run directory " + hwapi::board::RunDirectory() +
                                            "; bring it up with `boardsim up FILE`, or name its folder with --state");
}

/// Sends a request and waits for its answer, host time: the board's clock may run faster.
Message Exchange(u32 requestId, const void* payload, u32 size, u16 responseId) {
  const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
  const TAaSysComNid node = AaSysComGetOwnNid();
  void* request = AaSysComMsgCreate(requestId, size, AaSysComSicadGet(BOARDSIM_TASK, node));
  if (task == 0 || request == nullptr) FailUnreachable("cannot send messages");
  if (size != 0) std::memcpy(AaSysComMsgGetPayload(request), payload, size);
  const u32 unserved = AaSysComCounterGet(EAaSysComCounter_NoReceiver);
  AaSysComMsgSendS(&request, AaSysComSicadGet(task, node));
  if (AaSysComCounterGet(EAaSysComCounter_NoReceiver) != unserved) FailUnreachable("no simulator runs");

  const u16 filter[] = {1, responseId};
  const auto deadline = std::chrono::steady_clock::now() + kTimeout;
  Message response;
  while (response == nullptr && std::chrono::steady_clock::now() < deadline) {
    response.reset(AaSysComMsgReceive(1'000'000, filter));
  }
  AaSysComUserDeregister(task);
  if (response == nullptr) FailUnreachable("the simulator does not answer");
  return response;
}

}  // namespace

i32 RequestTemp(const TempReq& request) {
  const Message response = Exchange(BOARDSIM_TEMP_REQ_MSG, &request, sizeof request, BOARDSIM_TEMP_RESP_MSG);
  TempResp answer{};
  const u32 size = AaSysComMsgGetPayloadSize(response.get());
  if (size != 0)
    std::memcpy(&answer, AaSysComMsgGetPayload(response.get()), std::min<std::size_t>(size, sizeof answer));
  return answer.error;
}

SimulatorStatus RequestStatus() {
  const Message response = Exchange(BOARDSIM_STATUS_REQ_MSG, nullptr, 0, BOARDSIM_STATUS_RESP_MSG);
  const std::size_t size = AaSysComMsgGetPayloadSize(response.get());
  SimulatorStatus status{};
  if (size < sizeof status.header) FailUnreachable("the simulator's answer is too short");
  const auto* payload = static_cast<const u8*>(AaSysComMsgGetPayload(response.get()));
  std::memcpy(&status.header, payload, sizeof status.header);
  status.sensors.resize(
      std::min<std::size_t>(status.header.sensorCount, (size - sizeof status.header) / sizeof(SensorStatus)));
  if (!status.sensors.empty()) {
    std::memcpy(status.sensors.data(), payload + sizeof status.header, status.sensors.size() * sizeof(SensorStatus));
  }
  return status;
}

}  // namespace boardsim
