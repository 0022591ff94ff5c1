/// @file
/// The other side of simulated hardware: what a board simulator drives and the drivers of the board then read. A real
/// board's driver library has none of this. Results and threads as ddal_error.h says.
#pragma once

#include "GloTypes.h"
#include "ddal_fan.h"
#include "ddal_rf.h"

/// State of a simulated fan as the drivers left it.
struct SDdalSimFan {
  int control;  ///< per cent
  int hertz;    ///< PWM frequency
};

extern "C" {

/// Takes the simulated hardware into operation: until ddal_sim_stop or the end of the process, reads of simulated
/// devices succeed.
int ddal_sim_start(void);
/// Takes it out of operation; reads answer DDAL_ERR_NOT_RUNNING.
int ddal_sim_stop(void);

/// Sets what a sensor shows, in thousandths of a degree Celsius.
int ddal_sim_temp_set(u32 device, int thousandths);
/// Lets every read of a sensor fail with @p code; 0 ends that.
int ddal_sim_temp_fail(u32 device, int code);

/// Sets what a fan shows, in revolutions a minute.
int ddal_sim_fan_rpm_set(ddal_fan_id_t fan, int rpm);
/// Lets every read (or write) of a fan fail with @p code; 0 ends that.
int ddal_sim_fan_fail(ddal_fan_id_t fan, int readCode, int writeCode);
/// Reads what the drivers asked of a fan.
int ddal_sim_fan_get(ddal_fan_id_t fan, SDdalSimFan* state);

/// Sets the value of every register of an RF ASIC (non-zero: enabled) and the status of the chain of the same number.
int ddal_sim_rf_set(u32 index, u32 registerValue, u32 chainStatus);
/// Sets the counter of resets in a row.
int ddal_sim_reset_loop_count_set(i32 count);
/// Sets which file system is the active one, DDAL_FFS_FS1 or DDAL_FFS_FS2; DDAL_ERR_INVALID for any other.
int ddal_sim_linux_active_set(u32 fileSystem);

}  // extern "C"
