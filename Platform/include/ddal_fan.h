/// @file
/// Fans.
#pragma once

#include "GloTypes.h"

/// Number of a fan, from 0.
using ddal_fan_id_t = u32;

extern "C" {

// Every function: DDAL_ERR_NO_DEVICE: the board has no such fan, or its chip is not there just now (each call looks
// for it again); DDAL_ERR_IO: the chip answered with an error; DDAL_ERR_TIMEOUT: it did not answer before the
// deadline of the board description, and DDAL_ERR_PENDING: it still has not; DDAL_ERR_NOT_RUNNING: nobody simulates a
// simulated fan; and for the reads DDAL_ERR_INVALID: the output is null.
//
// Every fan that was changed is handed back as it was found when the process ends. DDAL_ERR_IO is thus also the answer
// to a change that could not be undone, and DDAL_ERR_BUSY to one while another process has the fans; both leave the fan
// as it is. Changes may wait 2 s, once, until a process that ended has handed the fans back.

/// Sets the PWM frequency in hertz; what the chip makes of it is what the next read tells. DDAL_ERR_INVALID: not
/// positive. DDAL_ERR_NOT_SUPPORTED: the chip cannot change it.
int ddal_fan_set_fan_pwm_freq(ddal_fan_id_t fan, int hertz);
/// Reads the PWM frequency in hertz. DDAL_ERR_NOT_SUPPORTED: the chip does not tell it.
int ddal_fan_get_fan_pwm_freq(ddal_fan_id_t fan, int* hertz);
/// Sets the PWM control value, 0 to 100 per cent, and takes the fan over from the chip's own control.
/// DDAL_ERR_INVALID: outside it.
int ddal_fan_set_pwm(ddal_fan_id_t fan, u32 control);
/// Reads the PWM control value in per cent.
int ddal_fan_get_pwm(ddal_fan_id_t fan, int* control);
/// Reads the rotating speed in revolutions a minute.
int ddal_fan_get_rpm(ddal_fan_id_t fan, int* rpm);

}  // extern "C"
