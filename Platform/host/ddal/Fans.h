/// @file
/// The board's fans on chips of the kernel by id.
#pragma once

#include "BoardDescription.h"
#include "HwmonFan.h"

#include <memory>
#include <vector>

namespace hwapi::ddal {

/// A fan on a chip, and the description's word on it.
struct ChipFan {
  std::unique_ptr<HwmonFan> driver;
  const board::Fan* description;
};

/// All fans on chips; built at the first call, never changed and never destroyed.
const std::vector<ChipFan>& ChipFans();

/// @return the fan's driver; null when the board has no fan on a chip under that id
HwmonFan* FindChipFan(u32 id);

}  // namespace hwapi::ddal
