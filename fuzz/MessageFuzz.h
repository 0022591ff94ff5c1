/// @file
/// One made-up input, and which messages the inputs so far held.
#pragma once

#include "GloTypes.h"

#include <cstddef>
#include <cstdint>
#include <map>

/// Starts a service on a board that the first byte chooses, and does the steps to it that the other bytes say. Ends the
/// process when the service breaks the contract, leaves something behind, or throws what it must not. The name and form
/// are libFuzzer's.
extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                                                             std::size_t size);

namespace fuzz {

/// How often a message came to its handler.
struct Tally {
  unsigned long handled = 0;
  unsigned long refused = 0;      ///< of these: left by a MsgHandlingException
  unsigned long otherEndian = 0;  ///< of these: in the other byte order
};

/// @return the tally of each message that a service had a handler for, by message id
const std::map<u32, Tally>& Tallies();

}  // namespace fuzz
