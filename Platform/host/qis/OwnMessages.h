/// @file
/// The messages that an execution unit gets from its own process: of timers, observers and other threads.
#pragma once

#include "MessageList.h"

#include <atomic>
#include <cstddef>
#include <mutex>

namespace hwapi::qis {

/// A queue in memory, apart from the rooms that senders of other processes have: no stranger can fill it.
/// Every operation may be called from every thread.
class OwnMessages {
 public:
  /// Bytes that may wait, the overhead of each message included.
  static constexpr std::size_t kRoomBytes = 4 << 20;

  /// Appends a message.
  /// @return false when there is no room and @p whenFull says Drop: the message is gone then
  bool Post(MessagePtr message, WhenFull whenFull);
  /// @return the first message that passes the filter; null when there is none
  MessagePtr Take(const u16* filter);

  bool IsEmpty() const { return m_count == 0; }
  /// @return how many messages were ever posted: changes with each
  u32 Posts() const { return m_posts; }

 private:
  std::mutex m_mutex;
  MessageList m_messages;
  std::size_t m_bytes = 0;
  // Sequentially consistent, as the receiving thread's announcement that it waits is (Inbox.h).
  std::atomic<u32> m_count{0};
  std::atomic<u32> m_posts{0};
};

}  // namespace hwapi::qis
