/// @file
/// A temperature sensor of the board.
#pragma once

#include "GloTypes.h"
#include "messages/TempSensorName.h"

namespace ps::hwapi::common::climate {

struct Sensor {
  const char* text;      ///< name in logs and in the black box
  ETempSensorName name;  ///< name in indications
  u32 device;            ///< driver device id: (driver board id << 16) | index on that board
};

}  // namespace ps::hwapi::common::climate
