/// @file
/// What is done to a started service, step by step.
///
/// A step is five bytes and a payload: what comes (a message id, or time that passes), what fails meanwhile, what is
/// done to the number of items of a fan request or to the unit of an indication, byte order and sender, and the size of
/// the payload.
#pragma once

#include "Input.h"
#include "fake/Messages.h"

#include <cstdint>

namespace fuzz {

/// One step.
struct Step {
  fake::Message message;           ///< id 0: time passes instead
  std::uint64_t microseconds = 0;  ///< the time
  const char* failing = nullptr;   ///< platform function that fails in this step; null: none
  unsigned nth = 1;                ///< which of its calls fails first
  bool onwards = false;            ///< all later ones fail as well
};

/// @return the next step of an input that is not empty
Step NextStep(Input& input);

/// Bytes before a step's payload.
inline constexpr std::size_t kStepHead = 5;
/// Third byte of a step: its fan request is stretched to thousands of items. Other values: by their remainder by 4,
/// 0 and 1 leave the payload as it is, 2 lets the number of items fit, 3 makes it huge. An indication tells with 1 of a
/// processing unit that there is, with 3 of its end.
inline constexpr std::uint8_t kStretched = 0xA5;
/// Bit of the fourth byte of a step.
inline constexpr std::uint8_t kOtherEndianBit = 0x80;

}  // namespace fuzz
