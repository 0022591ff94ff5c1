/// @file
/// Waiting for other threads, but not for ever.
#pragma once

#include "AaSysTime.h"

namespace ps::hwapi::common::climate {

/// How long one operation waits for the file calls of other threads: a second in all, whatever it waits for. One
/// thread.
class Patience {
 public:
  /// Waits until @p isDone says so; when it does at once, without a call of the platform.
  /// @return whether it did; false when the patience is at its end
  template <typename Condition>
  bool WaitUntil(Condition isDone) {
    while (!isDone()) {
      if (m_leftMs == 0) return false;
      AaSysTimeSleep(kStepMs, EAaSysTimeScale_Millisec);
      m_leftMs -= kStepMs;
    }
    return true;
  }

 private:
  static constexpr u32 kStepMs = 10;
  static constexpr u32 kLimitMs = 1000;
  static_assert(kLimitMs % kStepMs == 0);

  u32 m_leftMs = kLimitMs;
};

}  // namespace ps::hwapi::common::climate
