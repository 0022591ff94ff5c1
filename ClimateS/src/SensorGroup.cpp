#include "SensorGroup.h"

#include "BlackBoxData.h"
#include "DdalText.h"
#include "Endpoints.h"
#include "Log.h"
#include "Msg.h"
#include "OwnedMsg.h"
#include "messages/MessageIds.h"

#include <cstdlib>
#include <cstring>

namespace ps::hwapi::common::climate {
namespace {

using PollTimerMsg = Msg<SApiTemperaturePollTimerInd, API_TEMPERATURE_POLL_TIMER_IND_MSG>;

constexpr u32 kMinIntervalMs = 900;
/// Longest interval whose microseconds fit in 32 bits.
constexpr u32 kMaxIntervalMs = 4294967;
constexpr u32 kFirstExpiryUs = 1;
constexpr u32 kUsPerMs = 1000;

}  // namespace

u32 SensorGroup::GetNumberOfSensors(ETempSensorType /*sensorType*/) { return m_numberOfSensors; }

void SensorGroup::Read(STempMeasInfo* info) {
  int thousandths = 0;
  for (u32 i = 0; i < m_numberOfSensors; ++i) ReadSensor(m_sensors[i], info[i], thousandths);
}

void SensorGroup::ReadSensor(const Sensor& sensor, STempMeasInfo& info, int& thousandths) {
  std::memset(info.unit_temp, 0, sizeof(info.unit_temp));
  info.unit_name = sensor.name;
  const int rc = m_tempVerifier.GetCurrentTemperature(sensor.name, sensor.device, &thousandths);
  if (rc != 0) {
    BlackBoxData::getInstance()->addTemperatureError(sensor.text);
    info.temp_sensor_state = 0;
    info.i2c_fault_id = static_cast<u32>(std::abs(static_cast<long long>(rc)));
    CLM_LOG(Error, "Can not read temperature from temp sensor: %s. DDAL ecode %i, %s", sensor.text, rc,
            DdalText(rc).c_str());
    return;
  }
  info.unit_temp[0] = static_cast<float>(thousandths) / 1000.0f;
  info.temp_sensor_state = 1;
  info.i2c_fault_id = 0;
  BlackBoxData::getInstance()->addTemperature(sensor.text, thousandths);
  CLM_LOG(Debug, "Temperature read from sensor: %s (%d) temperature %.2f", sensor.text, sensor.name,
          static_cast<double>(info.unit_temp[0]));
}

int SensorGroup::ActivateTimer(ETempSensorType sensorType, unsigned int sender, unsigned int interval) {
  if (m_timerIdPtr == nullptr) return ETempMeasError_SensorType;
  if (*m_timerIdPtr != 0) return ETempMeasError_AlreadyStarted;

  OwnedMsg timerMsg(PollTimerMsg(AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, AaSysComGetOwnNid()),
                                 sizeof(SApiTemperaturePollTimerInd)));
  if (timerMsg.payload == nullptr) {
    throw MsgCreationFailedException("Message allocation failed for API_TEMPERATURE_POLL_TIMER_IND_MSG", __FILE_NAME__,
                                     __LINE__);
  }
  timerMsg.SetSender(sender);
  timerMsg->sensorType = sensorType;
  if (interval < kMinIntervalMs || interval > kMaxIntervalMs) return ETempMeasError_Interval;
  if (AaSysTimermCreate(m_timerIdPtr, kFirstExpiryUs, interval * kUsPerMs, timerMsg.msg) != 0) {
    return ETempMeasError_Interval;
  }
  timerMsg.Release();  // the timer's now
  return ETempMeasError_NoError;
}

int SensorGroup::DeactivateTimer(ETempSensorType /*sensorType*/) {
  if (m_timerIdPtr == nullptr) return ETempMeasError_NoError;
  AaSysTimerDelete(*m_timerIdPtr);
  *m_timerIdPtr = 0;
  return ETempMeasError_NoError;
}

void SensorGroup::HandleAutodetUnitInd(unsigned int hw_sw_id, unsigned int unit_id, unsigned int autodetectionState) {
  CLM_LOG(Info, "SensorGroup::HandleAutodetUnitInd NOT IMPLEMENTED hw_sw_id'%d' unit_id'%d' autodetectionState'%d'",
          static_cast<int>(hw_sw_id), static_cast<int>(unit_id), static_cast<int>(autodetectionState));
}

void SensorGroup::AddSensorsToBlackBox() {
  for (u32 i = 0; i < m_numberOfSensors; ++i) BlackBoxData::getInstance()->addSensor(m_sensors[i].text);
}

}  // namespace ps::hwapi::common::climate
