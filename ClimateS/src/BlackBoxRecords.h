/// @file
/// What the black box keeps in memory. Fields that one thread reads while another one writes are atomic; everything
/// that grows and shrinks is published in immutable versions (Published.h).
#pragma once

#include "GloTypes.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace ps::hwapi::common::climate {

/// What is known of one temperature sensor, in the unit of its readings.
struct SSensorTempValues {
  /// Marks a sensor without any reading.
  static constexpr i32 kNoMinimum = 555555;
  static constexpr i32 kNoMaximum = -555555;

  std::atomic<i32> maxTemperature = kNoMaximum;  ///< highest one since the sensor was added
  std::atomic<i32> minTemperature = kNoMinimum;  ///< lowest one since the sensor was added
  std::atomic<i32> temperature = 0;              ///< last good reading
  std::atomic<i32> error = 0;                    ///< 1 when the last reading failed, else 0
};
static_assert(sizeof(SSensorTempValues) == 16);

/// What is known of one fan.
struct SFanSpeedValue {
  std::atomic<i32> speed = 0;  ///< last good reading, revolutions a minute
  std::atomic<i32> error = 0;  ///< 1 when the last reading failed, else 0
};
static_assert(sizeof(SFanSpeedValue) == 8);

/// Records by name, in the order of the trace file's columns. A version that is being read keeps its records.
using SensorTempMap = std::map<std::string, std::shared_ptr<SSensorTempValues>, std::less<>>;
using FanSpeedMap = std::map<std::string, std::shared_ptr<SFanSpeedValue>, std::less<>>;

/// Snapshot lines with their line ends, oldest first. Versions share the lines.
using SnapshotRing = std::deque<std::shared_ptr<const std::string>>;
inline constexpr std::size_t kSnapshotRingSize = 180;

/// Paths of stored copies by key; those of one key oldest first.
using storedFileMap = std::multimap<std::string, std::string>;

/// The last resets.
struct ResetHistory {
  std::deque<std::string> entries;  ///< with their line ends, oldest first
  u32 waitingNtpTime = 0;           ///< 1 while the reason of the last start waits for the clock
};
inline constexpr std::size_t kResetHistorySize = 10;

}  // namespace ps::hwapi::common::climate
