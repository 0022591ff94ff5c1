/// @file
/// The messages that an execution unit gets from its own process: of timers, observers and other threads.
#pragma once

#include "MessageList.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>

namespace hwapi::qis {

/// Queues in memory, apart from the rooms that senders of other processes have. Strangers can still cause messages: who
/// sets a tag causes one of its observer's thread, and who names the service itself as sender one of the service's
/// thread, the answer. So expired timers come first, and the others, of one thread after the other, in turn: each
/// thread has room of its own and can only fill that. Messages of one thread stay in order.
/// Every operation may be called from every thread.
class OwnMessages {
 public:
  /// Bytes of one thread's messages that may wait, the overhead of each message included.
  static constexpr std::size_t kRoomBytes = 1 << 20;
  /// Threads that have a turn and a room of their own; those beyond share the last one.
  static constexpr unsigned kTurns = 8;

  /// Appends a message of the calling thread, or of a timer: that is how it is kept when there is no room.
  /// @return false when there is no room and @p whenFull says Drop: the message is gone then
  bool Post(MessagePtr message, WhenFull whenFull);
  /// @return the next message that passes the filter; null when there is none
  MessagePtr Take(const u16* filter);

  bool IsEmpty() const { return m_count == 0; }
  /// @return how many messages were ever posted: changes with each
  u32 Posts() const { return m_posts; }

 private:
  struct Source {
    MessageList messages;
    std::size_t bytes = 0;
  };

  bool Append(MessagePtr message, WhenFull whenFull);
  MessagePtr TakeInTurn(const u16* filter);

  std::mutex m_mutex;
  MessageList m_timers;
  std::array<Source, kTurns> m_threads;
  unsigned m_next = 0;  ///< whose turn it is
  // Sequentially consistent, as the receiving thread's announcement that it waits is (Inbox.h).
  std::atomic<u32> m_count{0};
  std::atomic<u32> m_posts{0};
};

}  // namespace hwapi::qis
