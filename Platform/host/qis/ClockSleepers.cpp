#include "ClockSleepers.h"

#include "Fd.h"
#include "PlatformThread.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string>

namespace hwapi::qis {

std::uint32_t ClockSleepers::Moves() {
  const std::lock_guard lock(m_mutex);
  if (!m_started) {
    m_started = true;
    m_inotify = m_file >= 0 ? Watch() : -1;
    m_watching = m_file < 0 || (m_inotify >= 0 && StartPlatformThread(&Run, this) == 0);
  }
  return m_moves;
}

void ClockSleepers::SleepUntilMoved(std::uint32_t seen) {
  constexpr std::chrono::milliseconds kLookAgain{20};
  std::unique_lock lock(m_mutex);
  const auto moved = [&] { return m_moves != seen; };
  if (m_watching) {
    m_moved.wait(lock, [&] { return moved() || !m_watching; });
  } else {
    m_moved.wait_for(lock, kLookAgain, moved);
  }
}

void ClockSleepers::Wake() {
  const std::lock_guard lock(m_mutex);
  ++m_moves;
  m_moved.notify_all();
}

void* ClockSleepers::Run(void* sleepers) {
  NameThread("clock");
  static_cast<ClockSleepers*>(sleepers)->Serve();
  return nullptr;
}

/// @return descriptor that tells of changes of the file; -1 when there are too many such ones already
int ClockSleepers::Watch() const {
  Fd inotify(::inotify_init1(IN_CLOEXEC));
  const std::string path = "/proc/self/fd/" + std::to_string(m_file);
  return inotify && ::inotify_add_watch(inotify.Get(), path.c_str(), IN_MODIFY) >= 0 ? inotify.Release() : -1;
}

/// The events have all the same meaning; they are read to be awaited again.
void ClockSleepers::Serve() {
  std::array<char, 4096> events;
  while (::read(m_inotify, events.data(), events.size()) > 0 || errno == EINTR) {
    Wake();
  }
  const std::lock_guard lock(m_mutex);
  m_watching = false;
  m_moved.notify_all();
}

}  // namespace hwapi::qis
