/// @file
/// Fan requests and what comes back.
#pragma once

#include "Client.h"
#include "FanSettings.h"

#include <optional>
#include <string>
#include <vector>

namespace clmctl {

/// The first delay of a speed request that names none.
inline constexpr std::chrono::seconds kFanDefaultPeriod{20};
/// Between all later indications.
inline constexpr std::chrono::seconds kFanLaterPeriod{60};

/// A speed request. Every one makes the service report speeds, to one recipient: the last request's.
struct FanSpeedRequest {
  std::vector<FanSetting> fans;
  SMessageAddress receiver{};                  ///< of the indications; task 0: the request's sender
  std::optional<std::chrono::seconds> period;  ///< to the first indication; none: kFanDefaultPeriod
};

/// What became of one fan of a request.
struct FanOutcome {
  u32 fan;
  u32 value;  ///< as asked
  u32 status;
};

/// The service's answer to a request.
struct FanAnswer {
  u32 status = 0;
  std::string info;
  u32 periodSeconds = 0;  ///< to the first indication; 0 in an answer about frequencies
  std::vector<FanOutcome> fans;
};

// Both ask the fan service of the own node and wait for its answer; other messages stay queued.
// They throw CommandError (unreachable) when nobody answers within the timeout, host time.

FanAnswer RequestFanFrequencies(const Client& client, const std::vector<FanSetting>& fans,
                                std::chrono::milliseconds timeout);
FanAnswer RequestFanSpeeds(const Client& client, const FanSpeedRequest& request, std::chrono::milliseconds timeout);

/// @return which fans were refused, and what the reason may be; for an answer whose status is not 0
std::string RefusalText(const FanAnswer& answer);

/// One fan of an indication.
struct FanReading {
  u32 fan;
  u32 rpm;        ///< 0: it stands still, or its speed cannot be read, or the unit has no such fan
  u32 frequency;  ///< EFanParam; 0: unknown
};

/// An API_FAN_SPEED_IND_MSG.
struct FanIndication {
  std::vector<FanReading> readings;
};

/// Reads an indication out of a message; fans past the payload's end are not believed.
/// @return nothing when the message is shorter than an indication's header
std::optional<FanIndication> ParseFanIndication(void* msg);
/// Reads an API_SET_FAN_PWM_FREQ_RESP_MSG or a response to one of the speed requests; likewise.
FanAnswer ParseFanAnswer(void* msg);

}  // namespace clmctl
