/// @file
/// Moments at which a semaphore is held, so that a test can look at what it guards. A Reset takes the actions back.
///
/// An action runs on the thread that waits or posts. What it calls may wait for the same semaphore only where that call
/// is told to fail (fake::FailCall): nobody posts it meanwhile.
#pragma once

#include <functional>

namespace fake {

/// Runs @p action after each wait that took a semaphore.
void OnSemaphoreTaken(std::function<void()> action);
/// Runs @p action before each post that gives one back.
void OnSemaphorePost(std::function<void()> action);

}  // namespace fake
