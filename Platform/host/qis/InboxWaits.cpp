// The inbox's channels, and waiting for them: for all, or for one alone.
#include "ConnectionBounds.h"
#include "Inbox.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace hwapi::qis {
namespace {

/// Senders that one look finds; the others are found by the next.
constexpr int kEventsPerLook = 64;
/// Messages of one sender in a row, after which it is waited for alone. Waiting alone that soon ends doubles it.
constexpr unsigned kMinRow = 8;
constexpr unsigned kMaxRow = 1024;
/// Messages received alone that were worth it.
constexpr unsigned kWorthwhile = 64;

/// As ppoll. With checked sizes the C library's own may read 64-bit times as 32-bit ones: on such a machine a wait of
/// less than a second was over at once.
int Poll(pollfd& watched, std::int64_t waitNs) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  // What this system call takes on every machine, and leaves changed.
  struct {
    long seconds, nanoseconds;
  } time = {static_cast<long>(waitNs / kSecond), static_cast<long>(waitNs % kSecond)};
  return static_cast<int>(::syscall(SYS_ppoll, &watched, 1, &time, nullptr, 0));
}

}  // namespace

bool Inbox::IsReadableWithin(int fd, std::int64_t waitNs) {
  pollfd watched{.fd = fd, .events = POLLIN, .revents = 0};
  return Poll(watched, waitNs) > 0;
}

std::shared_ptr<Inbox> Inbox::Create(TAaProEuId eu, Registrations& registrations) {
  std::shared_ptr<Inbox> inbox(new Inbox(eu, registrations));
  return inbox->AllocateBuffer() && inbox->Open() ? inbox : nullptr;
}

bool Inbox::Open() {
  m_rowNeeded = kMinRow;
  m_epoll.Reset(::epoll_create1(EPOLL_CLOEXEC));
  m_wake.Reset(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  // Edge-triggered: a wake needs not be read. The null pointer is no channel's.
  epoll_event event{.events = EPOLLIN | EPOLLET, .data = {.ptr = nullptr}};
  return m_epoll && m_wake && ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_ADD, m_wake.Get(), &event) == 0;
}

bool Inbox::Post(MessagePtr message, WhenFull whenFull) {
  const bool posted = m_own.Post(std::move(message), whenFull);
  if (m_waiting) {
    Wake();
  }
  return posted;
}

void Inbox::Wake() {
  const std::lock_guard lock(m_mutex);
  if (m_alone == nullptr || !m_alone->Wake()) {
    ::eventfd_write(m_wake.Get(), 1);
  }
}

void Inbox::OnReady(std::uint64_t) {
  m_othersSend = true;
  if (m_waiting) {
    Wake();
  }
}

void Inbox::Retire() { EventLoop::Own().Forget(m_othersKey, m_epoll.Get()); }

std::shared_ptr<Channel> Inbox::AddChannel(TAaSysComSicad task, u32 stamp, pid_t process) {
  const std::lock_guard lock(m_mutex);
  const std::size_t open = OwnBounds().all;
  if (m_channels.size() >= open + open / 4) {
    DiscardUnread();
  }
  if (m_channels.size() >= 2 * open) {
    errno = EMFILE;
    return nullptr;
  }
  std::shared_ptr<Channel> channel = Channel::Create(task, stamp, ProcessOf(process));
  if (!channel) {
    return nullptr;
  }
  m_channels.push_back(channel);
  if (!Listen(*channel)) {
    const int error = errno;
    m_channels.pop_back();
    errno = error;
    return nullptr;
  }
  return channel;
}

/// Under the mutex.
std::shared_ptr<SendingProcess> Inbox::ProcessOf(pid_t id) {
  constexpr std::size_t kForgotten = 64;  // those of processes that ended
  if (m_processes.size() > m_channels.size() + kForgotten) {
    std::erase_if(m_processes, [](const auto& known) { return known.second.expired(); });
  }
  std::weak_ptr<SendingProcess>& known = m_processes[id];
  std::shared_ptr<SendingProcess> process = known.lock();
  if (!process) {
    process = std::make_shared<SendingProcess>();
    known = process;
  }
  return process;
}

/// Senders that come, send and go faster than they are received from leave closed channels behind: the process that has
/// most of them loses the oldest. Under the mutex.
void Inbox::DiscardUnread() {
  std::map<const SendingProcess*, std::size_t> unread;
  const auto isUnread = [](const Channel& channel) { return channel.IsClosed() && !channel.IsDiscarded(); };
  for (const auto& channel : m_channels) {
    if (isUnread(*channel)) {
      ++unread[channel->Process().get()];
    }
  }
  if (unread.empty()) {
    return;
  }
  const auto most = std::ranges::max_element(unread, {}, [](const auto& entry) { return entry.second; });
  const auto oldest = std::ranges::find_if(
      m_channels, [&](const auto& channel) { return isUnread(*channel) && channel->Process().get() == most->first; });
  (*oldest)->Discard();
}

