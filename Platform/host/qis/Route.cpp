#include "Route.h"

#include "PassedFd.h"
#include "TaskName.h"

#include <cerrno>
#include <cstring>

namespace hwapi::qis {
namespace {

/// Acknowledgements that are taken before the thread for connections serves others, and a waiting Send has its turn.
constexpr int kAcknowledgementsPerWake = 64;
/// Acknowledgements of nothing new on one connection: that of being let in, and a few that came to nothing. Who sends
/// more does not belong to the platform and could keep the thread busy for ever.
constexpr unsigned kMaxRepeated = 16;

constexpr const char* kQueueFull = "its queue is full, it does not read";
constexpr const char* kNobody = "no process serves it";
constexpr const char* kGone = "its process ended or gave the task back before it read them";
constexpr const char* kGivenUp = "it does not acknowledge them, and others need its connection";
constexpr const char* kIncredible = "it acknowledges what it was not sent";
constexpr const char* kRefused = "it refuses this user; access.send of the board description names who may send";

}  // namespace

Route::~Route() { Disconnect(); }

bool Route::IsConnected() {
  const std::lock_guard lock(m_mutex);
  return bool(m_connection);
}

bool Route::EndIfIdle() {
  const std::lock_guard lock(m_mutex);
  if (m_sent == m_acknowledged.handled) {
    Disconnect();
  }
  return !m_connection;
}

bool Route::GiveUp() {
  const std::lock_guard lock(m_mutex);
  ReceiverGone(kGivenUp);
  return true;
}

void Route::Send(const Message& message) {
  constexpr int kAttempts = 2;  // a receiver that died may have a successor
  const std::lock_guard lock(m_mutex);
  int error = 0;
  for (int i = 0; i < kAttempts; ++i) {
    error = m_connection ? 0 : Connect();
    if (error != 0) {
      break;
    }
    error = TrySend(message);
    if (error == 0) {
      if (m_direct) {
        m_losses.Delivered();
      }
      return;
    }
    if (error == EAGAIN) {
      m_losses.Lost(EAaSysComCounter_QueueFull, 1, kQueueFull);
      return;
    }
    ReceiverGone(kGone);
  }
  const bool nobody = error == ENOENT || error == ECONNREFUSED || error == EPIPE;
  m_losses.Lost(EAaSysComCounter_NoReceiver, 1, nobody ? kNobody : std::strerror(error));
}

int Route::TrySend(const Message& message) {
  if (m_direct) {
    return SendNow(m_channel.Get(), &message, message.WireSize());
  }
  const int error = SendNow(m_connection.Get(), &message, message.WireSize());
  if (error == 0) {
    ++m_sent;
  }
  return error;
}

int Route::Connect() {
  m_connection = ConnectToTask(m_receiver);
  if (!m_connection) {
    return errno;
  }
  m_key = EventLoop::Own().Watch(m_connection.Get(), shared_from_this());
  const int error = m_key == 0 ? errno : 0;
  if (error != 0) {
    m_connection.Reset();
  }
  return error;
}

void Route::Disconnect() {
  if (m_connection) {
    EventLoop::Own().Forget(m_key, m_connection.Get());
  }
  m_key = 0;
  m_connection.Reset();
  m_channel.Reset();
  m_direct = false;
  m_sent = 0;
  m_acknowledged = {};
  m_repeated = 0;
}

void Route::OnReady(std::uint64_t key) {
  const std::lock_guard lock(m_mutex);
  if (key != m_key) {
    return;
  }
  for (int i = 0; i < kAcknowledgementsPerWake && TakeAcknowledgement(); ++i) {
  }
}

/// @return whether there may be more
bool Route::TakeAcknowledgement() {
  Acknowledgement acknowledged{};
  Fd channel;
  const ssize_t size = ReceiveWithFd(m_connection.Get(), &acknowledged, sizeof acknowledged, channel);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return false;
  }
  if (size < 0 && errno == ECONNRESET) {
    return true;  // it ended with messages unread; the acknowledgements of the others are still there
  }
  if (size != sizeof acknowledged) {
    ReceiverGone(kGone);
    return false;
  }
  if (!IsCredible(acknowledged)) {
    ReceiverGone(kIncredible);
    return false;
  }
  if (channel) {
    m_channel = std::move(channel);
  }
  Apply(acknowledged);
  return true;
}

/// @return whether a receiver of what was sent may say so: how often it can is bounded by what it is sent
bool Route::IsCredible(const Acknowledgement& acknowledged) const {
  const u32 handled = acknowledged.handled - m_acknowledged.handled;
  const u32 full = acknowledged.full - m_acknowledged.full;
  const u32 refused = acknowledged.refused - m_acknowledged.refused;
  return handled <= m_sent - m_acknowledged.handled && full <= handled && refused <= handled - full &&
         (handled != 0 || m_repeated < kMaxRepeated);
}

void Route::Apply(const Acknowledgement& acknowledged) {
  if (const u32 full = acknowledged.full - m_acknowledged.full; full != 0) {
    m_losses.Lost(EAaSysComCounter_QueueFull, full, kQueueFull);
  } else if (acknowledged.refused != m_acknowledged.refused) {
    m_losses.Lost(EAaSysComCounter_NoReceiver, acknowledged.refused - m_acknowledged.refused, kRefused);
  } else if (acknowledged.handled != m_acknowledged.handled) {
    m_losses.Delivered();
  } else {
    ++m_repeated;
  }
  m_acknowledged = acknowledged;
  m_direct = m_channel && m_acknowledged.handled == m_sent;
}

void Route::ReceiverGone(const char* reason) {
  if (const u32 unread = m_sent - m_acknowledged.handled; unread != 0) {
    m_losses.Lost(EAaSysComCounter_NoReceiver, unread, reason);
  }
  Disconnect();
}

}  // namespace hwapi::qis
