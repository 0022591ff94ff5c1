/// Sensors, fans and their latest readings.
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "Log.h"

#include <new>
#include <string_view>

namespace ps::hwapi::common::climate {
namespace {

/// @return whether the name is new
template <typename Map>
bool AddRecord(Published<Map>& records, const std::string& name) {
  if (records.Read()->contains(name)) return false;
  return records.Update([&name](Map& map) {
    map.emplace(name, std::make_shared<typename Map::mapped_type::element_type>());
    return true;
  });
}

/// @return the record; null when the name is unknown
template <typename Map>
typename Map::mapped_type FindRecord(const Published<Map>& records, std::string_view name) {
  const auto map = records.Read();
  const auto found = map->find(name);
  return found != map->end() ? found->second : nullptr;
}

}  // namespace

void BlackBoxData::addSensor(std::string sensorName) try {
  if (AddRecord(sensorTempMap, sensorName)) {
    CLM_LOG(Debug, "BlackBoxData::addSensor(): sensor %s", sensorName.c_str());
  }
} catch (const std::bad_alloc&) {
  LogOutOfMemory("addSensor");
}

void BlackBoxData::addFan(std::string fanName) try {
  if (AddRecord(fanSpeedMap, fanName)) CLM_LOG(Debug, "BlackBoxData::addFan(): fanName %s", fanName.c_str());
} catch (const std::bad_alloc&) {
  LogOutOfMemory("addFan");
}

void BlackBoxData::removeSensor(std::string sensorName) try {
  CLM_LOG(Debug, "BlackBoxData::removeSensor");
  if (!sensorTempMap.Read()->contains(sensorName)) return;
  CLM_LOG(Debug, "BlackBoxData::removeSensor(): delete sensor %s", sensorName.c_str());
  sensorTempMap.Update([&sensorName](SensorTempMap& map) { return map.erase(sensorName) != 0; });
} catch (const std::bad_alloc&) {
  LogOutOfMemory("removeSensor");
}

void BlackBoxData::addTemperature(const char* sensorName, int temperature) {
  if (blackBoxTemperatureTraceEnabled == 0) return;
  const auto sensor = FindRecord(sensorTempMap, sensorName);
  if (sensor == nullptr) {
    CLM_LOG(Error, "BlackBoxData::addTemperature(): sensor %s not found", sensorName);
    return;
  }
  // The maximum first: whoever writes the trace file meanwhile reads the minimum first, and takes it for both.
  if (sensor->maxTemperature < temperature) sensor->maxTemperature = temperature;
  if (sensor->minTemperature > temperature) sensor->minTemperature = temperature;
  sensor->temperature = temperature;
  sensor->error = 0;
  CLM_LOG(Debug, "BlackBoxData::addTemperature(): temperature %d", temperature);
}

void BlackBoxData::addTemperatureError(const char* sensorName) {
  if (blackBoxTemperatureTraceEnabled == 0) return;
  if (const auto sensor = FindRecord(sensorTempMap, sensorName)) {
    sensor->error = 1;
  } else {
    CLM_LOG(Error, "BlackBoxData::addTemperatureError(): sensor %s not found", sensorName);
  }
}

void BlackBoxData::addFanSpeed(std::string fanName, int speed) {
  if (blackBoxTemperatureTraceEnabled == 0) return;
  const auto fan = FindRecord(fanSpeedMap, fanName);
  if (fan == nullptr) {
    CLM_LOG(Error, "BlackBoxData::addFanSpeed(): fan %s not found", fanName.c_str());
    return;
  }
  fan->speed = speed;
  fan->error = 0;
  CLM_LOG(Debug, "BlackBoxData::addFanSpeed(): speed %d", speed);
}

void BlackBoxData::addFanSpeedError(std::string fanName) {
  if (blackBoxTemperatureTraceEnabled == 0) return;
  if (const auto fan = FindRecord(fanSpeedMap, fanName)) {
    fan->error = 1;
  } else {
    CLM_LOG(Error, "BlackBoxData::addFanSpeedError(): fan %s not found", fanName.c_str());
  }
}

}  // namespace ps::hwapi::common::climate
