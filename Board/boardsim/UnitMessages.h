/// @file
/// Private messages about processing units and the autodetection service, beside those of ControlMessages.h.
#pragma once

#include "GloTypes.h"
#include "ProcessingUnits.h"

namespace boardsim {

inline constexpr u32 BOARDSIM_PLUG_REQ_MSG = 0xFF50;
inline constexpr u32 BOARDSIM_PLUG_RESP_MSG = 0xFF51;
inline constexpr u32 BOARDSIM_UNPLUG_REQ_MSG = 0xFF52;
inline constexpr u32 BOARDSIM_UNPLUG_RESP_MSG = 0xFF53;  ///< a PlugResp
inline constexpr u32 BOARDSIM_AUTODET_REQ_MSG = 0xFF54;
inline constexpr u32 BOARDSIM_AUTODET_RESP_MSG = 0xFF55;  ///< a ChangeResp; DDAL_ERR_BUSY: another process serves it
inline constexpr u32 BOARDSIM_SLOTS_REQ_MSG = 0xFF56;     ///< no payload
inline constexpr u32 BOARDSIM_SLOTS_RESP_MSG = 0xFF57;

/// BOARDSIM_PLUG_REQ_MSG.
struct PlugReq {
  u32 slot;  ///< index of kUnitSlots
  u32 hwSwId;
  u32 state;  ///< EAdetState, or any other number
};
static_assert(sizeof(PlugReq) == 12);

/// BOARDSIM_UNPLUG_REQ_MSG.
struct UnplugReq {
  u32 slot;  ///< index of kUnitSlots
};
static_assert(sizeof(UnplugReq) == 4);

/// Answer to both.
struct PlugResp {
  i32 error;     ///< 0; DDAL_ERR_NO_DEVICE: the board has no such slot, or nothing is in it
  u32 told;      ///< clients of the autodetection service that were told
  u32 isOnline;  ///< 1: the autodetection service is online
};
static_assert(sizeof(PlugResp) == 12);

/// BOARDSIM_AUTODET_REQ_MSG.
struct AutodetControlReq {
  u32 online;  ///< 1: let it come, 0: let it go
};
static_assert(sizeof(AutodetControlReq) == 4);

/// A slot in a status.
struct SlotStatus {
  u32 present;  ///< 1: a unit is in it; else the rest is 0
  u32 hwSwId;
  u32 state;
};
static_assert(sizeof(SlotStatus) == 12);

/// BOARDSIM_SLOTS_RESP_MSG.
struct SlotsResp {
  SlotStatus slots[kUnitSlots.size()];
};
static_assert(sizeof(SlotsResp) == 36);

}  // namespace boardsim
