#include "TemperatureSensors.h"

#include "SimHardware.h"

#include <algorithm>

namespace hwapi::ddal {
namespace {

TemperatureSensor MakeSensor(const board::Temperature& description) {
  TemperatureSensor sensor{description.device, nullptr, {}, &description};
  if (const auto* hwmon = std::get_if<board::HwmonTemperature>(&description.source)) {
    sensor.hwmon = std::make_unique<HwmonSensor>(*hwmon);
  } else {
    SimHardware::Own().Find(description.device, &sensor.registers);
  }
  return sensor;
}

}  // namespace

const std::vector<TemperatureSensor>& TemperatureSensors() {
  static const auto* const sensors = [] {
    auto* made = new std::vector<TemperatureSensor>;
    for (const board::Temperature& description : board::OwnBoard().temperatures) {
      made->push_back(MakeSensor(description));
    }
    std::sort(made->begin(), made->end(), [](const auto& a, const auto& b) { return a.device < b.device; });
    return made;
  }();
  return *sensors;
}

const TemperatureSensor* FindSensor(u32 device) {
  const auto& sensors = TemperatureSensors();
  const auto found = std::lower_bound(sensors.begin(), sensors.end(), device,
                                      [](const TemperatureSensor& sensor, u32 id) { return sensor.device < id; });
  return found != sensors.end() && found->device == device ? &*found : nullptr;
}

}  // namespace hwapi::ddal
