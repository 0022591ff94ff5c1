#include "TempText.h"

#include "TempTypes.h"
#include "ddal_error.h"
#include "messages/TempSensorName.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string_view>

namespace clmctl {
namespace {

std::string DriverText(i32 error) {
  char text[60];
  return ddal_strerror(error, text, sizeof text);
}

}  // namespace

std::string SensorText(u32 name) {
  const std::string_view text = TempSensorNameToText(name);
  return text.empty() ? std::to_string(name) : std::string(text);
}

std::string StateText(const TempReading& reading) {
  if (reading.valid) return "ok";
  return "failed: " + DriverText(reading.driverError) + " (" + std::to_string(reading.driverError) + ")";
}

std::string TempLines(const TempIndication& indication, const std::string& time) {
  if (indication.readings.empty()) return time + "  " + SensorTypeText(indication.sensorType) + " has no sensors\n";
  std::string lines;
  for (const TempReading& reading : indication.readings) {
    char value[48] = "-";
    if (reading.valid) std::snprintf(value, sizeof value, "%.3f", reading.celsius);
    char line[256];
    std::snprintf(line, sizeof line, "%s  %-16s %10s %s  %s\n", time.c_str(), SensorText(reading.name).c_str(), value,
                  reading.valid ? "C" : " ", StateText(reading).c_str());
    lines += line;
  }
  return lines;
}

std::vector<nlohmann::ordered_json> TempObjects(const TempIndication& indication, u32 number, const std::string& time) {
  nlohmann::ordered_json empty;
  empty["time"] = time;
  empty["indication"] = number;
  empty["sensor_type"] = SensorTypeText(indication.sensorType);
  empty["sensor"] = nullptr;
  empty["sensor_number"] = nullptr;
  empty["state"] = "no sensors";
  for (const char* key : {"temperature_celsius", "driver_error", "driver_error_text"}) empty[key] = nullptr;
  if (indication.readings.empty()) return {std::move(empty)};

  std::vector<nlohmann::ordered_json> objects;
  for (const TempReading& reading : indication.readings) {
    nlohmann::ordered_json& object = objects.emplace_back(empty);
    object["sensor"] = SensorText(reading.name);
    object["sensor_number"] = reading.name;
    object["state"] = reading.valid ? "ok" : "failed";
    if (reading.valid) {
      object["temperature_celsius"] = reading.celsius;
    } else {
      object["driver_error"] = reading.driverError;
      object["driver_error_text"] = DriverText(reading.driverError);
    }
  }
  return objects;
}

}  // namespace clmctl
