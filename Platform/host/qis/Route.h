/// @file
/// The sending side: the way from this process to one task of another one.
#pragma once

#include "Doorway.h"
#include "EventLoop.h"
#include "Message.h"

#include <mutex>

namespace hwapi::qis {

/// A way that finds its receiver by name, again when it was gone, and that goes straight into the receiver's queue as
/// soon as that keeps the order (see Doorway.h).
class Route : public EventHandler, public std::enable_shared_from_this<Route> {
 public:
  explicit Route(TAaSysComSicad receiver) : m_losses(receiver), m_receiver(receiver) {}
  ~Route() override;

  /// Sends without blocking; a loss is counted and told.
  void Send(Message& message);
  /// @return whether it holds a connection
  bool IsConnected();

  void OnReady(std::uint64_t key) override;

 private:
  int Connect();
  void Disconnect();
  int TrySend(Message& message);
  bool TakeReceipt();
  void Apply(const Receipt& receipt);
  void ReceiverGone();

  std::mutex m_mutex;
  LossLog m_losses;
  TAaSysComSicad m_receiver;
  Fd m_connection;
  std::uint64_t m_key = 0;
  Fd m_queue;             ///< sending end of the receiver's queue, once it was passed
  bool m_direct = false;  ///< whether m_queue is used
  u32 m_sent = 0;         ///< messages sent over m_connection
  Receipt m_receipt{};    ///< the latest one
};

}  // namespace hwapi::qis
