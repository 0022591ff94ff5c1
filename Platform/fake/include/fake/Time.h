/// @file
/// Virtual time. It stands still until it is advanced: by AdvanceTime, by a thread that sleeps, or by a receive that
/// finds nothing. What is due on the way happens in order, each at its own time.
#pragma once

#include "AaSysTime.h"
#include "fake/Messages.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace fake {

/// A running timer.
struct Timer {
  TAaSysTimerId id = 0;
  u32 firstUs = 0;
  u32 periodUs = 0;
  Message message;
};

/// @return microseconds since the last Reset
std::uint64_t Now();
/// Lets time pass: timers that expire put their messages into the queue of the receiver.
void AdvanceTime(std::uint64_t microseconds);
/// Runs @p action when so much time has passed, e.g. to let a neighbouring service appear while the service waits.
void After(std::uint64_t microseconds, std::function<void()> action);
/// Runs @p action after each AaUtcTimeGet that told the time, on the thread that asked, e.g. to let something happen
/// between a look at the clock and what it is for. A Reset takes the action back.
void OnUtcRead(std::function<void()> action);
/// @return the running timers, oldest first
std::vector<Timer> Timers();

/// Sets what AaUtcTimeGet reads now; it goes on from there with virtual time. 2024-06-15 12:00:00.000 after a Reset.
void SetUtc(const SAaTime& utc);
/// Sets what local time is ahead of UTC; 0 after a Reset.
void SetLocalOffset(int minutes);

}  // namespace fake
