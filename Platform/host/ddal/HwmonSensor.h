/// @file
/// A temperature sensor on a chip of the kernel.
#pragma once

#include "BoardDescription.h"

#include <atomic>
#include <mutex>
#include <string>

namespace hwapi::ddal {

/// Keeps the sensor's attribute open and finds it again when its chip comes back. Every operation may be called from
/// every thread.
class HwmonSensor {
 public:
  /// @param binding outlives the sensor
  explicit HwmonSensor(const board::HwmonTemperature& binding) : m_binding(binding) {}
  HwmonSensor(const HwmonSensor&) = delete;
  HwmonSensor& operator=(const HwmonSensor&) = delete;

  /// Reads thousandths of a degree Celsius. No lock and one system call while the chip is there.
  /// @return 0, DDAL_ERR_NO_DEVICE (no such chip is bound) or DDAL_ERR_IO
  int Read(int* thousandths);
  /// Finds and reads the sensor once.
  /// @return "", or what is wrong and what would be right
  std::string Check();

 private:
  /// Puts the attribute behind m_fd. @return 0, or a driver error code
  int Find(std::string* problem);

  const board::HwmonTemperature& m_binding;
  /// Set once to a descriptor that is never closed: a new attribute takes the place of the old one behind the same
  /// number, so that no reader can meet a descriptor that belongs to something else by now.
  std::atomic<int> m_fd{-1};
  std::mutex m_finding;
};

}  // namespace hwapi::ddal
