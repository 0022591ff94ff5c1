/// @file
/// Feeding of the power supply's SPI link.
#pragma once

#include "GloTypes.h"

namespace ps::hwapi::common::climate {

/// Keeps the driver's SPI state machine of the power supply going on units where it advances only when the supply's
/// temperature channel is read: a thread of its own reads it every 900 ms for the rest of the process.
/// Service thread only; the thread shares nothing with the object.
class PsuSpiPoller {
 public:
  PsuSpiPoller();
  PsuSpiPoller(const PsuSpiPoller&) = delete;
  PsuSpiPoller& operator=(const PsuSpiPoller&) = delete;
  /// Leaves the thread running.
  ~PsuSpiPoller();

  /// @return whether the thread has been started
  TBoolean isPsuSpiPollerEnabled() const { return m_PsuSpiPollerEnabled; }
  /// Starts the thread once.
  /// @return whether it runs; after false a later call may try again
  bool enableSpiEvents();

 private:
  TBoolean m_PsuSpiPollerEnabled = GLO_FALSE;
};

/// Entry of the thread; does not return.
/// @param argument not used
void* feedSpiStateMachine(void* argument);

}  // namespace ps::hwapi::common::climate
