/// @file
/// Fans.
#pragma once

#include "GloTypes.h"

/// Number of a fan, from 0.
using ddal_fan_id_t = u32;

extern "C" {

/// Sets the PWM frequency in hertz. DDAL_ERR_NOT_SUPPORTED: the chip cannot change it.
int ddal_fan_set_fan_pwm_freq(ddal_fan_id_t fan, int hertz);
/// Reads the PWM frequency in hertz. DDAL_ERR_NOT_SUPPORTED: the chip does not tell it.
int ddal_fan_get_fan_pwm_freq(ddal_fan_id_t fan, int* hertz);
/// Sets the PWM control value, 0 to 100 per cent. DDAL_ERR_INVALID: outside it.
int ddal_fan_set_pwm(ddal_fan_id_t fan, u32 control);
/// Reads the PWM control value in per cent.
int ddal_fan_get_pwm(ddal_fan_id_t fan, int* control);
/// Reads the rotating speed in revolutions a minute.
int ddal_fan_get_rpm(ddal_fan_id_t fan, int* rpm);

}  // extern "C"
