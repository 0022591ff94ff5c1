#include "ddal_temp.h"

#include "Internal.h"
#include "fake/Hardware.h"

#include <deque>
#include <map>

namespace fake {
namespace {

using namespace internal;

std::map<u32, std::deque<Reading>>& TheSensors() {
  static auto& sensors = *new std::map<u32, std::deque<Reading>>;
  return sensors;
}

}  // namespace

void SetTemperature(u32 device, int thousandths) { QueueTemperatures(device, {{.value = thousandths}}); }

void FailTemperature(u32 device, int error) { QueueTemperatures(device, {{.error = error}}); }

void QueueTemperatures(u32 device, std::initializer_list<Reading> readings) {
  const Lock lock;
  TheSensors()[device] = readings;
}

void internal::ResetTemperatures() { TheSensors().clear(); }

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" int ddal_temp_get_curr(u32 device, int* thousandths) {
  const Lock lock;
  if (const auto failure = Record({"ddal_temp_get_curr", device})) return *failure;
  if (thousandths == nullptr) return DDAL_ERR_INVALID;
  const auto sensor = TheSensors().find(device);
  if (sensor == TheSensors().end() || sensor->second.empty()) return DDAL_ERR_NO_DEVICE;
  const Reading reading = sensor->second.front();
  if (sensor->second.size() > 1) sensor->second.pop_front();
  if (reading.error == DDAL_OK) *thousandths = reading.value;
  return reading.error;
}
