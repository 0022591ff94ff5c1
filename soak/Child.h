/// @file
/// Clients as processes of their own, and the memory that they report in.
///
/// The program itself never uses the platform: it only forks, while it has no other thread.
#pragma once

#include "Process.h"

#include <sys/mman.h>
#include <sys/types.h>
#include <atomic>
#include <functional>
#include <new>

namespace soak {

/// @return seconds of a clock that never goes back, the same one in every process
double Now();
void Sleep(double seconds);

/// How long is waited for something that has to come before it is taken for lost.
#ifdef CLM_SANITIZED
inline constexpr double kDeadline = 60;
#else
inline constexpr double kDeadline = 20;
#endif

/// Waits until a condition holds, at most kDeadline. @return whether it does
bool Eventually(const std::function<bool()>& condition);

/// A value that is shared with the children that are forked while it lives.
template <typename T>
class Shared {
 public:
  Shared() {
    void* const memory = mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) bench::Die("shared memory");
    m_value = new (memory) T;
  }
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  ~Shared() { munmap(m_value, sizeof(T)); }

  T& operator*() const { return *m_value; }
  T* operator->() const { return m_value; }

 private:
  T* m_value;
};

/// A process that does some work and ends. Killed with this object, and when this program ends.
class Child {
 public:
  explicit Child(const std::function<void()>& work);
  Child(Child&& other) noexcept;
  Child& operator=(Child&&) = delete;
  ~Child();

  /// Waits for its end, at most @p seconds.
  /// @return whether it did its work
  bool EndsWell(double seconds = kDeadline);

 private:
  pid_t m_pid;
};

}  // namespace soak
