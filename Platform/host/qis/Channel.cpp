#include "Channel.h"

#include "ComLog.h"
#include "PassedFd.h"

#include <sys/ioctl.h>
#include <sys/socket.h>
#include <time.h>

#include <linux/sockios.h>

#include <cerrno>

namespace hwapi::qis {
namespace {

/// Time-out of an endless wait, which then starts again: a receive with a time-out is not restarted after a signal.
constexpr timeval kEndlessSlice{.tv_sec = 1'000'000, .tv_usec = 0};
/// What Wake sends: too short for a message.
constexpr char kWakeMark = 'w';

/// Coarse: the kernel's tick is exact enough, and reading it costs next to nothing.
std::int64_t CoarseMs() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
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

std::shared_ptr<Channel> Channel::Create(TAaSysComSicad task, u32 stamp, std::shared_ptr<SendingProcess> process) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    return nullptr;
  }
  std::shared_ptr<Channel> channel(new Channel(task, stamp, std::move(process)));
  channel->m_receiver.Reset(ends[0]);
  channel->m_sender.Reset(ends[1]);
  channel->m_lastUsedMs = CoarseMs();
  RefuseFds(ends[0]);  // where the kernel can: no message has one
  ::setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &kRoomBytes, sizeof kRoomBytes);
  ::setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &kEndlessSlice, sizeof kEndlessSlice);
  return channel;
}

int Channel::Forward(const void* bytes, std::size_t size) {
  const std::lock_guard lock(m_mutex);
  return m_sender ? SendNow(m_sender.Get(), bytes, size) : EPIPE;
}

bool Channel::Wake() {
  const int error = Forward(&kWakeMark, sizeof kWakeMark);
  return error == 0 || error == EAGAIN;  // a full channel makes nobody wait
}

void Channel::Close() {
  const std::lock_guard lock(m_mutex);
  m_closed = true;
  ::shutdown(m_receiver.Get(), SHUT_RD);  // at once: a sender finds its receiver's successor with its next message
  m_sender.Reset();
}

void Channel::Discard() {
  m_discarded = true;
  Close();
  char byte = 0;
  ssize_t size = 0;
  while ((size = ::recv(m_receiver.Get(), &byte, sizeof byte, MSG_DONTWAIT | MSG_TRUNC)) > 0) {
    if (size > ssize_t{sizeof kWakeMark}) {
      Count(EAaSysComCounter_Unexpected);
    }
  }
}

bool Channel::IsEmpty() const {
  int waiting = 0;
  return ::ioctl(m_receiver.Get(), SIOCINQ, &waiting) == 0 && waiting == 0;
}

bool Channel::Fits(const Message& message) const {
  return message.header.receiver == m_task && (message.header.stamp == 0 || message.header.stamp == m_stamp);
}

ssize_t Channel::Receive(void* buffer, std::size_t size, bool wait) {
  const ssize_t result = ::recv(m_receiver.Get(), buffer, size, wait ? 0 : MSG_DONTWAIT);
  m_lastUsedMs.store(CoarseMs(), std::memory_order_relaxed);
  return result;
}

bool Channel::IsWakeMark(const u8* bytes, ssize_t size) {
  return size == ssize_t{sizeof kWakeMark} && *bytes == static_cast<u8>(kWakeMark);
}

}  // namespace hwapi::qis
