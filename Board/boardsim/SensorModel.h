/// @file
/// The physics of simulated hardware. Plain calculation: no clock, no devices; the same steps give the same values.
#pragma once

#include "BoardDescription.h"

#include <optional>
#include <random>

namespace boardsim {

/// How busy the board is at a time since its start: 0 idle to 1 full, slowly changing.
double ActivityAt(double seconds);

/// One temperature: base + load * activity - cooling * fan level, followed with first-order inertia, plus noise.
class SensorModel {
 public:
  /// @param defaultSeed seed of the noise when the description gives none
  SensorModel(const hwapi::board::SimTemperature& parameters, u32 defaultSeed);

  /// Advances the model.
  /// @param seconds  length of the step
  /// @param activity 0 to 1
  /// @param fanLevel 0 to 1, 1 is full speed
  /// @return what the sensor shows, thousandths of a degree Celsius
  int Step(double seconds, double activity, double fanLevel);

 private:
  double Noise();

  hwapi::board::SimTemperature m_parameters;
  std::minstd_rand m_random;
  double m_celsius;
};

/// One fan, whose speed follows the control value with first-order inertia, unless it is stuck.
class FanModel {
 public:
  explicit FanModel(const hwapi::board::SimFan& parameters) : m_parameters(parameters) {}

  /// Fixes the speed whatever the control value is; 0 stands still. Nothing lets the fan follow again, from there.
  void Stick(std::optional<int> rpm);
  bool Stuck() const { return m_stuck; }
  /// @param control per cent, 0 to 100
  /// @return revolutions a minute
  int Step(double seconds, int control);
  /// @return speed as part of the largest one, 0 to 1
  double Level() const;

 private:
  hwapi::board::SimFan m_parameters;
  double m_rpm = 0;
  bool m_stuck = false;
};

}  // namespace boardsim