bool Inbox::Listen(Channel& channel) {
  epoll_event event{.events = EPOLLIN | EPOLLRDHUP, .data = {.ptr = &channel}};
  return ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_ADD, channel.Receiver(), &event) == 0;
}

void Inbox::Mute(Channel& channel) {
  WaitForAllAgain();
  channel.muted = ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_DEL, channel.Receiver(), nullptr) == 0;
}

std::shared_ptr<Channel> Inbox::Shared(const Channel& channel) {
  const std::lock_guard lock(m_mutex);
  return *std::ranges::find(m_channels, &channel, &std::shared_ptr<Channel>::get);
}

/// Ends a channel that nothing comes from any more.
void Inbox::Drop(Channel& channel) {
  const std::shared_ptr<Channel> own = Shared(channel);  // waiting for all again may drop it, too
  WaitForAllAgain();
  channel.Close();
  ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_DEL, channel.Receiver(), nullptr);
  SendingProcess& process = *channel.Process();
  process.RemoveReady(channel);
  if (!process.HasReady()) {
    m_order.Remove(process);
  }
  if (m_lastChannel == &channel) {
    m_lastChannel = nullptr;
    m_inARow = 0;
    m_goesOn = false;
  }
  const std::lock_guard lock(m_mutex);
  std::erase_if(m_channels, [&channel](const auto& held) { return held.get() == &channel; });
}

/// Takes note of the senders that have sent, without waiting.
Inbox::Wait Inbox::Look() {
  TakeEvents(0);
  return Wait::Again;
}

/// @param timeoutMs as of epoll_wait
/// @return as epoll_wait
int Inbox::TakeEvents(int timeoutMs) {
  std::array<epoll_event, kEventsPerLook> events;
  const int count = ::epoll_wait(m_epoll.Get(), events.data(), kEventsPerLook, timeoutMs);
  for (int i = 0; i < count; ++i) {
    auto* const channel = static_cast<Channel*>(events[static_cast<std::size_t>(i)].data.ptr);
    if (channel == nullptr) {
      continue;
    }
    if (channel->IsDiscarded()) {
      Drop(*channel);  // what it had is counted; nobody has to wait for that
    } else {
      channel->Process()->AddReady(*channel);
      AddToOrder(*channel->Process());
    }
  }
  return count;
}

/// Waits until a sender has sent, while nobody is in the order.
/// @param posts own messages up to these do not end the wait
Inbox::Wait Inbox::WaitForAll(std::int64_t waitNs, u32 posts) {
  if (waitNs != 0 && m_order.HasDebts()) {
    if (TakeEvents(0) > 0) {
      return Wait::Again;
    }
    m_order.ForgetDebts();
  }
  m_waiting = waitNs != 0;
  int count = 0;
  if (m_own.Posts() != posts) {
    count = 1;
  } else if (waitNs > 0 && !IsReadableWithin(m_epoll.Get(), waitNs)) {
    count = 0;
  } else {
    count = TakeEvents(waitNs < 0 ? -1 : 0);
  }
  m_waiting = false;
  return count > 0 ? Wait::Again : Wait::Ended;
}

void Inbox::WaitForOneAlone() {
  if (m_othersKey == 0) {
    m_othersKey = EventLoop::Own().WatchOnce(m_epoll.Get(), shared_from_this());
  }
  auto* const channel = m_lastChannel;
  if (m_othersKey == 0 || ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_DEL, channel->Receiver(), nullptr) != 0) {
    m_inARow = 0;  // all are waited for as before
    return;
  }
  {
    const std::lock_guard lock(m_mutex);
    m_alone = channel;
  }
  m_order.ForgetDebts();
  m_servedAlone = 0;
  m_othersSend = false;
  EventLoop::Own().Arm(m_othersKey, m_epoll.Get());
}

void Inbox::WaitForAllAgain() {
  if (m_alone == nullptr) {
    return;
  }
  Channel& channel = *m_alone;
  {
    const std::lock_guard lock(m_mutex);
    m_alone = nullptr;
  }
  m_othersSend = false;
  m_inARow = 0;
  m_rowNeeded = m_servedAlone >= kWorthwhile ? kMinRow : std::min(m_rowNeeded * 2, kMaxRow);
  if (!Listen(channel)) {
    m_losses.Lost(EAaSysComCounter_QueueFull, 1, "memory is short");
    Drop(channel);
  }
}

}  // namespace hwapi::qis
