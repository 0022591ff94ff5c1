#include "ddal_sim.h"

#include "Export.h"
#include "SimHardware.h"
#include "TemperatureSensors.h"
#include "ddal_board.h"
#include "ddal_error.h"

using namespace hwapi::ddal;

namespace {

int SetTemperature(u32 device, SignedRegister SimTemperatureRegisters::*which, int value) {
  const TemperatureSensor* sensor = FindSensor(device);
  if (sensor == nullptr) return DDAL_ERR_NO_DEVICE;
  if (sensor->hwmon != nullptr) return DDAL_ERR_NOT_SUPPORTED;
  if (sensor->registers == nullptr) return DDAL_ERR_IO;
  sensor->registers->*which = value;
  return DDAL_OK;
}

}  // namespace

GARDDAL_API int ddal_sim_start() { return SimHardware::Own().Start(); }

GARDDAL_API int ddal_sim_stop() {
  SimHardware::Own().Stop();
  return DDAL_OK;
}

GARDDAL_API int ddal_sim_temp_set(u32 device, int thousandths) {
  return SetTemperature(device, &SimTemperatureRegisters::thousandths, thousandths);
}

GARDDAL_API int ddal_sim_temp_fail(u32 device, int code) {
  return SetTemperature(device, &SimTemperatureRegisters::failure, code);
}

GARDDAL_API int ddal_sim_fan_rpm_set(ddal_fan_id_t id, int rpm) {
  int error = DDAL_OK;
  SimFanRegisters* fan = FindSimFan(id, &error);
  if (fan == nullptr) return error;
  fan->rpm = rpm;
  return DDAL_OK;
}

GARDDAL_API int ddal_sim_fan_fail(ddal_fan_id_t id, int readCode, int writeCode) {
  int error = DDAL_OK;
  SimFanRegisters* fan = FindSimFan(id, &error);
  if (fan == nullptr) return error;
  fan->readFailure = readCode;
  fan->writeFailure = writeCode;
  return DDAL_OK;
}

GARDDAL_API int ddal_sim_fan_get(ddal_fan_id_t id, SDdalSimFan* state) {
  if (state == nullptr) return DDAL_ERR_INVALID;
  int error = DDAL_OK;
  const SimFanRegisters* fan = FindSimFan(id, &error);
  if (fan == nullptr) return error;
  *state = {.control = fan->control, .hertz = fan->hertz};
  return DDAL_OK;
}

GARDDAL_API int ddal_sim_rf_set(u32 index, u32 registerValue, u32 chainStatus) {
  if (index >= kSimRfParts) return DDAL_ERR_NO_DEVICE;
  SimRegisters* registers = SimHardware::Own().Registers();
  if (registers == nullptr) return DDAL_ERR_IO;
  registers->rf[index].registerValue = registerValue;
  registers->rf[index].chainStatus = chainStatus;
  return DDAL_OK;
}

GARDDAL_API int ddal_sim_reset_loop_count_set(i32 count) {
  SimRegisters* registers = SimHardware::Own().Registers();
  if (registers == nullptr) return DDAL_ERR_IO;
  registers->resetLoopCount = count;
  registers->resetLoopCountIsSet = 1;
  return DDAL_OK;
}

GARDDAL_API int ddal_sim_linux_active_set(u32 fileSystem) {
  if (fileSystem != DDAL_FFS_FS1 && fileSystem != DDAL_FFS_FS2) return DDAL_ERR_INVALID;
  SimRegisters* registers = SimHardware::Own().Registers();
  if (registers == nullptr) return DDAL_ERR_IO;
  registers->linuxActive = fileSystem;
  registers->linuxActiveIsSet = 1;
  return DDAL_OK;
}
