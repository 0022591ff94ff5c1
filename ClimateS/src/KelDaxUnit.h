/// @file
/// The sensors of one processing unit's slot.
#pragma once

#include "Sensor.h"

#include <span>

namespace ps::hwapi::common::climate {

/// Holds the table of the unit in a slot; empty while there is none. Service thread only.
class KelDaxUnit {
 public:
  /// @param sensors lives as long as the program
  void Load(std::span<const Sensor> sensors) { m_sensors = sensors; }
  void Unload() { m_sensors = {}; }

  u32 Count() const { return static_cast<u32>(m_sensors.size()); }
  std::span<const Sensor> Sensors() const { return m_sensors; }

 private:
  std::span<const Sensor> m_sensors;
};

}  // namespace ps::hwapi::common::climate
