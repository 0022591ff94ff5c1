/// @file
/// A temperature sensor on a chip of the kernel.
#pragma once

#include "Attribute.h"
#include "BoardDescription.h"

#include <mutex>
#include <string>

namespace hwapi::ddal {

/// Keeps the sensor's attribute open and finds it again when its chip comes back. Every operation may be called from
/// every thread.
class HwmonSensor {
 public:
  /// @param binding outlives the sensor
  explicit HwmonSensor(const board::HwmonTemperature& binding);
  HwmonSensor(const HwmonSensor&) = delete;
  HwmonSensor& operator=(const HwmonSensor&) = delete;

  /// Reads thousandths of a degree Celsius. One system call, of the chip's thread, while the chip is there.
  /// @return 0, DDAL_ERR_NO_DEVICE (no such chip is bound), DDAL_ERR_TIMEOUT, DDAL_ERR_PENDING or DDAL_ERR_IO
  int Read(int* thousandths);
  /// Finds and reads the sensor once.
  /// @param name what the description calls it: a chip that is late is a line of the log, at once
  /// @return "", or what is wrong and what would be right
  std::string Check(const std::string& name);

 private:
  /// Places the attribute. @return 0, or a driver error code
  int Find(std::string* problem);

  const board::HwmonTemperature& m_binding;
  Attribute m_input;
  std::mutex m_finding;
};

}  // namespace hwapi::ddal
