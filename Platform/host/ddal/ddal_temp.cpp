#include "ddal_temp.h"

#include "Export.h"
#include "SimHardware.h"
#include "TemperatureSensors.h"
#include "ddal_error.h"

using namespace hwapi::ddal;

namespace {

/// The place of a sensor changes only when the file was cut, and others have set it up.
int ReadSimulated(const TemperatureSensor& sensor, int* thousandths) {
  if (const int error = ErrorUnlessRunning()) return error;
  SimHardware& hardware = SimHardware::Own();
  SimTemperatureRegisters registers{};
  if (const int error = hardware.Read(sensor.registers, &registers)) return error;
  if (registers.device != sensor.device) {
    Place<SimTemperatureRegisters> place{};
    if (const int error = hardware.Find(sensor.device, &place)) return error;
    if (const int error = hardware.Read(place, &registers)) return error;
  }
  if (registers.failure != 0) return registers.failure;
  *thousandths = registers.thousandths;
  return DDAL_OK;
}

}  // namespace

GARDDAL_API int ddal_temp_get_curr(u32 device, int* thousandths) {
  if (thousandths == nullptr) return DDAL_ERR_INVALID;
  const TemperatureSensor* sensor = FindSensor(device);
  if (sensor == nullptr) return DDAL_ERR_NO_DEVICE;
  return sensor->hwmon != nullptr ? sensor->hwmon->Read(thousandths) : ReadSimulated(*sensor, thousandths);
}
