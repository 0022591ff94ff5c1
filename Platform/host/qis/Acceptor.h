/// @file
/// The receiving side of first contact: senders of other processes connect to a task's listening socket.
///
/// A sender connects and at once sends its messages over the connection. The acceptor asks the kernel who it is, makes
/// a channel for it, passes the messages on into that, and answers with an Acknowledgement; the first one carries a
/// duplicate of the channel's sending end. Once every message sent over the connection is acknowledged, the sender goes
/// on with that duplicate: order is kept. The connection stays open as long as both live, so that each learns when the
/// other is gone.
#pragma once

#include "Access.h"
#include "EventLoop.h"
#include "Inbox.h"

#include <map>
#include <memory>
#include <mutex>

namespace hwapi::qis {

/// What the acceptor says to a sender, counted from the beginning of the connection.
struct Acknowledgement {
  u32 handled;  ///< messages dealt with, the lost ones too
  u32 full;     ///< of these, lost because the channel was full
  u32 refused;  ///< of these, lost because the sender may not send
};

/// The acceptor of one registered task. Every operation may be called from every thread.
class Acceptor : public EventHandler, public std::enable_shared_from_this<Acceptor> {
 public:
  /// @param listener stays the caller's and open until Close
  /// @param task     address of the task
  /// @param stamp    its registration
  Acceptor(int listener, std::shared_ptr<Inbox> inbox, TAaSysComSicad task, u32 stamp)
      : m_listener(listener), m_inbox(std::move(inbox)), m_task(task), m_stamp(stamp) {}

  /// Lets senders in from here on.
  /// @return 0, else an errno value
  int Open();
  /// The task is given back: ends every connection. No message is passed on or taken afterwards, and nobody let in.
  void Close();

  /// Lets in a sender that is connected; Open does so for those that connect.
  void Admit(Fd socket, Peer peer);
  /// Ends a connection, so that another sender has room. What was sent over it is still received, and acknowledged.
  void End(std::uint64_t key);

  void OnReady(std::uint64_t key) override;

 private:
  struct Connection {
    Fd socket;
    Peer peer;
    std::shared_ptr<Channel> channel;  ///< null when the sender may not send
    bool hasChannel = false;           ///< whether its sending end was passed on
    Acknowledgement acknowledged{};
  };

  void AcceptSome();
  Fd Accept(bool& more);
  void AdmitLocked(Fd socket, Peer peer);
  bool Serve(std::uint64_t key, Connection& connection);
  bool TakeSome(Connection& connection);
  void TakeLast(Connection& connection);
  void HandleMessage(Connection& connection, const u8* bytes, std::size_t size);
  void Acknowledge(Connection& connection);
  void EndLocked(std::map<std::uint64_t, Connection>::iterator connection);

  std::mutex m_mutex;
  int m_listener;
  bool m_closed = false;
  std::uint64_t m_listenerKey = 0;
  std::shared_ptr<Inbox> m_inbox;
  const TAaSysComSicad m_task;
  const u32 m_stamp;
  std::map<std::uint64_t, Connection> m_connections;
};

}  // namespace hwapi::qis
