// Receiving: whose turn it is, and what is received. InboxWaits.cpp waits for it.
#include "Inbox.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <new>
#include <utility>

namespace hwapi::qis {
namespace {

/// Most messages that filters may leave behind, in all and of one channel.
constexpr std::size_t kMaxPostponed = 4096;
constexpr unsigned kMaxPostponedPerChannel = 256;
/// How long senders are served before it is looked who else sends.
constexpr std::int64_t kLookPeriodNs = 100'000;
/// How long a process goes on in its turn. Finding out whose turn it is costs about half as much as a short message:
/// many senders that have several messages each would pay for that with each one. Others wait no longer for it than for
/// a handler that is at work.
constexpr std::int64_t kBurstNs = 50'000;
/// What a datagram costs its sender that gives no message to be handled.
constexpr std::int64_t kDatagramNs = 2'000;
/// One byte more than a message, to notice what is too long.
constexpr std::size_t kBufferSize = kMaxWireSize + 1;

std::int64_t NowNs() { return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count(); }

/// The rest of a wait.
class Deadline {
 public:
  explicit Deadline(std::int64_t waitNs) : m_waitNs(waitNs), m_end(waitNs > 0 ? NowNs() + waitNs : 0) {}
  std::int64_t Rest() const { return m_waitNs <= 0 ? m_waitNs : std::max<std::int64_t>(0, m_end - NowNs()); }

 private:
  std::int64_t m_waitNs;
  std::int64_t m_end;
};

/// @return whether the sender shut its end down, rather than sent an empty datagram
bool IsShutDown(int receiver) {
  pollfd watched{.fd = receiver, .events = POLLRDHUP, .revents = 0};
  return ::poll(&watched, 1, 0) > 0 && (watched.revents & (POLLRDHUP | POLLHUP)) != 0;
}

}  // namespace

void Inbox::BufferDeleter::operator()(u8* buffer) const { std::free(buffer); }

bool Inbox::AllocateBuffer() {
  // From malloc: pages that no message ever reaches stay untouched.
  m_buffer.reset(static_cast<u8*>(std::malloc(kBufferSize)));
  return m_buffer != nullptr;
}

MessagePtr Inbox::Receive(std::int64_t waitNs, const u16* filter) {
  ChargeServed();
  if (MessagePtr message = TakePostponed(filter)) {
    return message;
  }
  const Deadline deadline(waitNs);
  m_ownIsPassedOver = false;
  if (waitNs == 0) {
    WaitForAllAgain();  // a look sees what anybody sent
  }
  MessagePtr message;
  Wait end = Wait::Again;
  do {
    const u32 posts = m_own.Posts();
    ChooseWait(waitNs, OwnWaits(posts));
    if (m_alone != nullptr) {
      end = ServeAlone(deadline.Rest(), posts, filter, message);
    } else {
      end = ServeAll(deadline.Rest(), posts, filter, message);
    }
  } while (!message && end == Wait::Again && m_registrations.HasTask(m_eu));
  return message;
}

/// Whether one sender is waited for alone: as long as nobody else has anything to be served.
void Inbox::ChooseWait(std::int64_t waitNs, bool ownWaits) {
  if (m_alone != nullptr) {
    if (m_othersSend || ownWaits) {
      WaitForAllAgain();
    }
  } else if (waitNs != 0 && m_order.IsEmpty() && !ownWaits && m_inARow >= m_rowNeeded) {
    WaitForOneAlone();
  }
}

/// What the last message's handler took is its sender's use of this execution unit, in whose turn another message may
/// follow at once.
void Inbox::ChargeServed() {
  SendingProcess* const served = std::exchange(m_served, nullptr);
  m_goesOn = false;
  if (served == nullptr) {
    return;
  }
  const std::int64_t nowNs = NowNs();
  m_order.Charge(*served, nowNs - m_servedAtNs);
  m_lookIsDue = nowNs - m_lookedAtNs >= kLookPeriodNs;
  if (served->HasReady()) {
    AddToOrder(*served);  // its channels take turns, too
  } else {
    m_goesOn = !m_lookIsDue && nowNs - m_turnBeganNs < kBurstNs;
  }
}

bool Inbox::OwnWaits(u32 posts) const { return !m_own.IsEmpty() && !(m_ownIsPassedOver && m_ownPassedOver == posts); }

void Inbox::AddToOrder(SendingProcess& process) {
  try {
    m_order.Add(process);
  } catch (const std::bad_alloc&) {
    // It is found again at the next look, when there may be memory.
  }
}

MessagePtr Inbox::TakePostponed(const u16* filter) {
  for (auto place = m_postponed.begin(); place != m_postponed.end();) {
    if (!Passes(*place->message, filter)) {
      ++place;
      continue;
    }
    Postponed taken = std::move(*place);
    place = m_postponed.erase(place);
    if (--taken.channel->postponed == 0 && taken.channel->muted) {
      taken.channel->muted = !Listen(*taken.channel);
    }
    if (!taken.channel->IsDiscarded()) {
      return std::move(taken.message);
    }
    Count(EAaSysComCounter_Unexpected);
  }
  return nullptr;
}

/// A message of this process, then one of another: neither keeps the other waiting for more than one handler.
Inbox::Wait Inbox::ServeAll(std::int64_t waitNs, u32 posts, const u16* filter, MessagePtr& message) {
  const bool ownWaits = OwnWaits(posts);
  if (ownWaits && !m_servedOwn) {
    m_servedOwn = true;
    message = ServeOwn(filter);
    return Wait::Again;
  }
  const bool othersWait = m_goesOn || !m_order.IsEmpty();
  if (!othersWait || m_lookIsDue) {
    m_lookIsDue = false;
    const Wait end = othersWait || ownWaits ? Look() : WaitForAll(waitNs, posts);
    m_lookedAtNs = NowNs();
    if (end == Wait::Ended) {
      return end;
    }
  }
  m_servedOwn = false;
  message = ServeOther(filter);
  return Wait::Again;
}

/// A message of the process whose turn it is, or still is, if one waits.
MessagePtr Inbox::ServeOther(const u16* filter) {
  if (std::exchange(m_goesOn, false)) {
    if (MessagePtr message = ServeChannel(*m_lastChannel, filter)) {
      return message;
    }
  }
  auto* const process = static_cast<SendingProcess*>(m_order.Take());
  Channel* const channel = process != nullptr ? process->TakeReady() : nullptr;
  if (channel == nullptr) {
    return nullptr;
  }
  const std::shared_ptr<SendingProcess> held = channel->Process();  // the channel may end
  MessagePtr message = ServeChannel(*channel, filter);
  if (message) {
    m_turnBeganNs = m_servedAtNs;
  } else if (process->HasReady()) {
    AddToOrder(*process);
  }
  return message;
}

MessagePtr Inbox::ServeOwn(const u16* filter) {
  const u32 posts = m_own.Posts();
  MessagePtr message = m_own.Take(filter);
  if (!message) {
    m_ownIsPassedOver = true;
    m_ownPassedOver = posts;
    return nullptr;
  }
  m_inARow = 0;
  if (m_registrations.Expects(m_eu, message->header.receiver, message->header.stamp)) {
    return message;
  }
  Count(EAaSysComCounter_Unexpected);
  return nullptr;
}

/// A message of a process that does not wait in the order.
MessagePtr Inbox::ServeChannel(Channel& channel, const u16* filter) {
  const std::shared_ptr<SendingProcess> process = channel.Process();  // the channel may end
  const ssize_t size = channel.Receive(m_buffer.get(), kBufferSize, false);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return nullptr;
  }
  MessagePtr message = Take(channel, size, filter);
  if (message) {
    m_served = process.get();
    m_servedAtNs = NowNs();
  } else {
    m_order.Charge(*process, kDatagramNs);
  }
  return message;
}

