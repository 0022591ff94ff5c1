#include "Timers.h"

#include "Clock.h"
#include "PlatformThread.h"
#include "ThreadWatch.h"

#include <algorithm>
#include <utility>

namespace hwapi::qis {

std::int64_t NextExpiry(std::int64_t dueUs, std::int64_t periodUs, std::int64_t nowUs) {
  return dueUs + ((nowUs - dueUs) / periodUs + 1) * periodUs;
}

// Quotient and remainder are scaled apart, here and in Timers::RealTime: the product of a whole time and the speed
// could overflow.
std::int64_t BoardUsOf(std::int64_t realNs, std::int64_t speed) {
  return realNs / 1000 * speed + realNs % 1000 * speed / 1000;
}

Timers& Timers::Own() {
  static auto* const timers = new Timers;  // the thread outlives the end of main
  return *timers;
}

Timers::Timers() : m_origin(std::chrono::steady_clock::now()) {}

std::int64_t Timers::NowUs() const {
  if (Clock::Own().StandsStill()) {
    return Clock::Own().PassedUs();
  }
  return BoardUsOf(std::chrono::nanoseconds(std::chrono::steady_clock::now() - m_origin).count(), Clock::Own().Speed());
}

std::chrono::steady_clock::time_point Timers::RealTime(std::int64_t boardUs) const {
  const std::int64_t speed = Clock::Own().Speed();
  const std::int64_t restNs = (boardUs % speed * 1000 + speed - 1) / speed;  // never before the board's time
  return m_origin + std::chrono::nanoseconds(boardUs / speed * 1000 + restNs);
}

Timers::Running::iterator Timers::Find(TAaSysTimerId id) {
  return std::find_if(m_timers.begin(), m_timers.end(), [id](const auto& timer) { return timer.first.id == id; });
}

TAaSysTimerId Timers::NewId() {
  do {
    ++m_lastId;
  } while (m_lastId == 0 || Find(m_lastId) != m_timers.end());
  return m_lastId;
}

i32 Timers::Start(TAaSysTimerId* id, u32 firstUs, u32 periodUs, Message* message) {
  const std::lock_guard lock(m_mutex);
  if (!m_running) {
    if (const int error = StartPlatformThread(&Run, this); error != 0) {
      return error;
    }
    m_running = true;
  }
  const Expiry expiry{.dueUs = NowUs() + std::int64_t{firstUs}, .id = NewId()};
  Timer& timer = m_timers[expiry];  // before the message is taken: it stays the caller's when memory ends here
  timer.periodUs = periodUs;
  timer.message.reset(message);
  *id = expiry.id;
  if (m_timers.begin()->first == expiry) {
    m_changed.notify_one();
    if (Clock::Own().StandsStill()) {
      Clock::Own().WakeSleepers();
    }
  }
  return 0;
}

void Timers::Delete(TAaSysTimerId id) {
  const std::lock_guard lock(m_mutex);
  if (const auto found = Find(id); found != m_timers.end()) {
    m_timers.erase(found);
  }
}

void* Timers::Run(void* timers) {
  const WatchedThread watched("timer", WatchedThread::Part::Looks);
  static_cast<Timers*>(timers)->Serve();
  return nullptr;
}

void Timers::Serve() {
  std::unique_lock lock(m_mutex);
  for (;;) {
    if (m_timers.empty()) {
      AtRest([&] { m_changed.wait(lock); });
      continue;
    }
    const std::uint32_t moves = Clock::Own().Moves();  // before the time: a move in between is not slept through
    const std::int64_t dueUs = m_timers.begin()->first.dueUs;
    const std::int64_t nowUs = NowUs();
    if (nowUs >= dueUs) {
      Rest::Skip();
      Expire(nowUs);
    } else if (Clock::Own().StandsStill()) {
      lock.unlock();
      AtRest([&] { Clock::Own().SleepUntilMoved(moves); });
      lock.lock();
    } else {
      AtRest([&] { m_changed.wait_until(lock, RealTime(dueUs)); });
    }
  }
}

/// Serves the earliest timer. Sends with the lock held, so that nothing is sent once a delete has returned; a send
/// never blocks. Its message is kept however full the receiver's queue is. Where memory does not suffice for the copy,
/// a periodic timer leaves this expiry out.
void Timers::Expire(std::int64_t nowUs) {
  auto timer = m_timers.extract(m_timers.begin());
  if (timer.mapped().periodUs == 0) {
    Deliver(std::move(timer.mapped().message), WhenFull::Keep);
    return;
  }
  if (MessagePtr copy = CopyMessage(*timer.mapped().message)) {
    Deliver(std::move(copy), WhenFull::Keep);
  }
  timer.key().dueUs = NextExpiry(timer.key().dueUs, timer.mapped().periodUs, nowUs);
  m_timers.insert(std::move(timer));
}

}  // namespace hwapi::qis
