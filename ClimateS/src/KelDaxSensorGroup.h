/// @file
/// The sensors of the plug-in processing units of a Kel control board.
#pragma once

#include "KelDaxAdetHandler.h"
#include "SensorGroup.h"

#include <array>

namespace ps::hwapi::common::climate {

/// Serves the sensor types Dax1, Dax2, Dax3 and DaxAll, each with a timer of its own. Its sensors are those of the
/// units that are plugged in; the list is made anew whenever the number of sensors is asked for. Service thread only.
class KelDaxSensorGroup : public SensorGroup {
 public:
  static constexpr std::size_t MAX_NUMBER_OF_ALL_DAX_SENSORS = 33;

  KelDaxSensorGroup();

  u32 GetNumberOfSensors(ETempSensorType sensorType) override;
  int ActivateTimer(ETempSensorType sensorType, unsigned int sender, unsigned int interval) override;
  int DeactivateTimer(ETempSensorType sensorType) override;
  void HandleAutodetUnitInd(unsigned int hw_sw_id, unsigned int unit_id, unsigned int autodetectionState) override;

 private:
  static constexpr std::size_t kSlots = 3;

  void InitTables();
  void PointAtTimer(ETempSensorType sensorType);

  std::array<TAaSysTimerId, kSlots + 1> m_timers{};  ///< Dax1, Dax2, Dax3, DaxAll
  std::array<Sensor, MAX_NUMBER_OF_ALL_DAX_SENSORS> m_allSensors{};
  std::array<KelDaxUnit, kSlots> m_units;
  std::array<u32, kSlots> m_starts{};  ///< index of each unit's first sensor in m_allSensors
  KelDaxAdetHandler m_adetHandler;
};

}  // namespace ps::hwapi::common::climate
