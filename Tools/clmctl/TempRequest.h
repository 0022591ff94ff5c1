/// @file
/// Temperature measurement requests and what comes back.
#pragma once

#include "Client.h"
#include "messages/TempMeas.h"

#include <optional>
#include <vector>

namespace clmctl {

/// Asks the temperature service of the own node and waits for its response; other messages stay queued.
/// @throw CommandError (unreachable) when nobody answers within @p timeout of host time
SApiTempMeasResp RequestTempMeas(const Client& client, const SApiTempMeasReq& request,
                                 std::chrono::milliseconds timeout);

/// One sensor of an indication.
struct TempReading {
  u32 name;        ///< ETempSensorName
  double celsius;  ///< to the thousandth; meaningless for a failed reading
  bool valid;
  u32 driverError;  ///< 0, or the absolute value of the driver's error code
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
