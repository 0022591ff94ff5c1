/// @file
/// Error codes of the device drivers. Every ddal function returns 0 on success, else a code for ddal_strerror, and may
/// be called from every thread; outputs are untouched on failure.
#pragma once

#include "GloTypes.h"

/// Driver error codes. Codes of the verifying reads of the service (-1001, -1004) have texts too.
enum EDdalError : int {
  DDAL_OK = 0,
  DDAL_ERR_NO_DEVICE = -1,      ///< the board has no such device
  DDAL_ERR_IO = -2,             ///< the device did not answer
  DDAL_ERR_INVALID = -3,        ///< an argument is null or out of range
  DDAL_ERR_NOT_SUPPORTED = -4,  ///< the device has no such function
  DDAL_ERR_NOT_RUNNING = -5,    ///< simulated hardware that nobody simulates
  DDAL_ERR_CONFIG = -6,         ///< the board description does not fit the machine
  DDAL_ERR_BUSY = -7,           ///< another process has the device
  DDAL_ERR_TIMEOUT = -8,        ///< the device did not answer before its deadline
  DDAL_ERR_PENDING = -9,        ///< the device has not yet answered an earlier call that was given up
  DDAL_ERR_NOT_PLAUSIBLE = -1001,
  DDAL_ERR_RF_ASIC_OFF = -1004
};

extern "C" {

/// Checks that every device of the board description can be reached, and opens them.
/// Called once by the hardware-API runtime, before anything starts.
/// @param problem out: what is wrong, where, and what would be right; zero-terminated; "" on success
/// @param size    bytes of @p problem
/// @return 0, or DDAL_ERR_CONFIG
int ddal_init(char* problem, u32 size);

/// Text of an error code, any int.
/// @param buffer out: the text, cut to @p size - 1 characters and zero-terminated
/// @return @p buffer
char* ddal_strerror(int code, char* buffer, u32 size);

}  // extern "C"
