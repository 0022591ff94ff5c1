#include "Acceptor.h"

#include "AaSysLog.h"
#include "PassedFd.h"
#include "SenderLimit.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace hwapi::qis {
namespace {

constexpr int kMessagesPerWake = 64;
/// Letting in costs more than knocking: who knocks all the time must not keep the thread from everybody else.
constexpr int kSendersPerWake = 16;
constexpr std::size_t kBufferSize = kMaxWireSize + 1;
/// Messages of a sender that may not send, after which it is not listened to any more: its own room fills up then.
constexpr u32 kMaxRefusedMessages = 1000;

struct FreeBuffer {
  void operator()(u8* buffer) const { std::free(buffer); }
};

/// Receive buffer of the calling thread, from malloc so that pages no message reaches stay untouched.
u8* Buffer() {
  thread_local const std::unique_ptr<u8, FreeBuffer> buffer(static_cast<u8*>(std::malloc(kBufferSize)));
  return buffer.get();
}

int OpenSpare() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

/// A descriptor that is kept for turning senders away when there is no other: without one a connection could neither be
/// taken nor closed, and would be reported again and again.
Fd& Spare() {
  static auto* const spare = new Fd(OpenSpare());
  return *spare;
}

/// Says so at 1, 10, 100, ... senders.
void LogTurnedAway() {
  static u32 turnedAway = 0;  // of the platform's thread
  static u32 nextLine = 1;
  if (++turnedAway < nextLine) {
    return;
  }
  nextLine = nextLine < 1'000'000'000 ? nextLine * 10 : nextLine;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "A sender is turned away, as this process has no room for its connection: raise its limit of file "
                 "descriptors (ulimit -n); senders turned away so far: %u",
                 turnedAway);
}

void TurnAway(int listener) {
  Spare().Reset();
  Fd(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)).Reset();
  Spare().Reset(OpenSpare());
  LogTurnedAway();
}

}  // namespace

int Acceptor::Open() {
  Spare();
  const std::lock_guard lock(m_mutex);
  m_listenerKey = EventLoop::Own().Watch(m_listener, shared_from_this());
  return m_listenerKey != 0 ? 0 : errno;
}

void Acceptor::Close() {
  const std::lock_guard lock(m_mutex);
  m_closed = true;
  EventLoop::Own().Forget(m_listenerKey, m_listener);
  m_listenerKey = 0;
  while (!m_connections.empty()) {
    const auto connection = m_connections.begin();
    if (connection->second.channel) {
      connection->second.channel->Discard();
    }
    EndLocked(connection);
  }
}

void Acceptor::OnReady(std::uint64_t key) {
  std::unique_lock lock(m_mutex);
  if (key == m_listenerKey) {
    lock.unlock();
    AcceptSome();
    return;
  }
  const auto found = m_connections.find(key);
  if (found != m_connections.end() && !Serve(key, found->second)) {
    EndLocked(found);
  }
}

/// Those that wait, up to a bound: for the others it is called again.
void Acceptor::AcceptSome() {
  bool more = true;
  for (int i = 0; i < kSendersPerWake && more; ++i) {
    if (Fd socket = Accept(more)) {
      Peer peer = PeerOf(socket.Get());
      Admit(std::move(socket), std::move(peer));
    }
  }
}

/// @param more out: whether another one may wait
Fd Acceptor::Accept(bool& more) {
  const std::lock_guard lock(m_mutex);
  Fd socket(m_listenerKey != 0 ? ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK) : -1);
  more = bool(socket);
  if (!socket && m_listenerKey != 0 && (errno == EMFILE || errno == ENFILE)) {
    TurnAway(m_listener);
  }
  return socket;
}

void Acceptor::Admit(Fd socket, Peer peer) {
  if (!SenderLimit::Own().MakeRoomFor(peer.uid)) {  // may end a connection of this acceptor
    LogTurnedAway();
    return;
  }
  const std::lock_guard lock(m_mutex);
  if (!m_closed) {  // the task may have been given back since the connection was taken: it ends then
    AdmitLocked(std::move(socket), std::move(peer));
  }
}

