#include "ddal_fan.h"

#include "Export.h"
#include "Fans.h"
#include "SimHardware.h"
#include "ddal_error.h"

using namespace hwapi::ddal;

namespace {

constexpr u32 kFullControl = 100;  // per cent

/// Reads the registers of a simulated fan that runs. @return 0, or a driver error code
int ReadRunningFan(ddal_fan_id_t id, Place<SimFanRegisters>* place, SimFanRegisters* fan) {
  if (const int error = FindSimFan(id, place)) return error;
  if (const int error = ErrorUnlessRunning()) return error;
  if (const int error = SimHardware::Own().Read(*place, fan)) return error;
  return fan->present != 0 ? DDAL_OK : SimHardware::Own().Repair();
}

int ReadFan(ddal_fan_id_t id, int (HwmonFan::*read)(int*), SignedRegister SimFanRegisters::*which, int* value) {
  if (value == nullptr) return DDAL_ERR_INVALID;
  if (HwmonFan* chip = FindChipFan(id)) return (chip->*read)(value);
  Place<SimFanRegisters> place{};
  SimFanRegisters fan{};
  if (const int error = ReadRunningFan(id, &place, &fan)) return error;
  if (fan.readFailure != 0) return fan.readFailure;
  *value = fan.*which;
  return DDAL_OK;
}

int WriteFan(ddal_fan_id_t id, SignedRegister SimFanRegisters::*which, int value, bool valid) {
  Place<SimFanRegisters> place{};
  SimFanRegisters fan{};
  if (const int error = ReadRunningFan(id, &place, &fan)) return error;
  if (!valid) return DDAL_ERR_INVALID;
  if (fan.writeFailure != 0) return fan.writeFailure;
  return SimHardware::Own().Write(place->*which, value);
}

}  // namespace

GARDDAL_API int ddal_fan_set_fan_pwm_freq(ddal_fan_id_t fan, int hertz) {
  if (HwmonFan* chip = FindChipFan(fan)) return chip->SetFrequency(hertz);
  return WriteFan(fan, &SimFanRegisters::hertz, hertz, hertz > 0);
}

GARDDAL_API int ddal_fan_get_fan_pwm_freq(ddal_fan_id_t fan, int* hertz) {
  return ReadFan(fan, &HwmonFan::ReadFrequency, &SimFanRegisters::hertz, hertz);
}

GARDDAL_API int ddal_fan_set_pwm(ddal_fan_id_t fan, u32 control) {
  if (HwmonFan* chip = FindChipFan(fan)) return chip->SetControl(control);
  return WriteFan(fan, &SimFanRegisters::control, static_cast<int>(control), control <= kFullControl);
}

GARDDAL_API int ddal_fan_get_pwm(ddal_fan_id_t fan, int* control) {
  return ReadFan(fan, &HwmonFan::ReadControl, &SimFanRegisters::control, control);
}

GARDDAL_API int ddal_fan_get_rpm(ddal_fan_id_t fan, int* rpm) {
  return ReadFan(fan, &HwmonFan::ReadRpm, &SimFanRegisters::rpm, rpm);
}
