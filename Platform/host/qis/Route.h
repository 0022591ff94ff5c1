/// @file
/// The sending side: the way from this process to one task of another one.
#pragma once

#include "Acceptor.h"
#include "EventLoop.h"
#include "Message.h"

#include <mutex>

namespace hwapi::qis {

/// A way that finds its receiver by name, again when it was gone, and that goes straight into its channel of the
/// receiver as soon as that keeps the order (see Acceptor.h).
class Route : public EventHandler, public std::enable_shared_from_this<Route> {
 public:
  explicit Route(TAaSysComSicad receiver) : m_losses(receiver), m_receiver(receiver) {}
  ~Route() override;

  /// Sends without blocking; a loss is counted and told.
  void Send(const Message& message);
  /// @return whether it holds a connection
  bool IsConnected();
  /// Gives its connection back, unless the receiver has not acknowledged everything that was sent over it.
  /// @return whether it holds none now
  bool EndIfIdle();
  /// Gives its connection back. What the receiver has not acknowledged is lost, counted and reported.
  /// @return true: it holds none now
  bool GiveUp();

  void OnReady(std::uint64_t key) override;

 private:
  int Connect();
  void Disconnect();
  int TrySend(const Message& message);
  bool TakeAcknowledgement();
  bool IsCredible(const Acknowledgement& acknowledged) const;
  void Apply(const Acknowledgement& acknowledged);
  void ReceiverGone(const char* reason);

  std::mutex m_mutex;
  LossLog m_losses;
  TAaSysComSicad m_receiver;
  Fd m_connection;
  std::uint64_t m_key = 0;
  Fd m_channel;                      ///< sending end of the channel, once it was passed
  bool m_direct = false;             ///< whether m_channel is used
  u32 m_sent = 0;                    ///< messages sent over m_connection
  Acknowledgement m_acknowledged{};  ///< the latest one
  unsigned m_repeated = 0;           ///< acknowledgements of nothing new
};

}  // namespace hwapi::qis
