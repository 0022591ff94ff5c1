/// @file
/// What the platform says about messages: lines for losses that do not flood the log, and the counters.
#pragma once

#include "AaSysCom.h"

namespace hwapi::qis {

/// Feature id of the platform's own log lines.
inline constexpr u32 kPlatformFeature = 1;

/// Adds to one of the process's counters.
void Count(EAaSysComCounter counter, u32 amount = 1);
/// @return the counter's value
u32 CounterValue(EAaSysComCounter counter);

/// The losses of one receiver: a line when they begin, then at 10, 100, 1000, ... and when it works again.
/// Not synchronised.
class LossLog {
 public:
  explicit LossLog(TAaSysComSicad receiver) : m_receiver(receiver) {}

  /// Counts @p amount lost messages and tells them at Error when a line is due.
  /// @param reason e.g. "its queue is full"
  void Lost(EAaSysComCounter counter, u32 amount, const char* reason);
  /// Tells at Info that messages arrive again, after losses.
  void Delivered() {
    if (m_lost != 0) {
      TellRecovery();
    }
  }

 private:
  void TellRecovery();

  TAaSysComSicad m_receiver;
  u32 m_lost = 0;
  u32 m_nextLine = 1;
};

}  // namespace hwapi::qis
