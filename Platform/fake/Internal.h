/// @file
/// What the sources of the recording platform share.
#pragma once

#include "fake/Recorder.h"

#include <mutex>
#include <optional>
#include <string>

namespace fake::internal {

/// Guards all state of the recording platform. Never held while code of others runs: observers, threads, actions.
std::recursive_mutex& Mutex();

/// Holds the mutex of the platform.
class Lock {
 public:
  Lock() : m_lock(Mutex()) {}

 private:
  std::lock_guard<std::recursive_mutex> m_lock;
};

/// Writes a call down.
/// @return what the call is to return without doing anything, when a test asked for its failure
std::optional<int> Record(Call call);

/// Writes down that the contract was broken.
void AddViolation(std::string sentence);

/// Writes a log line of the platform itself.
void LogError(const std::string& text);

// The first state of each part, for Reset.
void ResetRecorder();
void ResetExecution();
void ResetMessages();
void ResetQueues();
void ResetTime();
void ResetConfig();
void ResetFiles();
void ResetLog();
void ResetSemaphores();
void ResetTemperatures();
void ResetFans();
void ResetRf();
void ResetBoard();
void ResetTrbl();
void ResetServices();

}  // namespace fake::internal
