#include "SensorNames.h"

namespace boardsim {
namespace {

/// Processing units sit in slots 1 to 3, boards 2 to 4; their sensors have the same places on each.
std::string ProcessingUnitSensor(u32 board, u32 index) {
  constexpr u32 kLastDsp = 9;
  const std::string unit = "DAX" + std::to_string(board - 1);
  if (index == 0) return unit + "_MCU";
  if (index <= kLastDsp) return unit + "_DSP" + std::to_string(index);
  return index == kLastDsp + 1 ? unit + "_VORNIK" : "";
}

}  // namespace

std::string SensorNameOf(u32 device) {
  const u32 board = device >> 16;
  if (board >= 2 && board <= 4) return ProcessingUnitSensor(board, device & 0xFFFFu);
  for (const NamedSensor& sensor : kNamedSensors) {
    if (sensor.device == device) return std::string(sensor.name);
  }
  return {};
}

}  // namespace boardsim
