#include "ddal_fan.h"

#include "Export.h"
#include "Fans.h"
#include "SimHardware.h"
#include "ddal_error.h"

using namespace hwapi::ddal;

namespace {

constexpr u32 kFullControl = 100;  // per cent

/// Finds the registers of a simulated fan that runs.
/// @return null and the driver error code in *error when there are none
SimFanRegisters* RunningFan(ddal_fan_id_t id, int* error) {
  SimFanRegisters* fan = FindSimFan(id, error);
  if (fan == nullptr || RunningRegisters(error) == nullptr) return nullptr;
  return fan;
}

int ReadFan(ddal_fan_id_t id, int (HwmonFan::*read)(int*), SignedRegister SimFanRegisters::*which, int* value) {
  if (value == nullptr) return DDAL_ERR_INVALID;
  if (HwmonFan* chip = FindChipFan(id)) return (chip->*read)(value);
  int error = DDAL_OK;
  const SimFanRegisters* fan = RunningFan(id, &error);
  if (fan == nullptr) return error;
  if (const int failure = fan->readFailure) return failure;
  *value = fan->*which;
  return DDAL_OK;
}

int WriteFan(ddal_fan_id_t id, SignedRegister SimFanRegisters::*which, int value, bool valid) {
  int error = DDAL_OK;
  SimFanRegisters* fan = RunningFan(id, &error);
  if (fan == nullptr) return error;
  if (!valid) return DDAL_ERR_INVALID;
  if (const int failure = fan->writeFailure) return failure;
  fan->*which = value;
  return DDAL_OK;
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
