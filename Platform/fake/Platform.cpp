#include "fake/Platform.h"

#include "Internal.h"
#include "MessagePool.h"

namespace fake {
namespace {

std::vector<std::string>& TheViolations() {
  static auto& violations = *new std::vector<std::string>;
  return violations;
}

}  // namespace

void Reset() {
  const internal::Lock lock;
  internal::ResetRecorder();
  internal::ResetExecution();
  internal::ResetMessages();
  internal::ResetQueues();
  internal::ResetTime();
  internal::ResetConfig();
  internal::ResetFiles();
  internal::ResetLog();
  internal::ResetSemaphores();
  internal::ResetTemperatures();
  internal::ResetFans();
  internal::ResetRf();
  internal::ResetBoard();
  internal::ResetTrbl();
  internal::ResetServices();
  TheViolations().clear();
}

std::vector<std::string> Violations() {
  const internal::Lock lock;
  internal::CheckStalePayloads();
  return TheViolations();
}

void ClearViolations() {
  const internal::Lock lock;
  TheViolations().clear();
}

namespace internal {

std::recursive_mutex& Mutex() {
  static auto& mutex = *new std::recursive_mutex;
  return mutex;
}

void AddViolation(std::string sentence) {
  const Lock lock;
  TheViolations().push_back(std::move(sentence));
}

}  // namespace internal
}  // namespace fake
