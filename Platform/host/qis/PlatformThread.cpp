#include "PlatformThread.h"

#include "LogLimit.h"

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <string>

namespace hwapi::qis {
namespace {

struct PlatformThread {
  void* (*entry)(void*);
  void* argument;
};

void* RunPlatformThread(void* started) {
  LimitLinesOfThisThread();
  const PlatformThread thread = *std::unique_ptr<PlatformThread>(static_cast<PlatformThread*>(started));
  return thread.entry(thread.argument);
}

}  // namespace

int StartThread(std::size_t stackSize, void* (*entry)(void*), void* argument) {
  pthread_attr_t attributes;
  if (const int error = pthread_attr_init(&attributes); error != 0) {
    return error;
  }
  const std::size_t page = 4096;
  const std::size_t rounded = (std::max(stackSize, kMinimumStack) + page - 1) / page * page;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  int error = pthread_attr_setstacksize(&attributes, rounded);
  if (error == 0) {
    pthread_t thread;
    error = pthread_create(&thread, &attributes, entry, argument);
  }
  pthread_attr_destroy(&attributes);
  return error;
}

int StartPlatformThread(void* (*entry)(void*), void* argument) {
  std::unique_ptr<PlatformThread> thread(new (std::nothrow) PlatformThread{.entry = entry, .argument = argument});
  if (thread == nullptr) {
    return ENOMEM;
  }
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const int error = StartThread(0, &RunPlatformThread, thread.get());
  if (error == 0) {
    static_cast<void>(thread.release());  // the thread's now
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return error;
}

void NameThread(const char* name) {
  constexpr std::size_t kLongestName = 15;
  pthread_setname_np(pthread_self(), std::string(name).substr(0, kLongestName).c_str());
}

}  // namespace hwapi::qis
