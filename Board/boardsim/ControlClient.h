/// @file
/// Requests to the running simulator.
#pragma once

#include "ControlMessages.h"

#include <vector>

namespace boardsim {

/// A simulator's status with all its sensors and fans.
struct SimulatorStatus {
  StatusResp header;
  std::vector<SensorStatus> sensors;
  std::vector<FanStatus> fans;
};

/// @return the driver's error code the simulator answered; 0 when it did what was asked
/// @throw SimError (unreachable) when no simulator answers on the board of HWAPI_RUN
i32 RequestTemp(const TempReq& request);
/// @return, @throw as RequestTemp
i32 RequestFan(const FanReq& request);
/// Resets the board. @return, @throw as RequestTemp
i32 RequestReset(const ResetReq& request);
/// @throw as RequestTemp
SimulatorStatus RequestStatus();

}  // namespace boardsim
