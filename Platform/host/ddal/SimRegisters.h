/// @file
/// Layout of the simulated hardware's registers, shared by every process of the board.
#pragma once

#include "BoardDescription.h"

#include <atomic>
#include <type_traits>

namespace hwapi::ddal {

inline constexpr u32 kSimMagic = 0x48575232;  // "HWR2": changes with the layout
inline constexpr u32 kSimTemperatures = 256;
inline constexpr u32 kSimFans = 16;
inline constexpr u32 kSimRfParts = 3;

using Register = std::atomic<u32>;
using SignedRegister = std::atomic<i32>;
static_assert(Register::is_always_lock_free && sizeof(Register) == sizeof(u32));

/// A temperature sensor.
struct SimTemperatureRegisters {
  Register device;
  SignedRegister thousandths;
  SignedRegister failure;  ///< 0, or what reads answer
};

/// A fan; the one of id i is the i-th.
struct SimFanRegisters {
  Register present;
  SignedRegister control;  ///< per cent
  SignedRegister hertz;
  SignedRegister rpm;
  SignedRegister readFailure;   ///< 0, or what reads answer
  SignedRegister writeFailure;  ///< 0, or what writes answer
};

/// An RF part.
struct SimRfRegisters {
  Register present;
  Register registerValue;
  Register chainStatus;
};

/// The file. All zero is hardware without devices.
struct SimRegisters {
  Register magic;  ///< kSimMagic once the rest is set up
  Register temperatureCount;
  Register resetLoopCountIsSet;
  SignedRegister resetLoopCount;
  Register linuxActiveIsSet;
  Register linuxActive;  ///< DDAL_FFS_FS1 or DDAL_FFS_FS2
  SimRfRegisters rf[kSimRfParts];
  SimFanRegisters fans[kSimFans];
  SimTemperatureRegisters temperatures[kSimTemperatures];
};
static_assert(std::is_standard_layout_v<SimRegisters> && sizeof(SimRegisters) == 4 * (6 + 9 + 6 * 16 + 3 * 256));

/// Adds the devices of @p description that are not there yet, with its values. The caller holds the file's lock.
/// @return whether there was room for all
bool AddDevices(SimRegisters& registers, const board::BoardDescription& description);

/// @return registers of a sensor; null when it is not there
SimTemperatureRegisters* FindTemperature(SimRegisters& registers, u32 device);

}  // namespace hwapi::ddal
