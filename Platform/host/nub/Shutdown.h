/// @file
/// The orderly end of the service: who asks for it, and who has to know.
#pragma once

#include "AaSysCom.h"

#include <atomic>

namespace hwapi::nub {

/// Message that makes the receive loop look whether the service ends.
inline constexpr u32 kWakeUpMsg = 0xFF01;

/// The request to end. Never destroyed, as the signal thread outlives every service. Every operation may be called from
/// every thread.
class Shutdown {
 public:
  static Shutdown& Own();

  /// Blocks SIGTERM and SIGINT for the calling thread and for all that it starts. Call before any thread runs.
  static void BlockSignals();
  /// Starts the thread that takes the signals: the first one is a request to end, the next one ends the process.
  static void TakeSignals();

  /// Lets a request wake the receive loop of this endpoint from now on; 0: of none.
  void SetEndpoint(TAaSysComSicad endpoint) { m_endpoint = endpoint; }
  /// Asks for the end: wakes the receive loop and everybody who waits for a tag.
  void Request();
  bool Requested() const { return m_requested; }

 private:
  static void* WaitForSignals(void* unused);

  // Sequentially consistent: either the request finds the endpoint, or the loop finds the request before it waits.
  std::atomic<TAaSysComSicad> m_endpoint{0};
  std::atomic<bool> m_requested{false};
};

}  // namespace hwapi::nub
