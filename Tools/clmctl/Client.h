/// @file
/// A messaging user of the board, for the length of a command.
#pragma once

#include "AaSysCom.h"

#include <chrono>
#include <memory>

namespace clmctl {

struct MessageDestroyer {
  void operator()(void* msg) const { AaSysComMsgDestroy(&msg); }
};
/// A message that this program owns.
using Message = std::unique_ptr<void, MessageDestroyer>;

/// Registers a task for the calling thread and gives it back at the end. Used by the thread that made it.
class Client {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param task the task to be; 0: any free one
  /// @throw CommandError (unreachable) when there is no board here, or the task is taken
  explicit Client(u32 task = 0);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  TAaSysComSicad Address() const { return m_address; }
  /// @return address of a task of the own node
  static TAaSysComSicad AddressOf(u32 task);

  /// Creates a message to @p receiver with a copy of @p payload.
  Message Create(u32 id, const void* payload, u32 size, TAaSysComSicad receiver) const;
  /// Sends with the own address.
  /// @throw CommandError (unreachable) when nobody serves the receiver or its queue is full
  void Send(Message msg) const;
  /// Waits for a message until the host's clock says @p deadline.
  /// @param filter as AaSysComMsgReceive
  /// @return null when the deadline has passed
  Message ReceiveUntil(Clock::time_point deadline, const u16* filter = nullptr) const;

 private:
  u32 m_task;
  TAaSysComSicad m_address;
};

/// @throw CommandError (unreachable) when the run directory holds no board
void RequireBoard();

}  // namespace clmctl
