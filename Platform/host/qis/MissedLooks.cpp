#include "MissedLooks.h"

#include "AaProWatch.h"
#include "AaSysLog.h"
#include "ComLog.h"
#include "ThreadWatch.h"

#include <sys/timerfd.h>

#include <algorithm>
#include <array>
#include <utility>

namespace hwapi::qis {
namespace {

/// Looks on a board whose clock is fast come more often than it is worth to wait for them.
constexpr std::chrono::nanoseconds kMinPeriod = std::chrono::seconds(1);

timespec ToTimespec(std::chrono::nanoseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  timespec result{};
  result.tv_sec = static_cast<decltype(result.tv_sec)>(seconds.count());
  result.tv_nsec = static_cast<decltype(result.tv_nsec)>((time - seconds).count());
  return result;
}

}  // namespace

const std::shared_ptr<MissedLooks>& MissedLooks::Own() {
  static const auto* const looks = new std::shared_ptr<MissedLooks>(std::make_shared<MissedLooks>());
  return *looks;
}

void MissedLooks::Looked() {
  WatchedThread::WatchCaller();
  const std::lock_guard lock(m_mutex);
  const auto now = Clock::now();
  if (m_lookedAt != Clock::time_point{}) {
    Expect(std::max<std::chrono::nanoseconds>(now - m_lookedAt, kMinPeriod));
  }
  m_lookedAt = now;
  m_isReported = false;
}

/// Lets OnReady be called when the next look is late, again and again until it comes. Under the mutex.
void MissedLooks::Expect(std::chrono::nanoseconds period) {
  if (!m_timer) {
    Fd timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!timer || EventLoop::Own().Watch(timer.Get(), shared_from_this()) == 0) {
      return;
    }
    m_timer = std::move(timer);
  }
  const itimerspec late{.it_interval = ToTimespec(period / 4), .it_value = ToTimespec(period + period / 4)};
  ::timerfd_settime(m_timer.Get(), 0, &late, nullptr);
}

void MissedLooks::OnReady(std::uint64_t) {
  {
    const std::lock_guard lock(m_mutex);
    std::uint64_t expirations = 0;
    if (::read(m_timer.Get(), &expirations, sizeof expirations) < 0) {
      return;  // a look came meanwhile
    }
  }
  Missed();
}

void MissedLooks::Missed() {
  std::array<char, AAPRO_NAME_SIZE> name{};
  if (WatchedThread::AllLetLook(name.data(), name.size())) {
    return;
  }
  {
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_isReported, true)) {
      return;
    }
  }
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "Thread %s hangs: nobody looks at the threads until it goes on", name.data());
}

}  // namespace hwapi::qis