void Acceptor::AdmitLocked(Fd socket, Peer peer) {
  std::shared_ptr<Channel> channel;
  if (IsAllowed(peer)) {
    channel = m_inbox->AddChannel(m_task, m_stamp, peer.pid);
    if (!channel) {
      LogTurnedAway();
      return;
    }
  }
  const std::uint64_t key = EventLoop::Own().Watch(socket.Get(), shared_from_this());
  if (key == 0) {
    if (channel) {
      channel->Close();
    }
    return;
  }
  SenderLimit::Own().Enter(key, {.user = peer.uid, .acceptor = weak_from_this(), .channel = channel});
  Connection& connection = m_connections[key];
  connection.socket = std::move(socket);
  connection.peer = std::move(peer);
  connection.channel = std::move(channel);
  if (connection.channel) {
    Acknowledge(connection);
  }
}

void Acceptor::End(std::uint64_t key) {
  const std::lock_guard lock(m_mutex);
  if (const auto found = m_connections.find(key); found != m_connections.end()) {
    TakeLast(found->second);
    EndLocked(found);
  }
}

void Acceptor::EndLocked(std::map<std::uint64_t, Connection>::iterator connection) {
  EventLoop::Own().Forget(connection->first, connection->second.socket.Get());
  SenderLimit::Own().Leave(connection->first);
  if (connection->second.channel) {
    connection->second.channel->Close();
  }
  m_connections.erase(connection);
}

/// @return false when the sender is gone and all it sent is handled
bool Acceptor::Serve(std::uint64_t key, Connection& connection) {
  const bool alive = TakeSome(connection);
  if (alive) {
    Acknowledge(connection);
  }
  if (connection.acknowledged.refused >= kMaxRefusedMessages) {
    EventLoop::Own().Forget(key, connection.socket.Get());
  }
  return alive;
}

/// @return false when nothing more comes
bool Acceptor::TakeSome(Connection& connection) {
  for (int i = 0; i < kMessagesPerWake; ++i) {
    const ssize_t size = ::recv(connection.socket.Get(), Buffer(), kBufferSize, MSG_DONTWAIT);
    if (size < 0 && errno == ECONNRESET) {
      continue;  // it ended without reading its acknowledgements; what it sent is still there
    }
    if (size <= 0) {
      return size < 0 && (errno == EAGAIN || errno == EINTR);
    }
    HandleMessage(connection, Buffer(), static_cast<std::size_t>(size));
  }
  return true;
}

/// Takes all that was sent: a connection that ends may be so new that nothing was taken yet. The sender sends nothing
/// more over it, but connects again.
void Acceptor::TakeLast(Connection& connection) {
  ::shutdown(connection.socket.Get(), SHUT_RD);
  while (TakeSome(connection)) {
  }
  Acknowledge(connection);
}

void Acceptor::HandleMessage(Connection& connection, const u8* bytes, std::size_t size) {
  ++connection.acknowledged.handled;
  if (!connection.channel) {
    ++connection.acknowledged.refused;
    Count(EAaSysComCounter_Refused);
    TellRefusal("Messages of", connection.peer);
    return;
  }
  if (!IsMessage(bytes, size)) {
    Count(EAaSysComCounter_Malformed);
    return;
  }
  if (connection.channel->Forward(bytes, size) != 0) {
    ++connection.acknowledged.full;  // the sender counts and reports it
  }
}

void Acceptor::Acknowledge(Connection& connection) {
  const auto acknowledge = [&connection](int channel) {
    // They add up: one that finds no room is made good by the next.
    return SendWithFd(connection.socket.Get(), &connection.acknowledged, sizeof connection.acknowledged, channel) > 0;
  };
  if (connection.channel && !connection.hasChannel) {
    connection.hasChannel = connection.channel->PassSender(acknowledge);
  } else {
    acknowledge(-1);
  }
}

}  // namespace hwapi::qis
