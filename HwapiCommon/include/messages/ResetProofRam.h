/// @file
/// The reset-proof RAM, which the reset service reads for others.
#pragma once

#include "AaSysCom.h"

#include <cstddef>

enum ERP_RAM_field : u32 { ERP_RAM_field_ResetType = 0 };

enum ERP_RAM_status : u32 {
  ERP_RAM_status_Success = 0,
  ERP_RAM_status_invalid_field = 1,
  ERP_RAM_status_access_fail = 2
};

/// Value of a field.
using TRP_RAM_value = u32;

/// How the board was last reset: value of ERP_RAM_field_ResetType.
enum ERPresetType : u32 {
  ERPresetTypePowerOn = 0,
  ERPresetTypeApplication = 1,
  ERPresetTypeWdog = 2,
  ERPresetTypeSWintegrityError = 3,
  ERPresetTypeSpuriousReset = 4,
  ERPresetTypeAppHard = 5,
  ERPresetTypeAppFull = 6,
  ERPresetTypeAppPOR = 7,
  ERPresetTypeAppSoft = 8,
  ERPresetTypeFrontPanel = 9,
  ERPresetTypeTemp = 10,
  ERPresetTypeConfig = 11,
  ERPresetTypeEmulator = 12,
  ERPresetTypeApplicationBts = 13,
  ERPresetTypeSpuriousResetBts = 14,
  ERPresetTypeServiceButtonWarm = 15,
  ERPresetTypeServiceButtonCold = 16
};

/// API_OM_GET_RP_RAM_REQ_MSG.
struct SApiOmGetRPRamReq {
  ERP_RAM_field field;
};
static_assert(sizeof(SApiOmGetRPRamReq) == 4);

/// API_OM_GET_RP_RAM_RESP_MSG.
struct SApiOmGetRPRamResp {
  ERP_RAM_field field;
  ERP_RAM_status status;
  TRP_RAM_value value;
};
static_assert(sizeof(SApiOmGetRPRamResp) == 12);
static_assert(offsetof(SApiOmGetRPRamResp, status) == 4);
static_assert(offsetof(SApiOmGetRPRamResp, value) == 8);
