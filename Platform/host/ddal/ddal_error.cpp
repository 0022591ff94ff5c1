#include "ddal_error.h"

#include "AaSysLog.h"
#include "Export.h"
#include "FanRestore.h"
#include "Fans.h"
#include "SimHardware.h"
#include "TemperatureSensors.h"

#include <cstdio>
#include <string>

using namespace hwapi;

namespace {

struct ErrorText {
  int code;
  const char* text;
};

constexpr ErrorText kErrorTexts[] = {
    {.code = DDAL_OK, .text = "No error"},
    {.code = DDAL_ERR_NO_DEVICE, .text = "The board has no such device"},
    {.code = DDAL_ERR_IO, .text = "The device did not answer"},
    {.code = DDAL_ERR_INVALID, .text = "An argument is out of range"},
    {.code = DDAL_ERR_NOT_SUPPORTED, .text = "The device has no such function"},
    {.code = DDAL_ERR_NOT_RUNNING, .text = "Nobody simulates the simulated hardware"},
    {.code = DDAL_ERR_CONFIG, .text = "The board description does not fit"},
    {.code = DDAL_ERR_BUSY, .text = "Another process has the device"},
    {.code = DDAL_ERR_TIMEOUT, .text = "The device did not answer in time"},
    {.code = DDAL_ERR_PENDING, .text = "The device is busy with an earlier call"},
    {.code = DDAL_ERR_NOT_PLAUSIBLE, .text = "The readings are not plausible"},
    {.code = DDAL_ERR_RF_ASIC_OFF, .text = "The RF ASIC is not enabled"},
};

constexpr u32 kDriverFeature = 2;  // id of the drivers' own log lines

/// @param what "" is no problem
void AddProblem(std::string& problems, unsigned line, const std::string& device, const std::string& what) {
  if (what.empty()) return;
  if (!problems.empty()) problems += '\n';
  problems += board::OwnBoard().path + ':' + std::to_string(line) + ": " + device + ": " + what;
}

std::string NameOf(const board::Temperature& sensor) {
  char name[32];
  std::snprintf(name, sizeof name, "temperature 0x%X", sensor.device);
  return name;
}

/// @return what keeps the sensor from being read; "" for an optional one
std::string CheckSensor(const ddal::TemperatureSensor& sensor) {
  if (sensor.description->optional) return {};
  if (sensor.hwmon != nullptr) return sensor.hwmon->Check(NameOf(*sensor.description));
  return ddal::SimHardware::Own().Problem();
}

}  // namespace

GARDDAL_API int ddal_init(char* problem, u32 size) {
  ddal::RestoreFansIfFree([](const std::string& line) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, kDriverFeature, "On record: %s", line.c_str());
  });
  std::string problems;
  for (const ddal::TemperatureSensor& sensor : ddal::TemperatureSensors()) {
    AddProblem(problems, sensor.description->line, NameOf(*sensor.description), CheckSensor(sensor));
  }
  for (const auto& [driver, description] : ddal::ChipFans()) {
    if (description->optional) continue;
    const std::string name = "fan " + std::to_string(description->id);
    AddProblem(problems, description->line, name, driver->Check(name));
  }
  if (problem != nullptr && size != 0) std::snprintf(problem, size, "%s", problems.c_str());
  return problems.empty() ? DDAL_OK : DDAL_ERR_CONFIG;
}

GARDDAL_API char* ddal_strerror(int code, char* buffer, u32 size) {
  if (buffer == nullptr || size == 0) return buffer;
  for (const ErrorText& known : kErrorTexts) {
    if (known.code != code) continue;
    std::snprintf(buffer, size, "%s", known.text);
    return buffer;
  }
  std::snprintf(buffer, size, "Unknown driver error %d", code);
  return buffer;
}
