#include "EventLoop.h"

#include "PlatformThread.h"
#include "ThreadWatch.h"

#include <sys/epoll.h>

#include <array>
#include <cerrno>

namespace hwapi::qis {

EventLoop& EventLoop::Own() {
  static auto* const loop = new EventLoop;  // the thread outlives the end of main
  return *loop;
}

bool EventLoop::Start() {
  Fd epoll(::epoll_create1(EPOLL_CLOEXEC));
  if (!epoll) {
    return false;
  }
  m_epoll = std::move(epoll);
  if (const int error = StartPlatformThread(&Run, this); error != 0) {
    m_epoll.Reset();
    errno = error;
    return false;
  }
  return true;
}

std::uint64_t EventLoop::Watch(int fd, std::shared_ptr<EventHandler> handler) {
  return Add(fd, EPOLLIN | EPOLLRDHUP, std::move(handler));
}

std::uint64_t EventLoop::WatchOnce(int fd, std::shared_ptr<EventHandler> handler) {
  return Add(fd, EPOLLONESHOT, std::move(handler));
}

void EventLoop::Arm(std::uint64_t key, int fd) {
  const std::lock_guard lock(m_mutex);
  epoll_event event{};
  event.events = EPOLLIN | EPOLLONESHOT;
  event.data.u64 = key;
  ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_MOD, fd, &event);
}

std::uint64_t EventLoop::Add(int fd, std::uint32_t events, std::shared_ptr<EventHandler> handler) {
  const std::lock_guard lock(m_mutex);
  if (!m_epoll && !Start()) {
    return 0;
  }
  epoll_event event{};
  event.events = events;
  event.data.u64 = m_nextKey;
  m_handlers[m_nextKey] = std::move(handler);
  if (::epoll_ctl(m_epoll.Get(), EPOLL_CTL_ADD, fd, &event) != 0) {
    m_handlers.erase(m_nextKey);
    return 0;
  }
  return m_nextKey++;
}

void EventLoop::Forget(std::uint64_t key, int fd) {
  std::shared_ptr<EventHandler> last;  // destroyed after the lock: its end may come back here
  const std::lock_guard lock(m_mutex);
  if (auto found = m_handlers.extract(key)) {
    ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_DEL, fd, nullptr);
    last = std::move(found.mapped());
  }
}

void* EventLoop::Run(void* loop) {
  const WatchedThread watched("com");
  for (;;) {
    static_cast<EventLoop*>(loop)->Dispatch();
  }
}

void EventLoop::Dispatch() {
  int epoll = -1;
  {
    const std::lock_guard lock(m_mutex);
    epoll = m_epoll.Get();
  }
  std::array<epoll_event, 16> events;
  const int count = AtRest([&] { return ::epoll_wait(epoll, events.data(), static_cast<int>(events.size()), -1); });
  for (int i = 0; i < count; ++i) {
    const std::uint64_t key = events[static_cast<std::size_t>(i)].data.u64;
    std::shared_ptr<EventHandler> handler;
    {
      const std::lock_guard lock(m_mutex);
      if (const auto found = m_handlers.find(key); found != m_handlers.end()) {
        handler = found->second;
      }
    }
    if (handler) {
      handler->OnReady(key);
    }
  }
}

}  // namespace hwapi::qis
