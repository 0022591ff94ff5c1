#include "SimulatedHardware.h"

#include "ddal_error.h"
#include "ddal_sim.h"

#include <algorithm>
#include <optional>
#include <variant>

namespace boardsim {

SimulatedHardware::SimulatedHardware(const hwapi::board::BoardDescription& board) {
  for (const hwapi::board::Temperature& sensor : board.temperatures) {
    const auto* sim = std::get_if<hwapi::board::SimTemperature>(&sensor.source);
    if (sim != nullptr) m_sensors.push_back({.device = sensor.device, .model = SensorModel(*sim, sensor.device)});
  }
  for (const hwapi::board::Fan& fan : board.fans) {
    const auto* sim = std::get_if<hwapi::board::SimFan>(&fan.source);
    if (sim != nullptr) m_fans.push_back({.id = fan.id, .model = FanModel(*sim)});
  }
}

SimulatedHardware::~SimulatedHardware() { ddal_sim_stop(); }

int SimulatedHardware::Start() {
  const int error = ddal_sim_start();
  if (error == 0) Advance(1);
  return error;
}

void SimulatedHardware::Advance(unsigned steps, unsigned stepMs) {
  for (unsigned i = 0; i < steps; ++i) StepOnce(stepMs / 1000.0);
  for (const Sensor& sensor : m_sensors) {
    if (sensor.mode == SensorMode::Auto) ddal_sim_temp_set(sensor.device, sensor.shown);
  }
  for (const SimulatedFan& fan : m_fans) ddal_sim_fan_rpm_set(fan.id, fan.rpm);
}

void SimulatedHardware::StepOnce(double seconds) {
  const double activity = ActivityAt(m_seconds);
  m_seconds += seconds;
  for (SimulatedFan& fan : m_fans) {
    SDdalSimFan asked{};
    ddal_sim_fan_get(fan.id, &asked);
    fan.rpm = fan.model.Step(seconds, asked.control);
  }
  const double fanLevel = FanLevel();
  for (Sensor& sensor : m_sensors) sensor.shown = sensor.model.Step(seconds, activity, fanLevel);
}

double SimulatedHardware::FanLevel() const {
  if (m_fans.empty()) return 0;
  double sum = 0;
  for (const SimulatedFan& fan : m_fans) sum += fan.model.Level();
  return sum / static_cast<double>(m_fans.size());
}

SimulatedHardware::Sensor* SimulatedHardware::FindSensor(u32 device) {
  const auto found = std::find_if(m_sensors.begin(), m_sensors.end(),
                                  [device](const Sensor& sensor) { return sensor.device == device; });
  return found != m_sensors.end() ? &*found : nullptr;
}

int SimulatedHardware::SetSensor(u32 device, SensorMode mode, i32 value) {
  if (mode == SensorMode::Absent) return DDAL_ERR_INVALID;
  Sensor* const sensor = FindSensor(device);
  if (sensor == nullptr || sensor->mode == SensorMode::Absent) return DDAL_ERR_NO_DEVICE;
  sensor->mode = mode;
  const int failure = mode == SensorMode::Failing ? value : 0;
  if (mode != SensorMode::Failing) ddal_sim_temp_set(device, mode == SensorMode::Pinned ? value : sensor->shown);
  return ddal_sim_temp_fail(device, failure);
}

void SimulatedHardware::InsertSensor(u32 device) {
  Sensor* const sensor = FindSensor(device);
  if (sensor == nullptr) return;
  sensor->mode = SensorMode::Auto;
  ddal_sim_temp_set(device, sensor->shown);
  ddal_sim_temp_fail(device, 0);
}

void SimulatedHardware::RemoveSensor(u32 device) {
  Sensor* const sensor = FindSensor(device);
  if (sensor == nullptr) return;
  sensor->mode = SensorMode::Absent;
  ddal_sim_temp_fail(device, DDAL_ERR_NO_DEVICE);
}

int SimulatedHardware::SetFan(u32 id, FanChange change, i32 value) {
  for (SimulatedFan& fan : m_fans) {
    if (fan.id != id) continue;
    Change(fan, change, value);
    if (fan.model.Stuck()) ddal_sim_fan_rpm_set(id, fan.rpm);
    return ddal_sim_fan_fail(id, fan.readFailure, fan.writeFailure);
  }
  return DDAL_ERR_NO_DEVICE;
}

void SimulatedHardware::Change(SimulatedFan& fan, FanChange change, i32 value) {
  switch (change) {
    case FanChange::Auto:
      fan.model.Stick(std::nullopt);
      fan.readFailure = fan.writeFailure = 0;
      return;
    case FanChange::Stick:
      fan.model.Stick(value);
      fan.rpm = value;
      return;
    case FanChange::FailRead:
      fan.readFailure = value;
      return;
    case FanChange::FailWrite:
      fan.writeFailure = value;
      return;
    case FanChange::Fail:
      fan.readFailure = fan.writeFailure = value;
      return;
  }
}

std::vector<SensorStatus> SimulatedHardware::Sensors() const {
  std::vector<SensorStatus> status;
  for (const Sensor& sensor : m_sensors) status.push_back({.device = sensor.device, .mode = sensor.mode});
  return status;
}

std::vector<FanStatus> SimulatedHardware::Fans() const {
  std::vector<FanStatus> status;
  for (const SimulatedFan& fan : m_fans) {
    status.push_back({.fan = fan.id,
                      .stuck = fan.model.Stuck() ? 1u : 0u,
                      .readFailure = fan.readFailure,
                      .writeFailure = fan.writeFailure});
  }
  return status;
}

}  // namespace boardsim
