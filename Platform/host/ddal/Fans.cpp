#include "Fans.h"

namespace hwapi::ddal {

const std::vector<ChipFan>& ChipFans() {
  static const auto* const fans = [] {
    auto* made = new std::vector<ChipFan>;
    for (const board::Fan& description : board::OwnBoard().fans) {
      const auto* hwmon = std::get_if<board::HwmonFan>(&description.source);
      if (hwmon != nullptr) made->push_back({std::make_unique<HwmonFan>(description.id, *hwmon), &description});
    }
    return made;
  }();
  return *fans;
}

HwmonFan* FindChipFan(u32 id) {
  for (const ChipFan& fan : ChipFans()) {
    if (fan.description->id == id) return fan.driver.get();
  }
  return nullptr;
}

}  // namespace hwapi::ddal
