/// @file
/// Temperature measurement requests and what comes back.
#pragma once

#include "Client.h"
#include "messages/TempMeas.h"

#include <optional>
#include <vector>

namespace clmctl {

/// Asks the temperature service of the own node, and does not wait for its response.
/// @throw CommandError (unreachable) when nobody serves it
void SendTempMeas(const Client& client, const SApiTempMeasReq& request);
/// Waits for the response to a request that was sent; other messages stay queued.
/// @throw CommandError (unreachable) when nobody answers within @p timeout of host time
SApiTempMeasResp AwaitTempMeas(const Client& client, std::chrono::milliseconds timeout);
/// Both, one after the other.
SApiTempMeasResp RequestTempMeas(const Client& client, const SApiTempMeasReq& request,
                                 std::chrono::milliseconds timeout);

/// One sensor of an indication.
struct TempReading {
  u32 name;        ///< ETempSensorName
  double celsius;  ///< to the thousandth; meaningless for a failed reading
  bool valid;
  i32 driverError;  ///< 0, or the driver's error code, an EDdalError
};

/// An API_TEMP_MEAS_IND_MSG.
struct TempIndication {
  u32 sensorType;
  std::vector<TempReading> readings;
};

/// Reads an indication out of a message; sensors past the payload's end are not believed.
/// @return nothing when the message is shorter than an indication's header
std::optional<TempIndication> ParseTempIndication(void* msg);

}  // namespace clmctl
