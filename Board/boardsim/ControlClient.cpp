#include "ControlClient.h"

#include "AaSysCom.h"
#include "AaSysLog.h"
#include "BoardDescription.h"
#include "PayloadView.h"
#include "SimError.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

namespace boardsim {
namespace {

constexpr std::chrono::seconds kTimeout{5};

using ps::hwapi::common::PayloadView;

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
  // What the platform would log of it is told by the command in its words.
  AaSysLogSetThreshold(static_cast<EAaSysLogSeverityLevel>(EAaSysLogSeverityLevel_Error + 1));
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

/// Asks for a change of the hardware. @return the driver's error code
template <typename Request>
i32 RequestChange(u32 requestId, const Request& request, u16 responseId) {
  const Message response = Exchange(requestId, &request, sizeof request, responseId);
  return PayloadView(response.get()).Get<ChangeResp>(0).error;
}

/// @return up to @p count records at @p offset, which moves behind them; no more than the payload holds
template <typename Record>
std::vector<Record> Records(const PayloadView& payload, std::size_t& offset, u32 count) {
  const std::size_t room = payload.Size() > offset ? payload.Size() - offset : 0;
  std::vector<Record> records(std::min<std::size_t>(count, room / sizeof(Record)));
  for (Record& record : records) {
    record = payload.Get<Record>(offset);
    offset += sizeof(Record);
  }
  return records;
}

PlugResp RequestSlotChange(u32 requestId, const void* request, u32 size, u16 responseId) {
  const Message response = Exchange(requestId, request, size, responseId);
  return PayloadView(response.get()).Get<PlugResp>(0);
}

}  // namespace

i32 RequestTemp(const TempReq& request) {
  return RequestChange(BOARDSIM_TEMP_REQ_MSG, request, BOARDSIM_TEMP_RESP_MSG);
}

i32 RequestFan(const FanReq& request) { return RequestChange(BOARDSIM_FAN_REQ_MSG, request, BOARDSIM_FAN_RESP_MSG); }

i32 RequestReset(const ResetReq& request) {
  return RequestChange(BOARDSIM_RESET_REQ_MSG, request, BOARDSIM_RESET_RESP_MSG);
}

SimulatorStatus RequestStatus() {
  const Message response = Exchange(BOARDSIM_STATUS_REQ_MSG, nullptr, 0, BOARDSIM_STATUS_RESP_MSG);
  const PayloadView payload(response.get());
  if (payload.Size() < sizeof(StatusResp)) FailUnreachable("the simulator's answer is too short");
  SimulatorStatus status{};
  status.header = payload.Get<StatusResp>(0);
  std::size_t offset = sizeof(StatusResp);
  status.sensors = Records<SensorStatus>(payload, offset, status.header.sensorCount);
  status.fans = Records<FanStatus>(payload, offset, status.header.fanCount);
  return status;
}

PlugResp RequestPlug(const PlugReq& request) {
  return RequestSlotChange(BOARDSIM_PLUG_REQ_MSG, &request, sizeof request, BOARDSIM_PLUG_RESP_MSG);
}

PlugResp RequestUnplug(const UnplugReq& request) {
  return RequestSlotChange(BOARDSIM_UNPLUG_REQ_MSG, &request, sizeof request, BOARDSIM_UNPLUG_RESP_MSG);
}

i32 RequestAutodet(const AutodetControlReq& request) {
  return RequestChange(BOARDSIM_AUTODET_REQ_MSG, request, BOARDSIM_AUTODET_RESP_MSG);
}

SlotsResp RequestSlots() {
  const Message response = Exchange(BOARDSIM_SLOTS_REQ_MSG, nullptr, 0, BOARDSIM_SLOTS_RESP_MSG);
  return PayloadView(response.get()).Get<SlotsResp>(0);
}

}  // namespace boardsim
