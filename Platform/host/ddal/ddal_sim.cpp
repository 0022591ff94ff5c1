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
  Place<SimTemperatureRegisters> place{};
  if (const int error = SimHardware::Own().Find(device, &place)) return error;
  return SimHardware::Own().Write(place->*which, value);
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
  Place<SimFanRegisters> fan{};
  if (const int error = FindSimFan(id, &fan)) return error;
  return SimHardware::Own().Write(fan->*&SimFanRegisters::rpm, rpm);
}

GARDDAL_API int ddal_sim_fan_fail(ddal_fan_id_t id, int readCode, int writeCode) {
  Place<SimFanRegisters> fan{};
  if (const int error = FindSimFan(id, &fan)) return error;
  if (const int error = SimHardware::Own().Write(fan->*&SimFanRegisters::readFailure, readCode)) return error;
  return SimHardware::Own().Write(fan->*&SimFanRegisters::writeFailure, writeCode);
}

GARDDAL_API int ddal_sim_fan_get(ddal_fan_id_t id, SDdalSimFan* state) {
  if (state == nullptr) return DDAL_ERR_INVALID;
  Place<SimFanRegisters> place{};
  if (const int error = FindSimFan(id, &place)) return error;
  SimFanRegisters fan{};
  if (const int error = SimHardware::Own().Read(place, &fan)) return error;
  *state = {.control = fan.control, .hertz = fan.hertz};
  return DDAL_OK;
}

GARDDAL_API int ddal_sim_rf_set(u32 index, u32 registerValue, u32 chainStatus) {
  if (index >= kSimRfParts) return DDAL_ERR_NO_DEVICE;
  const auto part = (kSimFile->*&SimRegisters::rf)[index];
  if (const int error = SimHardware::Own().Write(part->*&SimRfRegisters::registerValue, registerValue)) return error;
  return SimHardware::Own().Write(part->*&SimRfRegisters::chainStatus, chainStatus);
}

GARDDAL_API int ddal_sim_reset_loop_count_set(i32 count) {
  SimHardware& hardware = SimHardware::Own();
  if (const int error = hardware.Write(kSimFile->*&SimRegisters::resetLoopCount, count)) return error;
  return hardware.Write(kSimFile->*&SimRegisters::resetLoopCountIsSet, Register{1});
}

GARDDAL_API int ddal_sim_linux_active_set(u32 fileSystem) {
  if (fileSystem != DDAL_FFS_FS1 && fileSystem != DDAL_FFS_FS2) return DDAL_ERR_INVALID;
  SimHardware& hardware = SimHardware::Own();
  if (const int error = hardware.Write(kSimFile->*&SimRegisters::linuxActive, fileSystem)) return error;
  return hardware.Write(kSimFile->*&SimRegisters::linuxActiveIsSet, Register{1});
}
