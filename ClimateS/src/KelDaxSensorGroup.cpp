#include "KelDaxSensorGroup.h"

#include "KelDaxUnitTables.h"
#include "Log.h"

namespace ps::hwapi::common::climate {
namespace {

static_assert(std::size(kDax1MSensors) + std::size(kDax2MSensors) + std::size(kDax3MSensors) ==
              KelDaxSensorGroup::MAX_NUMBER_OF_ALL_DAX_SENSORS);

/// Index of a sensor type in the order Dax1, Dax2, Dax3, DaxAll.
constexpr u32 TypeIndex(ETempSensorType sensorType) { return sensorType - u32{ETempSensorType_Dax1}; }
constexpr u32 kAll = TypeIndex(ETempSensorType_DaxAll);

}  // namespace

KelDaxSensorGroup::KelDaxSensorGroup() : m_adetHandler(&m_units[0], &m_units[1], &m_units[2]) {}

u32 KelDaxSensorGroup::GetNumberOfSensors(ETempSensorType sensorType) {
  InitTables();
  CLM_LOG(Info, "GetNumberOfSensors dax1'%d' dax2'%d' dax3'%d'", static_cast<int>(m_units[0].Count()),
          static_cast<int>(m_units[1].Count()), static_cast<int>(m_units[2].Count()));
  const u32 index = TypeIndex(sensorType);
  if (index < kSlots) {
    m_numberOfSensors = m_units[index].Count();
    m_sensors = m_allSensors.data() + m_starts[index];
  } else if (index == kAll) {
    m_numberOfSensors = m_starts[2] + m_units[2].Count();
    m_sensors = m_allSensors.data();
  } else {
    m_numberOfSensors = 0;
  }
  return m_numberOfSensors;
}

void KelDaxSensorGroup::InitTables() {
  u32 next = 0;
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    m_starts[slot] = next;
    for (const Sensor& sensor : m_units[slot].Sensors()) {
      m_allSensors[next++] = sensor;
      CLM_LOG(Debug, "InitTables m_addresses'%d' m_names'%d' m_namesStr'%s'", static_cast<int>(sensor.device),
              static_cast<int>(sensor.name), sensor.text);
    }
  }
}

int KelDaxSensorGroup::ActivateTimer(ETempSensorType sensorType, unsigned int sender, unsigned int interval) {
  PointAtTimer(sensorType);
  return SensorGroup::ActivateTimer(sensorType, sender, interval);
}

int KelDaxSensorGroup::DeactivateTimer(ETempSensorType sensorType) {
  PointAtTimer(sensorType);
  return SensorGroup::DeactivateTimer(sensorType);
}

void KelDaxSensorGroup::PointAtTimer(ETempSensorType sensorType) {
  const u32 index = TypeIndex(sensorType);
  m_timerIdPtr = index < m_timers.size() ? &m_timers[index] : nullptr;
}

void KelDaxSensorGroup::HandleAutodetUnitInd(unsigned int hw_sw_id, unsigned int unit_id,
                                             unsigned int autodetectionState) {
  CLM_LOG(Info, "KelDaxSensorGroup::HandleAutodetUnitInd hw_sw_id'%d' unit_id'%d' autodetectionState'%d'",
          static_cast<int>(hw_sw_id), static_cast<int>(unit_id), static_cast<int>(autodetectionState));
  m_adetHandler.HandleAutodetUnitInd(hw_sw_id, unit_id, autodetectionState);
  GetNumberOfSensors(ETempSensorType_DaxAll);
  AddSensorsToBlackBox();
}

}  // namespace ps::hwapi::common::climate
