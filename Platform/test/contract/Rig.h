/// @file
/// What the suite needs to know of the platform under test: its board, and how to change what the board shows.
/// One source of each platform implements it.
#pragma once

#include "HwapiUnit.h"
#include "ddal_fan.h"

#include <string>

namespace rig {

// The board of both rigs.
inline constexpr EUnitType kUnitType = EUnitType_Pivo;
inline constexpr EUnitVersion kUnitVersion = EUnitVersion_Pivob;
inline constexpr const char* kProductionCode = "472181A.102";
inline constexpr const char* kSerialNumber = "K9120400123";
inline constexpr u32 kOwnNid = 0x0301;
inline constexpr u32 kSensor = 0x10002;        ///< a sensor that the board has
inline constexpr u32 kAbsentSensor = 0x77777;  ///< one that it does not have
inline constexpr ddal_fan_id_t kFan = 1;       ///< a fan that the board has
inline constexpr ddal_fan_id_t kChipFan = 2;   ///< another one, on a chip of the kernel where the platform has any
inline constexpr ddal_fan_id_t kAbsentFan = 7;
inline constexpr u32 kRad = 0x200B5;
inline constexpr u32 kRadValue = 24;
inline constexpr u32 kUnsetRad = 0x200B6;
inline constexpr int kBackplane = 1;
inline constexpr u32 kActiveFileSystem = 54;
inline constexpr u32 kImage = 1;
inline constexpr i32 kResetLoopCount = 3;
inline constexpr i32 kIsti = 77;
inline constexpr i32 kEccSingle = 5;
inline constexpr i32 kEccDouble = 2;
inline constexpr const char* kPsuVendor = "Powerhouse";
inline constexpr const char* kFilterProductCode = "471900A";
inline constexpr i32 kFilterHwswid = -12;

/// Microseconds of board time that suffice for everything that is to happen.
inline constexpr u32 kPatienceUs = 200'000'000;
/// Microseconds of board time after which nothing more is expected to happen.
inline constexpr u32 kMomentUs = 200'000;

/// @return a directory for the files of this program; empty at its start
std::string Directory();
/// Lets the sensor of the board show a temperature.
void SetTemperature(int thousandths);
/// Ends Service::Run, called from a handler.
void StopService();

}  // namespace rig
