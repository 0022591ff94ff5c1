#include "CallbackGate.h"

#include "AaSysLog.h"
#include "ComLog.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>

namespace hwapi::qis {
namespace {

constexpr std::chrono::seconds kLongestWait{2};

struct Gate {
  std::mutex mutex;
  std::condition_variable left;
  bool closed = false;
  unsigned inside = 0;
};

Gate& TheGate() {
  static auto* const gate = new Gate;  // threads outlive the end of main
  return *gate;
}

/// Passes that the calling thread holds: a callback that ends the process does not wait for itself.
thread_local unsigned t_ownPasses = 0;

void Close() {
  Gate& gate = TheGate();
  std::unique_lock lock(gate.mutex);
  gate.closed = true;
  if (!gate.left.wait_for(lock, kLongestWait, [&] { return gate.inside <= t_ownPasses; })) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, kPlatformFeature, "The process ends while %u observer(s) still run",
                   gate.inside - t_ownPasses);
  }
}

}  // namespace

void CallbackGate::CloseAtExit() {
  static const int registered = std::atexit(&Close);
  static_cast<void>(registered);
}

CallbackGate::Pass::Pass() {
  Gate& gate = TheGate();
  const std::lock_guard lock(gate.mutex);
  m_granted = !gate.closed;
  if (m_granted) {
    ++gate.inside;
    ++t_ownPasses;
  }
}

CallbackGate::Pass::~Pass() {
  if (!m_granted) {
    return;
  }
  Gate& gate = TheGate();
  const std::lock_guard lock(gate.mutex);
  --gate.inside;
  --t_ownPasses;
  gate.left.notify_all();
}

}  // namespace hwapi::qis
