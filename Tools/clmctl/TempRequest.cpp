#include "TempRequest.h"

#include "CommandError.h"
#include "Endpoints.h"
#include "Msg.h"
#include "messages/MessageIds.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

namespace clmctl {
namespace {

/// The message carries an error code without its sign, and all of the driver's are below 0.
i32 DriverError(u32 faultId) { return static_cast<i32>(0u - faultId); }

}  // namespace

void SendTempMeas(const Client& client, const SApiTempMeasReq& request) {
  const TAaSysComSicad service = Client::AddressOf(HWAPI_TEMPERATURE_SERVICE);
  client.Send(client.Create(API_TEMP_MEAS_REQ_MSG, &request, sizeof request, service));
}

SApiTempMeasResp AwaitTempMeas(const Client& client, std::chrono::milliseconds timeout) {
  constexpr u16 kFilter[] = {1, API_TEMP_MEAS_RESP_MSG};
  const Message response = client.ReceiveUntil(Client::Clock::now() + timeout, kFilter);
  if (response == nullptr) {
    throw CommandError(ExitCode::Unreachable,
                       "the temperature service did not answer within " + std::to_string(timeout.count()) +
                           "ms; is it stuck, or does the board's [access] list refuse this user? See the daemon's log");
  }
  return ps::hwapi::common::Msg<SApiTempMeasResp, API_TEMP_MEAS_RESP_MSG>(response.get()).Record();
}

SApiTempMeasResp RequestTempMeas(const Client& client, const SApiTempMeasReq& request,
                                 std::chrono::milliseconds timeout) {
  SendTempMeas(client, request);
  return AwaitTempMeas(client, timeout);
}

std::optional<TempIndication> ParseTempIndication(void* msg) {
  constexpr std::size_t kHeader = offsetof(SApiTempMeasInd, tempMeasurementInfo);
  const std::size_t size = AaSysComMsgGetPayloadSize(msg);
  if (size < kHeader) return std::nullopt;
  const auto* payload = static_cast<const u8*>(AaSysComMsgGetPayload(msg));
  u32 header[2];
  std::memcpy(header, payload, sizeof header);
  TempIndication indication{.sensorType = header[0], .readings = {}};
  const std::size_t count = std::min<std::size_t>(header[1], (size - kHeader) / sizeof(STempMeasInfo));
  for (std::size_t i = 0; i < count; ++i) {
    STempMeasInfo info;
    std::memcpy(&info, payload + kHeader + i * sizeof info, sizeof info);
    indication.readings.push_back({.name = info.unit_name,
                                   .celsius = std::round(static_cast<double>(info.unit_temp[0]) * 1000) / 1000,
                                   .valid = info.temp_sensor_state == 1,
                                   .driverError = DriverError(info.i2c_fault_id)});
  }
  return indication;
}

}  // namespace clmctl
