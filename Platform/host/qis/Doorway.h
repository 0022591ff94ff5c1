/// @file
/// The receiving side of first contact: senders of other processes knock at a task's listening socket.
///
/// A sender connects and at once sends its messages over the connection. The doorway asks the kernel who it is, passes
/// the messages on into the queue, and answers with a Receipt; the first one carries a duplicate of the queue's sending
/// end. Once every message sent over the connection is in a receipt, the sender goes on with that duplicate: order is
/// kept. The connection stays open as long as both live, so that the sender learns when the task is given back.
#pragma once

#include "Access.h"
#include "EventLoop.h"
#include "Queue.h"

#include <map>
#include <mutex>

namespace hwapi::qis {

/// What the doorway tells a sender, counted from the beginning of the connection.
struct Receipt {
  u32 handled;  ///< messages dealt with, the lost ones too
  u32 full;     ///< of these, lost because the queue was full
  u32 refused;  ///< of these, lost because the sender may not send
  u32 stamp;    ///< the task's registration, which messages of the direct path carry
};

/// The doorway of one registered task.
class Doorway : public EventHandler, public std::enable_shared_from_this<Doorway> {
 public:
  /// @param listener stays the caller's and open until Close
  Doorway(int listener, std::shared_ptr<Queue> queue, u32 stamp)
      : m_listener(listener), m_queue(std::move(queue)), m_stamp(stamp) {}

  /// Lets senders in from here on.
  /// @return 0, else an errno value
  int Open();
  /// Ends every connection; no message is passed on afterwards.
  void Close();

  /// Lets in a sender that is connected; Open does so for those that knock.
  void Admit(Fd connection, Peer peer);

  void OnReady(std::uint64_t key) override;

 private:
  struct Visitor {
    Fd connection;
    Peer peer;
    bool allowed = false;
    bool hasQueue = false;
    Receipt receipt{};
  };

  void AcceptAll();
  void AdmitLocked(Fd connection, Peer peer);
  bool Serve(Visitor& visitor);
  void HandleMessage(Visitor& visitor, u8* bytes, std::size_t size);
  void SendReceipt(Visitor& visitor);

  std::mutex m_mutex;
  int m_listener;
  std::uint64_t m_listenerKey = 0;
  std::shared_ptr<Queue> m_queue;
  u32 m_stamp;
  std::map<std::uint64_t, Visitor> m_visitors;
};

}  // namespace hwapi::qis
