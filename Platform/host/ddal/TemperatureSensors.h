/// @file
/// The board's temperature sensors by device id.
#pragma once

#include "BoardDescription.h"
#include "HwmonSensor.h"
#include "SimRegisters.h"

#include <memory>
#include <vector>

namespace hwapi::ddal {

/// A sensor on a chip of the kernel, or a simulated one.
struct TemperatureSensor {
  u32 device;
  std::unique_ptr<HwmonSensor> hwmon;        ///< null: simulated
  Place<SimTemperatureRegisters> registers;  ///< of a simulated one
  const board::Temperature* description;
};

/// All sensors, sorted by device id; built at the first call, never changed and never destroyed.
const std::vector<TemperatureSensor>& TemperatureSensors();

/// @return the sensor; null when the board has none of that id
const TemperatureSensor* FindSensor(u32 device);

}  // namespace hwapi::ddal
