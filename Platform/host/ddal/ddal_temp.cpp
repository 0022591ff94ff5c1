#include "ddal_temp.h"

#include "Export.h"
#include "SimHardware.h"
#include "TemperatureSensors.h"
#include "ddal_error.h"

using namespace hwapi::ddal;

namespace {

int ReadSimulated(const SimTemperatureRegisters* registers, int* thousandths) {
  if (registers == nullptr) return DDAL_ERR_IO;
  if (!SimHardware::Own().Running()) return DDAL_ERR_NOT_RUNNING;
  if (const int failure = registers->failure) return failure;
  *thousandths = registers->thousandths;
  return DDAL_OK;
}

}  // namespace

GARDDAL_API int ddal_temp_get_curr(u32 device, int* thousandths) {
  if (thousandths == nullptr) return DDAL_ERR_INVALID;
  const TemperatureSensor* sensor = FindSensor(device);
  if (sensor == nullptr) return DDAL_ERR_NO_DEVICE;
  return sensor->hwmon != nullptr ? sensor->hwmon->Read(thousandths) : ReadSimulated(sensor->registers, thousandths);
}
