/// @file
/// Sets of a tag as messages, so that one thread handles everything in order.
#pragma once

#include "AaSysCom.h"

#include <string>

namespace clmctl {

/// From here on each value of the tag arrives at @p receiver as CLMCTL_TAG_IND_MSG, the present one first. One tag a
/// process.
/// @throw CommandError (refused) when the tag cannot be observed
void ObserveTag(const std::string& name, TAaSysComSicad receiver);

}  // namespace clmctl
