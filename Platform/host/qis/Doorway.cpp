#include "Doorway.h"

#include "AaSysLog.h"
#include "PassedFd.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace hwapi::qis {
namespace {

constexpr int kMessagesAWake = 64;
constexpr std::size_t kBufferSize = kMaxWireSize + 1;

/// Receive buffer of the platform's thread, from malloc so that pages no message reaches stay untouched.
u8* Buffer() {
  static auto* const buffer = static_cast<u8*>(std::malloc(kBufferSize));
  return buffer;
}

/// Without a free descriptor a knock can neither be taken nor sent away: one is kept for that.
void TurnAway(int listener) {
  static Fd* const spare = new Fd;
  spare->Reset();
  Fd(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)).Reset();
  spare->Reset(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "A sender is turned away: this process has no free file descriptor; raise its limit (ulimit -n)");
}

}  // namespace

int Doorway::Open() {
  const std::lock_guard lock(m_mutex);
  m_listenerKey = EventLoop::Own().Watch(m_listener, shared_from_this());
  return m_listenerKey != 0 ? 0 : errno;
}

void Doorway::Close() {
  const std::lock_guard lock(m_mutex);
  EventLoop::Own().Forget(m_listenerKey, m_listener);
  m_listenerKey = 0;
  for (auto& [key, visitor] : m_visitors) {
    EventLoop::Own().Forget(key, visitor.connection.Get());
  }
  m_visitors.clear();
}

void Doorway::OnReady(std::uint64_t key) {
  const std::lock_guard lock(m_mutex);
  if (key == m_listenerKey) {
    AcceptAll();
    return;
  }
  const auto found = m_visitors.find(key);
  if (found != m_visitors.end() && !Serve(found->second)) {
    EventLoop::Own().Forget(key, found->second.connection.Get());
    m_visitors.erase(found);
  }
}

void Doorway::AcceptAll() {
  for (;;) {
    Fd connection(::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection) {
      if (errno == EMFILE || errno == ENFILE) {
        TurnAway(m_listener);
      }
      return;
    }
    Peer peer = PeerOf(connection.Get());
    AdmitLocked(std::move(connection), std::move(peer));
  }
}

void Doorway::Admit(Fd connection, Peer peer) {
  const std::lock_guard lock(m_mutex);
  AdmitLocked(std::move(connection), std::move(peer));
}

void Doorway::AdmitLocked(Fd connection, Peer peer) {
  const std::uint64_t key = EventLoop::Own().Watch(connection.Get(), shared_from_this());
  if (key == 0) {
    return;
  }
  Visitor& visitor = m_visitors[key];
  visitor.connection = std::move(connection);
  visitor.allowed = IsAllowed(peer);
  visitor.peer = std::move(peer);
  visitor.receipt.stamp = m_stamp;
  if (visitor.allowed) {
    SendReceipt(visitor);
  }
}

/// @return false when the sender is gone and all it sent is handled
bool Doorway::Serve(Visitor& visitor) {
  bool alive = true;
  for (int i = 0; i < kMessagesAWake; ++i) {
    const ssize_t size = ::recv(visitor.connection.Get(), Buffer(), kBufferSize, MSG_DONTWAIT);
    if (size < 0 && errno == ECONNRESET) {
      continue;  // it ended without reading its receipts; what it sent is still there
    }
    if (size <= 0) {
      alive = size < 0 && (errno == EAGAIN || errno == EINTR);
      break;
    }
    HandleMessage(visitor, Buffer(), static_cast<std::size_t>(size));
  }
  if (alive) {
    SendReceipt(visitor);
  }
  return alive;
}

void Doorway::HandleMessage(Visitor& visitor, u8* bytes, std::size_t size) {
  ++visitor.receipt.handled;
  if (!visitor.allowed) {
    ++visitor.receipt.refused;
    Count(EAaSysComCounter_Refused);
    TellRefusal("Messages of", visitor.peer);
    return;
  }
  if (!IsMessage(bytes, size)) {
    Count(EAaSysComCounter_Malformed);
    return;
  }
  std::memcpy(bytes + offsetof(WireHeader, stamp), &m_stamp, sizeof m_stamp);
  if (SendNow(m_queue->Sender(), bytes, size) != 0) {
    ++visitor.receipt.full;  // the sender counts and tells it
  }
}

void Doorway::SendReceipt(Visitor& visitor) {
  const bool passQueue = visitor.allowed && !visitor.hasQueue;
  const int queue = passQueue ? m_queue->Sender() : -1;
  // Receipts add up: one that finds no room is made good by the next.
  if (SendWithFd(visitor.connection.Get(), &visitor.receipt, sizeof visitor.receipt, queue) > 0 && passQueue) {
    visitor.hasQueue = true;
  }
}

}  // namespace hwapi::qis
