/// @file
/// Requests to the running simulator.
#pragma once

#include "ControlMessages.h"
#include "UnitMessages.h"

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
/// @return what the simulator answered; @throw as RequestTemp
PlugResp RequestPlug(const PlugReq& request);
/// @return, @throw as RequestPlug
PlugResp RequestUnplug(const UnplugReq& request);
/// @return, @throw as RequestTemp
i32 RequestAutodet(const AutodetControlReq& request);
/// @throw as RequestTemp
SlotsResp RequestSlots();

}  // namespace boardsim
