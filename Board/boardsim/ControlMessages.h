/// @file
/// Private messages between the boardsim commands and the running simulator. Both are the same program on one host; no
/// other service knows them. (The ids below 0xFF40 are libNUB's own.)
#pragma once

#include "AaSysTime.h"
#include "GloTypes.h"

namespace boardsim {

/// Task of the simulator.
inline constexpr u32 BOARDSIM_TASK = 0x7FB0;

inline constexpr u32 BOARDSIM_TEMP_REQ_MSG = 0xFF40;
inline constexpr u32 BOARDSIM_TEMP_RESP_MSG = 0xFF41;   ///< a ChangeResp
inline constexpr u32 BOARDSIM_STATUS_REQ_MSG = 0xFF42;  ///< no payload
inline constexpr u32 BOARDSIM_STATUS_RESP_MSG = 0xFF43;
inline constexpr u32 BOARDSIM_TICK_IND_MSG = 0xFF44;  ///< the simulator's own timer, no payload
inline constexpr u32 BOARDSIM_FAN_REQ_MSG = 0xFF45;
inline constexpr u32 BOARDSIM_FAN_RESP_MSG = 0xFF46;  ///< a ChangeResp
inline constexpr u32 BOARDSIM_RESET_REQ_MSG = 0xFF47;
inline constexpr u32 BOARDSIM_RESET_RESP_MSG = 0xFF48;  ///< a ChangeResp

/// What a simulated sensor shows.
enum class SensorMode : u32 {
  Auto = 0,     ///< what the physics give
  Pinned = 1,   ///< a fixed value
  Failing = 2,  ///< every read fails
  Absent = 3,   ///< it is not there, as its processing unit is not; told, never asked for
};

/// BOARDSIM_TEMP_REQ_MSG.
struct TempReq {
  u32 device;
  SensorMode mode;
  i32 value;  ///< pinned: thousandths of a degree Celsius; failing: the driver's error code
};
static_assert(sizeof(TempReq) == 12);

/// What changes at a simulated fan; the rest stays as it is.
enum class FanChange : u32 {
  Auto = 0,       ///< everything: what the physics give, and no failures
  Stick = 1,      ///< the speed: a fixed one
  FailRead = 2,   ///< every read fails
  FailWrite = 3,  ///< every write fails
  Fail = 4,       ///< every read and write fails
};

/// BOARDSIM_FAN_REQ_MSG.
struct FanReq {
  u32 fan;
  FanChange change;
  i32 value;  ///< stuck: revolutions a minute; failing: the driver's error code
};
static_assert(sizeof(FanReq) == 12);

/// BOARDSIM_RESET_REQ_MSG: the board as it is after the reset. What has no value set stays as it was.
struct ResetReq {
  u32 fileSystem;  ///< the one that runs: 1 or 2; 0: the same
  u32 setsCounter;
  i32 counter;  ///< resets in a row
  u32 setsClock;
  SAaTime clock;  ///< UTC
};
static_assert(sizeof(ResetReq) == 44);

/// Answer to a request that changes hardware.
struct ChangeResp {
  i32 error;  ///< 0, else the driver's error code; DDAL_ERR_NO_DEVICE: the board does not simulate the device
};
static_assert(sizeof(ChangeResp) == 4);

/// One simulated sensor of a status.
struct SensorStatus {
  u32 device;
  SensorMode mode;
};
static_assert(sizeof(SensorStatus) == 8);

/// One simulated fan of a status.
struct FanStatus {
  u32 fan;
  u32 stuck;         ///< 1: its speed is fixed
  i32 readFailure;   ///< 0, or what reads answer
  i32 writeFailure;  ///< 0, or what writes answer
};
static_assert(sizeof(FanStatus) == 16);

/// BOARDSIM_STATUS_RESP_MSG; `sensorCount` SensorStatus and `fanCount` FanStatus records follow.
struct StatusResp {
  i32 simulatorPid;
  i32 daemonPid;     ///< 0: it does not run
  u32 daemonStarts;  ///< how often it was started; 0: the board is up without one
  u32 sensorCount;
  u32 fanCount;
};
static_assert(sizeof(StatusResp) == 20);

}  // namespace boardsim
