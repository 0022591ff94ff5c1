#include "SensorModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace boardsim {
namespace {

/// @return the part of a gap that is closed in a step
double Approach(double seconds, double inertia) { return inertia > 0 ? 1 - std::exp(-seconds / inertia) : 1; }

}  // namespace

double ActivityAt(double seconds) {
  // Two waves of unrelated length: traffic of minutes and bursts within it.
  constexpr double kCircle = 2 * std::numbers::pi;
  return 0.5 + 0.35 * std::sin(kCircle * seconds / 300) + 0.15 * std::sin(kCircle * seconds / 47);
}

SensorModel::SensorModel(const hwapi::board::SimTemperature& parameters, u32 defaultSeed)
    : m_parameters(parameters), m_random(parameters.seed.value_or(defaultSeed)), m_celsius(parameters.base) {}

int SensorModel::Step(double seconds, double activity, double fanLevel) {
  const double target = m_parameters.base + m_parameters.load * activity - m_parameters.cooling * fanLevel;
  m_celsius += (target - m_celsius) * Approach(seconds, m_parameters.inertia);
  return static_cast<int>(std::lround((m_celsius + Noise()) * 1000));
}

double SensorModel::Noise() {
  // Not a standard distribution: those give other values with other libraries.
  constexpr double kMiddle = static_cast<double>(std::minstd_rand::max()) / 2;
  return m_parameters.noise * (static_cast<double>(m_random()) / kMiddle - 1);
}

void FanModel::Stick(std::optional<int> rpm) {
  m_stuck = rpm.has_value();
  if (rpm) m_rpm = *rpm;
}

int FanModel::Step(double seconds, int control) {
  const double target = static_cast<double>(m_parameters.maxRpm) * std::clamp(control, 0, 100) / 100;
  if (!m_stuck) m_rpm += (target - m_rpm) * Approach(seconds, m_parameters.inertia);
  return static_cast<int>(std::lround(m_rpm));
}

double FanModel::Level() const {
  return m_parameters.maxRpm == 0 ? 0 : std::clamp(m_rpm / static_cast<double>(m_parameters.maxRpm), 0.0, 1.0);
}

}  // namespace boardsim
