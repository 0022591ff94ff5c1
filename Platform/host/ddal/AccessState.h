/// @file
/// The steps of an access that a caller and the thread of a device take in turn.
#pragma once

#include <cstdint>

namespace hwapi::ddal {

/// Whose an access is.
enum AccessState : std::uint32_t {
  kIdle,
  kClaimed,  ///< a caller writes the access
  kPosted,   ///< the access waits for the thread
  kRunning,  ///< the thread is in the kernel for it
  kDone,     ///< the answer waits for the caller
  kLate      ///< the caller has gone; the access is the thread's
};

/// Takes back an access that was posted. The thread may take a step of its own at any moment: a step of ours that came
/// too late shows the state from which the next one is tried.
/// @param state a std::atomic<std::uint32_t>, or what stands for one
/// @return what the access was: kPosted, it is not begun and kIdle now; kRunning, it is kLate now; kDone, it stays so
template <typename State>
AccessState TakeBack(State& state) {
  std::uint32_t found = state.load();
  while (found != kDone && !state.compare_exchange_strong(found, found == kRunning ? kLate : kIdle)) {
  }
  return static_cast<AccessState>(found);
}

}  // namespace hwapi::ddal
