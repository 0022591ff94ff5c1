/// @file
/// A group whose sensors are known at start-up.
#pragma once

#include "SensorGroup.h"

#include <span>

namespace ps::hwapi::common::climate {

/// A sensor group fed from a table. Service thread only.
class FixedSensorGroup : public SensorGroup {
 public:
  /// @param sensors lives as long as the program
  explicit FixedSensorGroup(std::span<const Sensor> sensors) {
    m_numberOfSensors = static_cast<u32>(sensors.size());
    m_sensors = sensors.data();
    m_timerIdPtr = &m_timerId;
  }

 private:
  TAaSysTimerId m_timerId = 0;
};

}  // namespace ps::hwapi::common::climate
