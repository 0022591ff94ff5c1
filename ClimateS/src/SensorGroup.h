/// @file
/// The temperature sensors that one request can address.
#pragma once

#include "AaSysTime.h"
#include "HwapiException.h"
#include "Sensor.h"
#include "TemperatureVerifier.h"
#include "messages/TempMeas.h"

namespace ps::hwapi::common::climate {

/// A group of sensors with one periodic poll timer. Service thread only.
class SensorGroup {
 public:
  /// The poll timer's message could not be created.
  class MsgCreationFailedException : public CHwapiException {
   public:
    MsgCreationFailedException(std::string description, std::string file, std::size_t line)
        : CHwapiException("Message creation failed", std::move(description), std::move(file), line) {}
  };

  SensorGroup() = default;
  SensorGroup(const SensorGroup&) = delete;
  SensorGroup& operator=(const SensorGroup&) = delete;
  virtual ~SensorGroup() = default;

  /// @return how many entries Read fills for that sensor type; to be asked right before Read
  virtual u32 GetNumberOfSensors(ETempSensorType sensorType);
  /// Reads every sensor, in order; a failed one is marked in its entry and stops nothing. Values and failures are
  /// recorded in the black box.
  /// @param info room for the number of sensors
  virtual void Read(STempMeasInfo* info);
  /// Starts the poll timer: the first expiry comes at once, then one every @p interval milliseconds.
  /// @param sender   the client, who becomes the sender of the timer's message
  /// @param interval 900 to 4294967 milliseconds
  /// @return ETempMeasError: 0, 3 (no timer for that type), 5 (interval, or the timer cannot be created), 6 (runs)
  /// @throw MsgCreationFailedException
  virtual int ActivateTimer(ETempSensorType sensorType, unsigned int sender, unsigned int interval);
  /// Stops the poll timer. @return 0, also when it does not run
  virtual int DeactivateTimer(ETempSensorType sensorType);
  /// Tells the group of a plug-in unit; a group of fixed sensors only logs it.
  virtual void HandleAutodetUnitInd(unsigned int hw_sw_id, unsigned int unit_id, unsigned int autodetectionState);

  /// Registers the names of the sensors with the black box.
  void AddSensorsToBlackBox();

 protected:
  ETempSensorType m_sensorType = ETempSensorType_None;  ///< stays None
  u32 m_numberOfSensors = 0;
  const Sensor* m_sensors = nullptr;
  TAaSysTimerId* m_timerIdPtr = nullptr;  ///< the timer's cell, 0 while none runs; null: the group has no timer
  TemperatureVerifier m_tempVerifier;

 private:
  void ReadSensor(const Sensor& sensor, STempMeasInfo& info, int& thousandths);
};

}  // namespace ps::hwapi::common::climate
