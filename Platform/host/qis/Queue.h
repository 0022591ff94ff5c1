/// @file
/// The message queue of an execution unit: the buffer of a socket pair.
#pragma once

#include "ComLog.h"
#include "Fd.h"
#include "Message.h"

#include <cstdint>
#include <memory>

namespace hwapi::qis {

/// Sends @p size bytes without blocking.
/// @return 0, else an errno value; EAGAIN when there is no room
int SendNow(int socket, const void* bytes, std::size_t size);

/// The queue. Whoever may send holds the sending end or a duplicate of it, also in other processes; only the execution
/// unit reads. What the socket buffer holds is the queue's bound.
class Queue {
 public:
  /// @return a queue; null with errno set
  static std::shared_ptr<Queue> Create();

  /// Sending end.
  int Sender() const { return m_sender.Get(); }
  /// Ends a wait in Receive with Wait::Again.
  void Wake() const;

  /// How a wait for bytes ended.
  enum class Wait { Arrived, Again, Ended };
  /// Takes one datagram. Called by the execution unit only.
  /// @param waitNs longest wait in real nanoseconds; 0 only looks, negative: for ever
  /// @param size   out: its size; it is in Buffer() then
  /// @return Arrived; Again: something else than a datagram came; Ended: time-out or a signal
  Wait Receive(std::int64_t waitNs, std::size_t& size);
  /// The last datagram.
  u8* Buffer() { return m_buffer.get(); }

 private:
  struct BufferDeleter {
    void operator()(u8* buffer) const;
  };

  Queue() = default;
  bool MakePair();
  Wait ReceiveNothing();

  Fd m_receiver;
  Fd m_sender;
  std::unique_ptr<u8, BufferDeleter> m_buffer;
};

}  // namespace hwapi::qis
