#include "Route.h"

#include "PassedFd.h"
#include "TaskName.h"

#include <cerrno>
#include <cstring>

namespace hwapi::qis {
namespace {

constexpr const char* kQueueFull = "its queue is full, it does not read";
constexpr const char* kNobody = "no process serves it";
constexpr const char* kGone = "its process ended or gave the task back before it read them";
constexpr const char* kRefused = "it refuses this user; access.send of the board description names who may send";

}  // namespace

Route::~Route() { Disconnect(); }

bool Route::IsConnected() {
  const std::lock_guard lock(m_mutex);
  return bool(m_connection);
}

void Route::Send(Message& message) {
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
    ReceiverGone();
  }
  const bool nobody = error == ENOENT || error == ECONNREFUSED || error == EPIPE;
  m_losses.Lost(EAaSysComCounter_NoReceiver, 1, nobody ? kNobody : std::strerror(error));
}

int Route::TrySend(Message& message) {
  if (m_direct) {
    message.header.stamp = m_receipt.stamp;
    return SendNow(m_queue.Get(), &message, message.WireSize());
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
  m_queue.Reset();
  m_direct = false;
  m_sent = 0;
  m_receipt = {};
}

void Route::OnReady(std::uint64_t key) {
  const std::lock_guard lock(m_mutex);
  if (key != m_key) {
    return;
  }
  while (TakeReceipt()) {
  }
}

/// @return whether there may be more
bool Route::TakeReceipt() {
  Receipt receipt{};
  Fd queue;
  const ssize_t size = ReceiveWithFd(m_connection.Get(), &receipt, sizeof receipt, queue);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return false;
  }
  if (size < 0 && errno == ECONNRESET) {
    return true;  // it ended with messages unread; the receipts of the others are still there
  }
  if (size != sizeof receipt) {
    ReceiverGone();
    return false;
  }
  if (queue) {
    m_queue = std::move(queue);
  }
  Apply(receipt);
  return true;
}

void Route::Apply(const Receipt& receipt) {
  if (const u32 full = receipt.full - m_receipt.full; full != 0) {
    m_losses.Lost(EAaSysComCounter_QueueFull, full, kQueueFull);
  } else if (receipt.refused != m_receipt.refused) {
    m_losses.Lost(EAaSysComCounter_NoReceiver, receipt.refused - m_receipt.refused, kRefused);
  } else if (receipt.handled != m_receipt.handled) {
    m_losses.Delivered();
  }
  m_receipt = receipt;
  m_direct = m_queue && m_receipt.handled == m_sent;
}

void Route::ReceiverGone() {
  if (const u32 unread = m_sent - m_receipt.handled; unread != 0) {
    m_losses.Lost(EAaSysComCounter_NoReceiver, unread, kGone);
  }
  Disconnect();
}

}  // namespace hwapi::qis
