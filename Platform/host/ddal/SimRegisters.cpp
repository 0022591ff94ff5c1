#include "SimRegisters.h"

#include <cmath>

namespace hwapi::ddal {
namespace {

constexpr i32 kUsualHertz = 25000;

bool AddTemperature(SimRegisters& registers, u32 device, const board::SimTemperature& sim) {
  if (FindTemperature(registers, device)) return true;
  const u32 count = registers.temperatureCount;
  if (count >= kSimTemperatures) return false;
  registers.temperatures[count].device = device;
  registers.temperatures[count].thousandths = static_cast<i32>(std::lround(sim.base * 1000));
  registers.temperatures[count].failure = 0;
  registers.temperatureCount = count + 1;
  return true;
}

/// A fan that nobody has told anything runs at full speed.
void AddFan(SimFanRegisters& fan, const board::SimFan& sim) {
  if (fan.present != 0) return;
  fan.control = 100;
  fan.hertz = kUsualHertz;
  fan.rpm = static_cast<i32>(sim.maxRpm);
  fan.present = 1;
}

void AddRf(SimRfRegisters& part, const board::Rf& rf) {
  if (part.present != 0) return;
  part.registerValue = rf.registerValue;
  part.chainStatus = rf.chainStatus;
  part.present = 1;
}

}  // namespace

bool AddDevices(SimRegisters& registers, const board::BoardDescription& description) {
  bool room = true;
  for (const board::Temperature& sensor : description.temperatures) {
    const auto* sim = std::get_if<board::SimTemperature>(&sensor.source);
    if (sim != nullptr) room = AddTemperature(registers, sensor.device, *sim) && room;
  }
  for (const board::Fan& fan : description.fans) {
    const auto* sim = std::get_if<board::SimFan>(&fan.source);
    if (sim != nullptr && fan.id < kSimFans) AddFan(registers.fans[fan.id], *sim);
  }
  for (const board::Rf& rf : description.rf) AddRf(registers.rf[rf.index], rf);
  for (SimRfRegisters& part : registers.rf) AddRf(part, board::Rf{});
  return room;
}

std::optional<u32> FindTemperature(const SimRegisters& registers, u32 device) {
  for (u32 i = 0; i < registers.temperatureCount && i < kSimTemperatures; ++i) {
    if (registers.temperatures[i].device == device) return i;
  }
  return std::nullopt;
}

}  // namespace hwapi::ddal
