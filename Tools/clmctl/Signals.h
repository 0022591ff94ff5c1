/// @file
/// Signals as messages: a command that waits for messages is woken by them and misses none.
#pragma once

#include "AaSysCom.h"

namespace clmctl {

/// Private messages of this program to itself.
inline constexpr u32 CLMCTL_SIGNAL_IND_MSG = 0xFF80;  ///< payload: the signal's number, u32
inline constexpr u32 CLMCTL_TAG_IND_MSG = 0xFF81;     ///< payload: the bytes of a tag's value

/// Blocks SIGINT, SIGTERM and SIGWINCH. Called before the platform is used for the first time, as its threads inherit
/// what is blocked.
void BlockSignals();
/// From here on each of the blocked signals arrives at @p receiver as CLMCTL_SIGNAL_IND_MSG.
void ForwardSignals(TAaSysComSicad receiver);
/// @return whether @p msg, a CLMCTL_SIGNAL_IND_MSG, asks to end
bool IsStopSignal(void* msg);

}  // namespace clmctl
