/// @file
/// Autodetection of plug-in units.
#pragma once

#include "AaSysCom.h"

#include <cstddef>

/// State of a plug-in unit.
enum EAdetState : u32 {
  EAdetState_Ready = 0,
  EAdetState_UnInitialized = 1,
  EAdetState_UnPlugged = 2,
  EAdetState_SwUpgrade = 3,
  EAdetState_Timeout = 4,
  EAdetState_Hiz = 5,
  EAdetState_Sleep = 6,
  EAdetState_Plugged = 7,
  EAdetState_Unknown = 8
};

/// API_AUTODET_REQ_MSG: asks to be told about units (or cpus).
struct SApiAutodetReq {
  u32 transactionId;
  u32 operation;
  TBoolean provideUnitInd;
  TAaSysComSicad unitIndClientAddress;  ///< 0: the sender of the request
  TBoolean provideCpuInd;
  TAaSysComSicad cpuIndClientAddress;  ///< 0: the sender of the request
};
static_assert(sizeof(SApiAutodetReq) == 24);
static_assert(offsetof(SApiAutodetReq, operation) == 4);
static_assert(offsetof(SApiAutodetReq, provideUnitInd) == 8);
static_assert(offsetof(SApiAutodetReq, unitIndClientAddress) == 12);
static_assert(offsetof(SApiAutodetReq, provideCpuInd) == 16);
static_assert(offsetof(SApiAutodetReq, cpuIndClientAddress) == 20);

/// Identity of a plug-in unit.
struct SUnitInformation {
  u32 unit_id;
  u32 hw_id;
  u32 hw_sw_id;
  u32 dspVolume;
  TBoolean mcuPresence;
  char boardPn[12];
  char boardSn[16];
};
static_assert(sizeof(SUnitInformation) == 48);

/// API_AUTODET_UNIT_IND_MSG.
struct SApiAutodetUnitInd {
  EAdetState autodetectionState;
  SUnitInformation unitInformation;
  u8 moduleInformation[32];
};
static_assert(sizeof(SApiAutodetUnitInd) == 84);
static_assert(offsetof(SApiAutodetUnitInd, unitInformation) == 4);
static_assert(offsetof(SApiAutodetUnitInd, unitInformation.hw_id) == 8);
static_assert(offsetof(SApiAutodetUnitInd, unitInformation.hw_sw_id) == 12);
static_assert(offsetof(SApiAutodetUnitInd, unitInformation.dspVolume) == 16);
static_assert(offsetof(SApiAutodetUnitInd, unitInformation.mcuPresence) == 20);
static_assert(offsetof(SApiAutodetUnitInd, unitInformation.boardPn) == 24);
static_assert(offsetof(SApiAutodetUnitInd, unitInformation.boardSn) == 36);
static_assert(offsetof(SApiAutodetUnitInd, moduleInformation) == 52);
