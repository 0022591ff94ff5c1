/// @file
/// Layout of the simulated hardware's registers, shared by every process of the board.
#pragma once

#include "BoardDescription.h"

#include <optional>
#include <type_traits>

namespace hwapi::ddal {

inline constexpr u32 kSimMagic = 0x48575232;  // "HWR2": changes with the layout
inline constexpr u32 kSimTemperatures = 256;
inline constexpr u32 kSimFans = 16;
inline constexpr u32 kSimRfParts = 3;

/// A register is read and written by a system call of its own; aligned as it is, nobody sees half of one.
using Register = u32;
using SignedRegister = i32;

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

/// A part of the file, or one register of it, by its place: the file is not mapped, as anybody who may write it may cut
/// it, too.
template <typename Part>
struct Place {
  u32 offset;  ///< bytes from the beginning

  /// @return the place of a member
  template <typename Owner, typename Member>
  requires std::is_same_v<Owner, Part> Place<Member>
  operator->*(Member Owner::*member) const {
    static const Part sample{};
    return {offset + static_cast<u32>(reinterpret_cast<const char*>(&(sample.*member)) -
                                      reinterpret_cast<const char*>(&sample))};
  }
  /// @return the place of a member of an array that begins here
  Place<std::remove_extent_t<Part>> operator[](u32 index) const {
    return {offset + index * static_cast<u32>(sizeof(std::remove_extent_t<Part>))};
  }
};
inline constexpr Place<SimRegisters> kSimFile{0};

/// Adds the devices of @p description that are not there yet, with its values. The caller holds the file's lock.
/// @return whether there was room for all
bool AddDevices(SimRegisters& registers, const board::BoardDescription& description);

/// @return index of a sensor; none when it is not there
std::optional<u32> FindTemperature(const SimRegisters& registers, u32 device);

}  // namespace hwapi::ddal
