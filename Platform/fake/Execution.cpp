#include "Execution.h"

#include "Internal.h"
#include "fake/Threads.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

namespace fake {
namespace {

using internal::Lock;

/// Sleeps that a thread is given which runs while another one receives; it is left alone then.
constexpr unsigned kSleepsWhileReceiving = 1000;
/// Sleeps outside of RunThread after which a test is taken to wait for something that never comes.
constexpr unsigned kEndlessSleeps = 100000;
/// Thread names are cut to this.
constexpr std::size_t kNameLength = 15;

struct Execution {
  TAaProEuId lastEu = internal::kPlatformEu;
  std::vector<StartedThread> threads;
  unsigned generation = 0;  ///< counts the Resets: execution units of before are void
  unsigned freeSleeps = 0;
  std::function<void()> onThreadStarted;
};

Execution& TheExecution() {
  static auto& execution = *new Execution;
  return execution;
}

/// What the calling thread is.
struct Self {
  TAaProEuId eu = 0;
  unsigned generation = 0;
  bool counted = false;  ///< its sleeps are counted: it runs as one of the started threads
  unsigned sleepsLeft = 0;
};
thread_local Self t_self;

/// Gives the calling thread a number of sleeps for a while.
class SleepBudget {
 public:
  explicit SleepBudget(unsigned sleeps) : m_counted(t_self.counted), m_sleepsLeft(t_self.sleepsLeft) {
    t_self.counted = true;
    t_self.sleepsLeft = sleeps;
  }
  SleepBudget(const SleepBudget&) = delete;
  SleepBudget& operator=(const SleepBudget&) = delete;
  ~SleepBudget() {
    t_self.counted = m_counted;
    t_self.sleepsLeft = m_sleepsLeft;
  }

 private:
  bool m_counted;
  unsigned m_sleepsLeft;
};

ThreadEnd RunOnce(const StartedThread& thread, unsigned sleeps) {
  std::unique_ptr<u8[]> copy;
  void* argument = const_cast<void*>(thread.pointer);
  if (!thread.argument.empty()) {
    copy = std::make_unique<u8[]>(thread.argument.size());
    std::ranges::copy(thread.argument, copy.get());
    argument = copy.get();
  }
  const internal::EuScope scope(thread.eu);
  const SleepBudget budget(sleeps);
  try {
    thread.entry(argument);
    return ThreadEnd::Returned;
  } catch (const internal::RunEnded&) {
    return ThreadEnd::Sleeping;
  }
}

}  // namespace

std::vector<StartedThread> StartedThreads() {
  const Lock lock;
  return TheExecution().threads;
}

void OnThreadStarted(std::function<void()> action) {
  const Lock lock;
  TheExecution().onThreadStarted = std::move(action);
}

ThreadEnd RunThread(const std::string& name, unsigned sleeps, unsigned nth) {
  StartedThread thread;
  {
    const Lock lock;
    unsigned seen = 0;
    const auto found = std::ranges::find_if(TheExecution().threads,
                                            [&](const auto& one) { return one.name == name && ++seen == nth; });
    if (found == TheExecution().threads.end()) {
      throw std::invalid_argument("no thread number " + std::to_string(nth) + " with the name " + name +
                                  " was started");
    }
    found->hasRun = true;
    thread = *found;
  }
  return RunOnce(thread, sleeps);
}

namespace internal {

TAaProEuId CurrentEu() {
  const Lock lock;
  if (t_self.eu == 0 || t_self.generation != TheExecution().generation) {
    t_self.eu = ++TheExecution().lastEu;
    t_self.generation = TheExecution().generation;
  }
  return t_self.eu;
}

bool IsKnownEu(TAaProEuId eu) { return eu != 0 && eu <= TheExecution().lastEu; }

EuScope::EuScope(TAaProEuId eu) : m_previous(CurrentEu()) { t_self.eu = eu; }
EuScope::~EuScope() { t_self.eu = m_previous; }

TAaProEuId AddThread(const char* name, void* (*entry)(void*), u32 stackSize, u32 priority, const void* argument,
                     u32 argumentSize) {
  StartedThread thread;
  thread.eu = ++TheExecution().lastEu;
  thread.name = std::string(name).substr(0, kNameLength);
  thread.entry = entry;
  thread.stackSize = stackSize;
  thread.priority = priority;
  if (argumentSize != 0) {
    const auto* bytes = static_cast<const u8*>(argument);
    thread.argument.assign(bytes, bytes + argumentSize);
  } else {
    thread.pointer = argument;
  }
  TheExecution().threads.push_back(thread);
  return thread.eu;
}

std::function<void()> ActionOfAStart() { return TheExecution().onThreadStarted; }

bool RunStartedThread() {
  StartedThread thread;
  {
    const Lock lock;
    const auto found = std::ranges::find(TheExecution().threads, false, &StartedThread::hasRun);
    if (found == TheExecution().threads.end()) return false;
    found->hasRun = true;
    thread = *found;
  }
  RunOnce(thread, kSleepsWhileReceiving);
  return true;
}

void CountSleep(bool isStep) {
  if (t_self.counted && isStep) {
    if (t_self.sleepsLeft == 0) throw RunEnded();
    --t_self.sleepsLeft;
    return;
  }
  const Lock lock;
  if (++TheExecution().freeSleeps > kEndlessSleeps) {
    throw std::runtime_error("the code under test sleeps without end: it waits for something that never comes");
  }
}

void ResetExecution() {
  const unsigned generation = TheExecution().generation + 1;
  TheExecution() = Execution();
  TheExecution().generation = generation;
  t_self = {.eu = kTestEu, .generation = generation};
}

}  // namespace internal
}  // namespace fake
