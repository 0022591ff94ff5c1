/// @file
/// The sensors of the processing units, by slot and hardware variant.
///
/// A unit's tables share their first rows: the m-variant adds three processors and a VORNIK, the p-variant only the
/// VORNIK. There is no p-variant for slot Dax1.
#pragma once

#include "Sensor.h"

#include <cstddef>
#include <iterator>
#include <span>

namespace ps::hwapi::common::climate {

inline constexpr Sensor kDax1MSensors[] = {
    {.text = "DAX1_MCU", .name = TEMP_SENSOR_DAX1_MCU, .device = 0x20000},
    {.text = "DAX1_DSP1", .name = TEMP_SENSOR_DAX1_DSP1, .device = 0x20001},
    {.text = "DAX1_DSP2", .name = TEMP_SENSOR_DAX1_DSP2, .device = 0x20002},
    {.text = "DAX1_DSP3", .name = TEMP_SENSOR_DAX1_DSP3, .device = 0x20003},
    {.text = "DAX1_DSP4", .name = TEMP_SENSOR_DAX1_DSP4, .device = 0x20004},
    {.text = "DAX1_DSP5", .name = TEMP_SENSOR_DAX1_DSP5, .device = 0x20005},
    {.text = "DAX1_DSP6", .name = TEMP_SENSOR_DAX1_DSP6, .device = 0x20006},
    {.text = "DAX1_DSP7", .name = TEMP_SENSOR_DAX1_DSP7, .device = 0x20007},
    {.text = "DAX1_DSP8", .name = TEMP_SENSOR_DAX1_DSP8, .device = 0x20008},
    {.text = "DAX1_DSP9", .name = TEMP_SENSOR_DAX1_DSP9, .device = 0x20009},
    {.text = "DAX1_VORNIK", .name = TEMP_SENSOR_DAX1_VORNIK, .device = 0x2000A},
};

inline constexpr Sensor kDax2MSensors[] = {
    {.text = "DAX2_MCU", .name = TEMP_SENSOR_DAX2_MCU, .device = 0x30000},
    {.text = "DAX2_DSP1", .name = TEMP_SENSOR_DAX2_DSP1, .device = 0x30001},
    {.text = "DAX2_DSP2", .name = TEMP_SENSOR_DAX2_DSP2, .device = 0x30002},
    {.text = "DAX2_DSP3", .name = TEMP_SENSOR_DAX2_DSP3, .device = 0x30003},
    {.text = "DAX2_DSP4", .name = TEMP_SENSOR_DAX2_DSP4, .device = 0x30004},
    {.text = "DAX2_DSP5", .name = TEMP_SENSOR_DAX2_DSP5, .device = 0x30005},
    {.text = "DAX2_DSP6", .name = TEMP_SENSOR_DAX2_DSP6, .device = 0x30006},
    {.text = "DAX2_DSP7", .name = TEMP_SENSOR_DAX2_DSP7, .device = 0x30007},
    {.text = "DAX2_DSP8", .name = TEMP_SENSOR_DAX2_DSP8, .device = 0x30008},
    {.text = "DAX2_DSP9", .name = TEMP_SENSOR_DAX2_DSP9, .device = 0x30009},
    {.text = "DAX2_VORNIK", .name = TEMP_SENSOR_DAX2_VORNIK, .device = 0x3000A},
};

inline constexpr Sensor kDax3MSensors[] = {
    {.text = "DAX3_MCU", .name = TEMP_SENSOR_DAX3_MCU, .device = 0x40000},
    {.text = "DAX3_DSP1", .name = TEMP_SENSOR_DAX3_DSP1, .device = 0x40001},
    {.text = "DAX3_DSP2", .name = TEMP_SENSOR_DAX3_DSP2, .device = 0x40002},
    {.text = "DAX3_DSP3", .name = TEMP_SENSOR_DAX3_DSP3, .device = 0x40003},
    {.text = "DAX3_DSP4", .name = TEMP_SENSOR_DAX3_DSP4, .device = 0x40004},
    {.text = "DAX3_DSP5", .name = TEMP_SENSOR_DAX3_DSP5, .device = 0x40005},
    {.text = "DAX3_DSP6", .name = TEMP_SENSOR_DAX3_DSP6, .device = 0x40006},
    {.text = "DAX3_DSP7", .name = TEMP_SENSOR_DAX3_DSP7, .device = 0x40007},
    {.text = "DAX3_DSP8", .name = TEMP_SENSOR_DAX3_DSP8, .device = 0x40008},
    {.text = "DAX3_DSP9", .name = TEMP_SENSOR_DAX3_DSP9, .device = 0x40009},
    {.text = "DAX3_VORNIK", .name = TEMP_SENSOR_DAX3_VORNIK, .device = 0x4000A},
};

inline constexpr Sensor kDax2PSensors[] = {
    {.text = "DAX2_MCU", .name = TEMP_SENSOR_DAX2_MCU, .device = 0x30000},
    {.text = "DAX2_DSP1", .name = TEMP_SENSOR_DAX2_DSP1, .device = 0x30001},
    {.text = "DAX2_DSP2", .name = TEMP_SENSOR_DAX2_DSP2, .device = 0x30002},
    {.text = "DAX2_DSP3", .name = TEMP_SENSOR_DAX2_DSP3, .device = 0x30003},
    {.text = "DAX2_DSP4", .name = TEMP_SENSOR_DAX2_DSP4, .device = 0x30004},
    {.text = "DAX2_DSP5", .name = TEMP_SENSOR_DAX2_DSP5, .device = 0x30005},
    {.text = "DAX2_DSP6", .name = TEMP_SENSOR_DAX2_DSP6, .device = 0x30006},
    {.text = "DAX2_VORNIK", .name = TEMP_SENSOR_DAX2_VORNIK, .device = 0x3000A},
};

inline constexpr Sensor kDax3PSensors[] = {
    {.text = "DAX3_MCU", .name = TEMP_SENSOR_DAX3_MCU, .device = 0x40000},
    {.text = "DAX3_DSP1", .name = TEMP_SENSOR_DAX3_DSP1, .device = 0x40001},
    {.text = "DAX3_DSP2", .name = TEMP_SENSOR_DAX3_DSP2, .device = 0x40002},
    {.text = "DAX3_DSP3", .name = TEMP_SENSOR_DAX3_DSP3, .device = 0x40003},
    {.text = "DAX3_DSP4", .name = TEMP_SENSOR_DAX3_DSP4, .device = 0x40004},
    {.text = "DAX3_DSP5", .name = TEMP_SENSOR_DAX3_DSP5, .device = 0x40005},
    {.text = "DAX3_DSP6", .name = TEMP_SENSOR_DAX3_DSP6, .device = 0x40006},
    {.text = "DAX3_VORNIK", .name = TEMP_SENSOR_DAX3_VORNIK, .device = 0x4000A},
};

inline constexpr std::size_t kBasicDaxSensors = 7;

/// The tables of a slot.
struct DaxTables {
  const char* text;               ///< the slot's name in logs
  std::span<const Sensor> basic;  ///< any variant but the others
  std::span<const Sensor> m;      ///< m-variant
  std::span<const Sensor> p;      ///< p-variant; empty where the slot has none
};

inline constexpr DaxTables kDax1Tables = {
    .text = "Dax1", .basic{kDax1MSensors, kBasicDaxSensors}, .m{kDax1MSensors}, .p{}};
inline constexpr DaxTables kDax2Tables = {
    .text = "Dax2", .basic{kDax2MSensors, kBasicDaxSensors}, .m{kDax2MSensors}, .p{kDax2PSensors}};
inline constexpr DaxTables kDax3Tables = {
    .text = "Dax3", .basic{kDax3MSensors, kBasicDaxSensors}, .m{kDax3MSensors}, .p{kDax3PSensors}};

static_assert(std::size(kDax1MSensors) == 11 && std::size(kDax2MSensors) == 11 && std::size(kDax3MSensors) == 11);
static_assert(std::size(kDax2PSensors) == 8 && std::size(kDax3PSensors) == 8);

}  // namespace ps::hwapi::common::climate
