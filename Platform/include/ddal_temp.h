/// @file
/// Temperature sensors.
#pragma once

#include "GloTypes.h"

extern "C" {

/// Reads a sensor.
/// @param device      (board id << 16) | sensor index
/// @param thousandths out: thousandths of a degree Celsius
/// @return 0, else an error code; DDAL_ERR_TIMEOUT: the chip did not answer before the deadline of the board
/// description, and at once DDAL_ERR_PENDING as long as it has not
int ddal_temp_get_curr(u32 device, int* thousandths);

}  // extern "C"
