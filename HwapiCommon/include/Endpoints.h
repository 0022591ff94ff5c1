/// @file
/// Task numbers of the services of the layer, and how they are announced.
///
/// An endpoint is announced by the public tag "app.hwapi.online." and its number in lower-case hexadecimal; the tag's
/// 4-byte value is EStatus_Initialized (online) or EStatus_NotInitialized (gone).
#pragma once

#include "GloTypes.h"

inline constexpr u32 HWAPI_RESET_SERVICE = 0x4A7;
inline constexpr u32 HWAPI_FAN_SERVICE = 0x4AD;
inline constexpr u32 HWAPI_SWDL_SERVICE = 0x4B2;
inline constexpr u32 HWAPI_AUTODET_SERVICE = 0x4B3;
inline constexpr u32 HWAPI_TEMPERATURE_SERVICE = 0x4B6;
inline constexpr u32 HWAPI_BLACKBOX = 0x4D9;
