/// @file
/// Ids of debug-configuration (RAD) values, log features and service states. The numbers are the layer's; those of
/// which only the name is settled are distinct ones.
#pragma once

#include "GloTypes.h"

/// Log features.
inline constexpr u32 ERadHwapi_PrintClimateService = 0x20047;
inline constexpr u32 ERadHwapi_PrintResetTask = 0x20031;
inline constexpr u32 ERadHwapi_PrintBlackboxService = 0x20058;

/// Debug-configuration values.
inline constexpr u32 ERadHwapi_EnableRP441 = 0x20088;
inline constexpr u32 ERadHwapi_BlackBoxUpdateTimer = 0x200B5;  ///< hours between rewrites of the black-box files
inline constexpr u32 ERadHwapi_SelfDiagnosticMode = 0x200C9;
inline constexpr u32 ERadHwapi_SelfDiagnosticModeDate = 0x200CA;
inline constexpr u32 ERadHwapi_SelfDiagnosticModeTime = 0x200CB;
inline constexpr u32 ERadHwapi_SelfDiagnosticModeDisableRP441 = 0x200CC;

/// Service states.
inline constexpr u32 ERadHwapiState_ClimateState = 0x22000B;

/// What the climate service reports as its state.
enum ERadHwapiState_ClimateStateValue : u32 {
  ERadHwapiState_ClimateState_Polling_Temp = 0x1000,
  ERadHwapiState_ClimateState_Polling_Fan = 0x1001,
  ERadHwapiState_ClimateState_Polling_Temp_And_Fan = 0x1002
};
