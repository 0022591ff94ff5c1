/// @file
/// The simulated sensors and fans of a board: physics in, driver registers out.
#pragma once

#include "BoardDescription.h"
#include "ControlMessages.h"
#include "SensorModel.h"

#include <vector>

namespace boardsim {

/// Keeps the registers of all simulated devices up to date. Used by one thread.
class SimulatedHardware {
 public:
  /// Length of a step of the physics unless somebody wants longer ones, milliseconds of board time.
  static constexpr unsigned kStepMs = 200;

  explicit SimulatedHardware(const hwapi::board::BoardDescription& board);
  ~SimulatedHardware();
  SimulatedHardware(const SimulatedHardware&) = delete;
  SimulatedHardware& operator=(const SimulatedHardware&) = delete;

  /// Takes the hardware into operation with first values. @return 0, else the driver's error code
  int Start();
  /// Advances the physics by @p steps steps of @p stepMs milliseconds, board time, and shows the result.
  void Advance(unsigned steps, unsigned stepMs = kStepMs);
  /// Lets a sensor show something else. @return 0, else the driver's error code
  int SetSensor(u32 device, SensorMode mode, i32 value);
  /// Lets a sensor be there, following the physics; harmless for one that the board does not simulate.
  void InsertSensor(u32 device);
  /// Lets a sensor be gone until it is inserted; harmless likewise.
  void RemoveSensor(u32 device);
  /// Lets a fan stick, fail, or follow the physics again. @return as SetSensor
  int SetFan(u32 id, FanChange change, i32 value);
  /// @return all simulated sensors
  std::vector<SensorStatus> Sensors() const;
  /// @return all simulated fans
  std::vector<FanStatus> Fans() const;

 private:
  struct Sensor {
    u32 device;
    SensorModel model;
    SensorMode mode = SensorMode::Auto;
    int shown = 0;  ///< what the physics gave last, thousandths
  };
  struct SimulatedFan {
    u32 id;
    FanModel model;
    int rpm = 0;
    i32 readFailure = 0;
    i32 writeFailure = 0;
  };

  /// @return the sensor; null when the board does not simulate it
  Sensor* FindSensor(u32 device);
  void StepOnce(double seconds);
  static void Change(SimulatedFan& fan, FanChange change, i32 value);
  double FanLevel() const;

  std::vector<Sensor> m_sensors;
  std::vector<SimulatedFan> m_fans;
  double m_seconds = 0;  ///< board time since the start
};

}  // namespace boardsim
