#include "ThreadWatch.h"

#include "PlatformThread.h"

#include <pthread.h>

#include <cstdio>
#include <mutex>

namespace hwapi::qis {
namespace {

/// Looks in a row without a step in between, after which a thread is taken to hang.
constexpr unsigned kMaxLooks = 2;

struct Watched {
  std::mutex mutex;
  WatchedThread* first = nullptr;
};

Watched& All() {
  static auto* const all = new Watched;  // threads outlive the end of main
  return *all;
}

/// The calling thread, if it is watched.
thread_local WatchedThread* t_self = nullptr;

}  // namespace

WatchedThread::WatchedThread(const char* name, Part part) : m_part(part) {
  NameThread(name);
  std::snprintf(m_name.data(), m_name.size(), "%s", name);
  Add();
}

/// For a thread that has a name already.
WatchedThread::WatchedThread() : m_part(Part::Looks) {
  ::pthread_getname_np(::pthread_self(), m_name.data(), m_name.size());
  Add();
}

void WatchedThread::Add() {
  t_self = this;
  const std::lock_guard lock(All().mutex);
  m_next = All().first;
  All().first = this;
}

WatchedThread::~WatchedThread() {
  t_self = nullptr;
  const std::lock_guard lock(All().mutex);
  WatchedThread** link = &All().first;
  while (*link != this) {
    link = &(*link)->m_next;
  }
  *link = m_next;
}

void WatchedThread::WatchCaller() {
  if (t_self == nullptr) {
    static thread_local WatchedThread self;
  }
}

/// @return whether no thread is what @p isFound says
template <typename IsFound>
bool WatchedThread::None(IsFound isFound, char* name, std::size_t size) {
  const std::lock_guard lock(All().mutex);
  const WatchedThread* found = nullptr;
  for (WatchedThread* thread = All().first; thread != nullptr; thread = thread->m_next) {
    if (isFound(*thread)) {
      found = thread;
    }
  }
  if (name != nullptr && size != 0) {
    std::snprintf(name, size, "%s", found != nullptr ? found->m_name.data() : "");
  }
  return found == nullptr;
}

bool WatchedThread::AllAlive(char* name, std::size_t size) {
  return None([](WatchedThread& thread) { return &thread != t_self && thread.Hangs(); }, name, size);
}

bool WatchedThread::AllLetLook(char* name, std::size_t size) {
  return None([](WatchedThread& thread) { return thread.m_part == Part::Looks && thread.StandsStill(); }, name, size);
}

bool WatchedThread::Hangs() {
  const std::uint32_t steps = m_steps.load(std::memory_order_relaxed);
  const bool atRest = steps % 2 == 0;
  if (atRest || steps != m_seen) {
    m_looks = 0;
  } else if (m_looks < kMaxLooks) {
    ++m_looks;
  }
  m_seen = steps;
  return m_looks == kMaxLooks;
}

bool WatchedThread::StandsStill() {
  const std::uint32_t steps = m_steps.load(std::memory_order_relaxed);
  const bool stoodStill = steps % 2 != 0 && steps == m_seenLate;
  m_seenLate = steps;
  return stoodStill;
}

// No other thread writes the steps: they need not be added to as one.

void WatchedThread::BeginRest() {
  if (m_rests++ == 0) {
    m_steps.store(m_steps.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  }
}

void WatchedThread::EndRest() {
  if (m_rests != 0 && --m_rests == 0) {
    m_steps.store(m_steps.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  }
}

void Rest::Begin() {
  if (t_self != nullptr) {
    t_self->BeginRest();
  }
}

void Rest::End() {
  if (t_self != nullptr) {
    t_self->EndRest();
  }
}

}  // namespace hwapi::qis
