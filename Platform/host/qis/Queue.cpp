#include "Queue.h"

#include "AaSysLog.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <time.h>

#include <cerrno>
#include <cstdlib>

namespace hwapi::qis {
namespace {

/// Room of a queue: at the kernel's own cost of a small message some two thousand messages.
constexpr int kRoomBytes = 1 << 20;
/// Time-out of an endless wait, which then starts again: a receive with a time-out is not restarted after a signal.
constexpr timeval kEndlessSlice{.tv_sec = 1'000'000, .tv_usec = 0};
/// One byte more than a message, to notice what is too long.
constexpr std::size_t kBufferSize = kMaxWireSize + 1;
/// What Wake sends: too short for a message.
constexpr char kWakeMark = 'w';

timespec ToTimespec(std::int64_t ns) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  timespec time{};
  time.tv_sec = static_cast<decltype(time.tv_sec)>(ns / kSecond);
  time.tv_nsec = static_cast<decltype(time.tv_nsec)>(ns % kSecond);
  return time;
}

}  // namespace

int SendNow(int socket, const void* bytes, std::size_t size) {
  for (;;) {
    if (::send(socket, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
      return 0;
    }
    switch (errno) {
      case EINTR:
        continue;
      case ENOBUFS:
      case ENOMEM:
      case EMSGSIZE:
        return EAGAIN;  // no room, in the kernel's other words
      default:
        return errno;
    }
  }
}

void Queue::BufferDeleter::operator()(u8* buffer) const { std::free(buffer); }

std::shared_ptr<Queue> Queue::Create() {
  std::shared_ptr<Queue> queue(new Queue);
  // From malloc: pages that no message ever reaches stay untouched.
  queue->m_buffer.reset(static_cast<u8*>(std::malloc(kBufferSize)));
  return queue->m_buffer && queue->MakePair() ? queue : nullptr;
}

bool Queue::MakePair() {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    return false;
  }
  Fd receiver(ends[0]);
  Fd sender(ends[1]);
  if (::setsockopt(ends[1], SOL_SOCKET, SO_SNDBUFFORCE, &kRoomBytes, sizeof kRoomBytes) != 0) {
    ::setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &kRoomBytes, sizeof kRoomBytes);
  }
  ::setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &kEndlessSlice, sizeof kEndlessSlice);
  if (!m_sender) {
    m_receiver = std::move(receiver);
    m_sender = std::move(sender);
    return true;
  }
  // Other threads may be sending: the numbers stay, what they name changes at once.
  return ::dup3(ends[0], m_receiver.Get(), O_CLOEXEC) >= 0 && ::dup3(ends[1], m_sender.Get(), O_CLOEXEC) >= 0;
}

void Queue::Wake() const { SendNow(m_sender.Get(), &kWakeMark, sizeof kWakeMark); }

Queue::Wait Queue::Receive(std::int64_t waitNs, std::size_t& size) {
  if (waitNs > 0) {
    pollfd watched{.fd = m_receiver.Get(), .events = POLLIN, .revents = 0};
    const timespec timeout = ToTimespec(waitNs);
    if (::ppoll(&watched, 1, &timeout, nullptr) <= 0) {
      return Wait::Ended;
    }
  }
  const ssize_t result = ::recv(m_receiver.Get(), m_buffer.get(), kBufferSize, waitNs < 0 ? 0 : MSG_DONTWAIT);
  if (result <= 0) {
    return result < 0 ? (errno == EAGAIN && waitNs < 0 ? Wait::Again : Wait::Ended) : ReceiveNothing();
  }
  if (result == sizeof kWakeMark && *m_buffer == kWakeMark) {
    return Wait::Again;
  }
  size = static_cast<std::size_t>(result);
  return Wait::Arrived;
}

Queue::Wait Queue::ReceiveNothing() {
  // An empty datagram, or a peer with a duplicate of the sending end shut it down.
  Count(EAaSysComCounter_Malformed);
  pollfd watched{.fd = m_receiver.Get(), .events = POLLRDHUP, .revents = 0};
  if (::poll(&watched, 1, 0) > 0 && (watched.revents & (POLLRDHUP | POLLHUP)) != 0) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "A sender shut down the message queue; it is made anew and senders find it again");
    if (!MakePair()) {
      return Wait::Ended;
    }
  }
  return Wait::Again;
}

}  // namespace hwapi::qis
