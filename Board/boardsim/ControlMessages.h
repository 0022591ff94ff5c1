/// @file
/// Private messages between the boardsim commands and the running simulator. Both are the same program on one host; no
/// other service knows them. (The ids below 0xFF40 are libNUB's own.)
#pragma once

#include "GloTypes.h"

#include <cstddef>

namespace boardsim {

/// Task of the simulator.
inline constexpr u32 BOARDSIM_TASK = 0x7FB0;

inline constexpr u32 BOARDSIM_TEMP_REQ_MSG = 0xFF40;
inline constexpr u32 BOARDSIM_TEMP_RESP_MSG = 0xFF41;
inline constexpr u32 BOARDSIM_STATUS_REQ_MSG = 0xFF42;  ///< no payload
inline constexpr u32 BOARDSIM_STATUS_RESP_MSG = 0xFF43;
inline constexpr u32 BOARDSIM_TICK_IND_MSG = 0xFF44;  ///< the simulator's own timer, no payload

/// What a simulated sensor shows.
enum class SensorMode : u32 {
  Auto = 0,     ///< what the physics give
  Pinned = 1,   ///< a fixed value
  Failing = 2,  ///< every read fails
};

/// BOARDSIM_TEMP_REQ_MSG.
struct TempReq {
  u32 device;
  SensorMode mode;
  i32 value;  ///< pinned: thousandths of a degree Celsius; failing: the driver's error code
};
static_assert(sizeof(TempReq) == 12);

/// BOARDSIM_TEMP_RESP_MSG.
struct TempResp {
  i32 error;  ///< 0, else the driver's error code; DDAL_ERR_NO_DEVICE: the board simulates no such sensor
};
static_assert(sizeof(TempResp) == 4);

/// One simulated sensor of a status.
struct SensorStatus {
  u32 device;
  SensorMode mode;
};
static_assert(sizeof(SensorStatus) == 8);

/// BOARDSIM_STATUS_RESP_MSG; `sensorCount` SensorStatus records follow.
struct StatusResp {
  i32 simulatorPid;
  i32 daemonPid;     ///< 0: it does not run
  u32 daemonStarts;  ///< how often it was started; 0: the board is up without one
  u32 sensorCount;
};
static_assert(sizeof(StatusResp) == 16);

}  // namespace boardsim
