#include "TempText.h"

#include "TempTypes.h"
#include "ddal_error.h"
#include "messages/TempSensorName.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string_view>

namespace clmctl {
namespace {

std::string DriverText(u32 error) {
  char text[60];
  return ddal_strerror(-static_cast<int>(error), text, sizeof text);
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
  std::string lines;
  for (const TempReading& reading : indication.readings) {
    char value[48] = "-";
    if (reading.valid) std::snprintf(value, sizeof value, "%.3f", reading.celsius);
    char line[256];
    std::snprintf(line, sizeof line, "%s  %-16s %10s C  %s\n", time.c_str(), SensorText(reading.name).c_str(), value,
                  StateText(reading).c_str());
    lines += line;
  }
  return lines;
}

std::vector<nlohmann::ordered_json> TempObjects(const TempIndication& indication, u32 number, const std::string& time) {
  std::vector<nlohmann::ordered_json> objects;
  for (const TempReading& reading : indication.readings) {
    nlohmann::ordered_json object;
    object["time"] = time;
    object["indication"] = number;
    object["sensor_type"] = SensorTypeText(indication.sensorType);
    object["sensor"] = SensorText(reading.name);
    object["sensor_number"] = reading.name;
    object["state"] = reading.valid ? "ok" : "failed";
    object["temperature_celsius"] = reading.valid ? nlohmann::ordered_json(reading.celsius) : nullptr;
    object["driver_error"] = reading.valid ? nullptr : nlohmann::ordered_json(-static_cast<int>(reading.driverError));
    object["driver_error_text"] = reading.valid ? nullptr : nlohmann::ordered_json(DriverText(reading.driverError));
    objects.push_back(std::move(object));
  }
  return objects;
}

}  // namespace clmctl
