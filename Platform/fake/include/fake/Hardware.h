/// @file
/// Sensors, fans and RF chips. A device that was not set up answers DDAL_ERR_NO_DEVICE.
#pragma once

#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_rf.h"
#include "ddal_temp.h"

#include <initializer_list>
#include <optional>

namespace fake {

/// What one read gives: a value, or an error code when that is not 0.
struct Reading {
  int value = 0;
  int error = DDAL_OK;
};

/// Lets a sensor show a value, in thousandths of a degree Celsius, from now on.
void SetTemperature(u32 device, int thousandths);
/// Lets a sensor answer an error code from now on.
void FailTemperature(u32 device, int error);
/// Lets the next reads of a sensor give these readings, one after the other; the last one stays.
void QueueTemperatures(u32 device, std::initializer_list<Reading> readings);

/// A fan as it is found.
struct Fan {
  int rpm = 0;
  int hertz = 25000;         ///< PWM frequency
  int control = 0;           ///< per cent
  int readError = DDAL_OK;   ///< answer of every get
  int writeError = DDAL_OK;  ///< answer of every set
  /// What a get that fails by readError writes all the same; nothing: it leaves its output untouched.
  std::optional<int> garbage = {};
};
/// Sets a fan up.
void SetFan(ddal_fan_id_t fan, const Fan& state);
/// @return the fan as it is now; throws std::out_of_range when it was not set up
Fan GetFan(ddal_fan_id_t fan);

/// Sets a register of an RF ASIC.
void SetRfRegister(ddal_rf_asic_id_t asic, u32 reg, u32 value);
/// Sets every register of an RF ASIC that is not set for itself.
void SetRfAsic(ddal_rf_asic_id_t asic, u32 value);
/// Sets the status of an RF chain.
void SetRfChain(ddal_rf_chain_id_t chain, u32 status);

}  // namespace fake
