/// @file
/// Execution units and virtual time.
#pragma once

#include "AaSysCom.h"
#include "fake/Messages.h"

#include <cstdint>
#include <functional>

namespace fake::internal {

/// Execution unit of the thread that called Reset.
inline constexpr TAaProEuId kTestEu = 1;
/// Execution unit on which the platform calls observers.
inline constexpr TAaProEuId kPlatformEu = 2;

/// @return execution unit of the calling thread; it gets one with the first call
TAaProEuId CurrentEu();
bool IsKnownEu(TAaProEuId eu);

/// Lets the calling thread be another execution unit for a while.
class EuScope {
 public:
  explicit EuScope(TAaProEuId eu);
  EuScope(const EuScope&) = delete;
  EuScope& operator=(const EuScope&) = delete;
  ~EuScope();

 private:
  TAaProEuId m_previous;
};

/// Writes a thread down. @return its execution unit
TAaProEuId AddThread(const char* name, void* (*entry)(void*), u32 stackSize, u32 priority, const void* argument,
                     u32 argumentSize);
/// @return what a test wants to happen after the start of a thread; may be empty
std::function<void()> ActionOfAStart();
/// Runs the oldest thread that did not run yet, to its end. @return false when there is none
bool RunStartedThread();
/// Ends the run of the calling thread by an exception when it has had its number of sleeps.
/// @param isStep false: the sleep only waits for another thread within a step, and does not count for the run
void CountSleep(bool isStep);
/// Thrown to end the run of a thread.
struct RunEnded {};

/// Goes to the next timer or action that is due until @p limit, and lets it happen. Called without the mutex.
/// @return false when there is none; time stands still then
bool PassTimeToNextEvent(std::uint64_t limit);
/// Lets everything happen until @p time. Called without the mutex.
void PassTimeTo(std::uint64_t time);

}  // namespace fake::internal
