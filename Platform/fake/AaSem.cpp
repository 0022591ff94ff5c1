#include "AaSem.h"

#include "Internal.h"
#include "fake/Recorder.h"
#include "fake/Semaphores.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <utility>

struct TAaSem {
  u32 number = 0;
  u32 count = 0;
  bool destroyed = false;
  std::condition_variable_any changed;
};

namespace fake {
namespace {

using namespace internal;

/// A wait that takes longer, in real time, is a deadlock of the code under test.
constexpr std::chrono::seconds kLongestWait(10);

/// All semaphores ever created: they outlive Reset, as the objects that hold them may.
struct Semaphores {
  std::map<const TAaSem*, std::unique_ptr<TAaSem>> all;
  std::function<void()> onTaken;
  std::function<void()> onPost;
};

Semaphores& TheSemaphores() {
  static auto& semaphores = *new Semaphores;
  return semaphores;
}

/// @return the semaphore; null for null, and, as a violation, for one that was destroyed
TAaSem* Find(TAaSem* semaphore, const char* function) {
  if (semaphore == nullptr) return nullptr;
  const auto found = TheSemaphores().all.find(semaphore);
  if (found != TheSemaphores().all.end() && !found->second->destroyed) return found->second.get();
  AddViolation(std::string(function) + " with a semaphore that was destroyed or never created");
  return nullptr;
}

/// Runs what a test asked for, without holding the mutex.
void Run(std::function<void()> Semaphores::*action) {
  std::function<void()> copy;
  {
    const Lock lock;
    copy = TheSemaphores().*action;
  }
  if (copy) copy();
}

Value NumberOf(const TAaSem* semaphore) { return semaphore != nullptr ? Value(semaphore->number) : Value(nullptr); }

}  // namespace

void OnSemaphoreTaken(std::function<void()> action) {
  const Lock lock;
  TheSemaphores().onTaken = std::move(action);
}

void OnSemaphorePost(std::function<void()> action) {
  const Lock lock;
  TheSemaphores().onPost = std::move(action);
}

void internal::ResetSemaphores() {
  OnSemaphoreTaken({});
  OnSemaphorePost({});
}

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

TAaSem* AaSemCreateC(u32 initialCount) {
  const Lock lock;
  if (Record({"AaSemCreateC", initialCount})) return nullptr;
  auto semaphore = std::make_unique<TAaSem>();
  auto& all = TheSemaphores().all;
  semaphore->number = static_cast<u32>(all.size() + 1);
  semaphore->count = initialCount;
  TAaSem* handle = semaphore.get();
  all.emplace(handle, std::move(semaphore));
  return handle;
}

i32 AaSemWait(TAaSem* semaphore) {
  std::unique_lock lock(Mutex());
  TAaSem* found = Find(semaphore, "AaSemWait");
  if (const auto failure = Record({"AaSemWait", NumberOf(found)})) return *failure;
  if (found == nullptr) return EINVAL;
  if (!found->changed.wait_for(lock, kLongestWait, [&] { return found->count > 0; })) {
    AddViolation("AaSemWait waits for ever: nobody posts the semaphore");
    return EDEADLK;
  }
  --found->count;
  lock.unlock();
  Run(&Semaphores::onTaken);
  return 0;
}

i32 AaSemPost(TAaSem* semaphore) {
  std::unique_lock lock(Mutex());
  TAaSem* found = Find(semaphore, "AaSemPost");
  if (const auto failure = Record({"AaSemPost", NumberOf(found)})) return *failure;
  if (found == nullptr) return EINVAL;
  lock.unlock();
  Run(&Semaphores::onPost);
  lock.lock();
  ++found->count;
  found->changed.notify_one();
  return 0;
}

i32 AaSemDestroy(TAaSem* semaphore) {
  const Lock lock;
  TAaSem* found = Find(semaphore, "AaSemDestroy");
  if (const auto failure = Record({"AaSemDestroy", NumberOf(found)})) return *failure;
  if (found == nullptr) return EINVAL;
  found->destroyed = true;
  return 0;
}

}  // extern "C"