Inbox::Wait Inbox::ServeAlone(std::int64_t waitNs, u32 posts, const u16* filter, MessagePtr& message) {
  m_waiting = true;
  if (m_own.Posts() != posts || m_othersSend) {
    m_waiting = false;
    return Wait::Again;
  }
  if (waitNs >= 0 && !IsReadableWithin(m_alone->Receiver(), waitNs)) {
    m_waiting = false;
    return Wait::Ended;
  }
  const ssize_t size = m_alone->Receive(m_buffer.get(), kBufferSize, waitNs < 0);
  m_waiting = false;
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return errno == EAGAIN ? Wait::Again : Wait::Ended;
  }
  ++m_servedAlone;
  message = Take(*m_alone, size, filter);
  return Wait::Again;
}

/// @param size of the datagram in the buffer; 0 or negative when there is none and the channel may have ended
/// @return the message; null when it is none, is not expected or does not pass the filter
MessagePtr Inbox::Take(Channel& channel, ssize_t size, const u16* filter) {
  if (size <= 0) {
    if (size < 0 || channel.IsClosed() || IsShutDown(channel.Receiver())) {
      Drop(channel);
    } else {
      Count(EAaSysComCounter_Malformed);
    }
    return nullptr;
  }
  if (Channel::IsWakeMark(m_buffer.get(), size)) {
    return nullptr;
  }
  if (!IsMessage(m_buffer.get(), static_cast<std::size_t>(size))) {
    Count(EAaSysComCounter_Malformed);
    return nullptr;
  }
  MessagePtr message = MessageFromWire(m_buffer.get());
  if (!message) {
    m_losses.Lost(EAaSysComCounter_QueueFull, 1, "memory is short");
    return nullptr;
  }
  message->header.foreign = 1;
  if (channel.IsDiscarded() || !channel.Fits(*message)) {
    Count(EAaSysComCounter_Unexpected);
    return nullptr;
  }
  if (!Passes(*message, filter)) {
    Postpone(std::move(message), channel);
    return nullptr;
  }
  m_inARow = m_lastChannel == &channel ? m_inARow + 1 : 1;
  m_lastChannel = &channel;
  return message;
}

void Inbox::Postpone(MessagePtr message, Channel& channel) {
  if (m_postponed.size() >= kMaxPostponed) {
    m_losses.Lost(EAaSysComCounter_QueueFull, 1, "too many messages wait behind a selective receive");
    return;
  }
  m_postponed.push_back({.message = std::move(message), .channel = Shared(channel)});
  if (++channel.postponed >= kMaxPostponedPerChannel) {
    Mute(channel);
  }
}

}  // namespace hwapi::qis
