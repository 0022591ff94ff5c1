// Execution units and the tasks registered for them.
#include "AaSysCom.h"

#include "Export.h"
#include "PlatformThread.h"
#include "Tasks.h"
#include "ThreadWatch.h"

#include <pthread.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace {

using hwapi::qis::Tasks;

thread_local TAaProEuId t_eu = 0;

/// What a new thread needs.
struct Start {
  TAaProEuId eu;
  std::string name;
  void* (*entry)(void*);
  void* argument;                  ///< what the entry gets
  std::unique_ptr<char[]> copied;  ///< keeps a copied argument
};

/// Gives back what the execution unit holds, however its thread ends.
class EuGuard {
 public:
  explicit EuGuard(TAaProEuId eu) : m_eu(eu) {}
  EuGuard(const EuGuard&) = delete;
  EuGuard& operator=(const EuGuard&) = delete;
  ~EuGuard() { Tasks::Own().RemoveEu(m_eu); }

 private:
  TAaProEuId m_eu;
};

/// The end of a thread that the platform did not start.
void EndEu(void* eu) {
  Tasks::Own().RemoveEu(static_cast<TAaProEuId>(reinterpret_cast<std::uintptr_t>(eu)));
  t_eu = 0;  // a later destructor of the thread gets another one, which is given back likewise
}

/// Gives back, at the end of the calling thread, what its execution unit holds. A key, and no thread_local object: its
/// destructor runs after those of all such objects, which may still send and deregister, and it does not run when the
/// process ends: that alone ends what the main thread holds, a service that is destroyed after main still has it.
void GiveBackAtEnd(TAaProEuId eu) {
  struct Key {
    Key() : isMade(::pthread_key_create(&key, &EndEu) == 0) {}
    pthread_key_t key{};
    const bool isMade;
  };
  static const Key key;
  if (key.isMade) {
    ::pthread_setspecific(key.key, reinterpret_cast<void*>(std::uintptr_t{eu}));
  }
}

void* RunEu(void* argument) {
  const std::unique_ptr<Start> start(static_cast<Start*>(argument));
  t_eu = start->eu;
  const hwapi::qis::WatchedThread watched(start->name.c_str());
  const EuGuard guard(start->eu);
  return start->entry(start->argument);
}

}  // namespace

QIS_EXPORT i32 AaSysComEuCreateAndStart(TAaProEuId* eu, const char* name, void* (*entry)(void*), u32 stackSize, u32,
                                        const void* argument, u32 argumentSize) try {
  if (eu == nullptr || entry == nullptr || (argument == nullptr && argumentSize != 0)) {
    return EINVAL;
  }
  auto start = std::make_unique<Start>();
  *start = {.eu = Tasks::Own().AddEu(),
            .name = name != nullptr ? name : "",
            .entry = entry,
            .argument = const_cast<void*>(argument),
            .copied = nullptr};
  if (argumentSize != 0) {
    start->copied = std::make_unique<char[]>(argumentSize);
    std::memcpy(start->copied.get(), argument, argumentSize);
    start->argument = start->copied.get();
  }
  const TAaProEuId number = start->eu;
  *eu = number;  // before the thread runs: it may read it there
  const int error = hwapi::qis::StartThread(stackSize, &RunEu, start.get());
  if (error != 0) {
    Tasks::Own().RemoveEu(number);
    return error;
  }
  static_cast<void>(start.release());  // the thread frees it
  return 0;
} catch (const std::bad_alloc&) {
  return ENOMEM;
}

QIS_EXPORT TAaProEuId AaProEuCurrent(void) {
  if (t_eu == 0) {
    t_eu = Tasks::Own().AddEu();
    GiveBackAtEnd(t_eu);
  }
  return t_eu;
}

QIS_EXPORT u32 AaSysComUserRegister(u32 task, TAaProEuId eu) try {
  return Tasks::Own().Register(task, eu);
} catch (const std::bad_alloc&) {
  return 0;
}

QIS_EXPORT i32 AaSysComUserDeregister(u32 task) {
  Tasks::Own().Deregister(task);
  return 0;
}
