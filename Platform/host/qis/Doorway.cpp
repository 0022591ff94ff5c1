#include "Doorway.h"

#include "AaSysLog.h"
#include "BoardDescription.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <set>

namespace hwapi::qis {
namespace {

constexpr int kMessagesAWake = 64;
constexpr std::size_t kBufferSize = kMaxWireSize + 1;

/// Receive buffer of the platform's thread, from malloc so that pages no message reaches stay untouched.
u8* Buffer() {
  static auto* const buffer = static_cast<u8*>(std::malloc(kBufferSize));
  return buffer;
}

bool IsAllowed(const Peer& peer) {
  const uid_t ownUser = ::geteuid();
  if (MaySend(peer, {}, ownUser)) {
    return true;  // names are looked up only when a stranger comes
  }
  static const auto* const rules = new AccessRules(AccessRules::FromNames(board::OwnBoard().access.send));
  return MaySend(peer, *rules, ownUser);
}

void TellRefusal(const Peer& peer) {
  constexpr std::size_t kPeersKnown = 256;
  static auto* const told = new std::set<std::pair<pid_t, uid_t>>;  // the platform's thread only
  if (told->size() >= kPeersKnown) {
    told->clear();
  }
  if (told->emplace(peer.pid, peer.uid).second) {
    AaSysLogPrintE(
        EAaSysLogSeverityLevel_Error, kPlatformFeature,
        "Messages of process %d of user %u are refused: name the user or one of its groups in access.send of "
        "%s to allow them",
        static_cast<int>(peer.pid), static_cast<unsigned>(peer.uid), board::OwnBoard().path.c_str());
  }
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
    TellRefusal(visitor.peer);
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
  iovec part{.iov_base = &visitor.receipt, .iov_len = sizeof visitor.receipt};
  alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof(int))> control{};
  msghdr packet{};
  packet.msg_iov = &part;
  packet.msg_iovlen = 1;
  const bool passQueue = visitor.allowed && !visitor.hasQueue;
  if (passQueue) {
    packet.msg_control = control.data();
    packet.msg_controllen = control.size();
    cmsghdr* const header = CMSG_FIRSTHDR(&packet);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int sender = m_queue->Sender();
    std::memcpy(CMSG_DATA(header), &sender, sizeof sender);
  }
  // Receipts add up: one that finds no room is made good by the next.
  if (::sendmsg(visitor.connection.Get(), &packet, MSG_DONTWAIT | MSG_NOSIGNAL) > 0 && passQueue) {
    visitor.hasQueue = true;
  }
}

}  // namespace hwapi::qis
