/// @file
/// The room of one sender of another process: a socket pair of its own, whose sending end the sender gets a duplicate
/// of. What it does to that end, it does to itself.
#pragma once

#include "Fd.h"
#include "Message.h"
#include "SendingProcess.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace hwapi::qis {

/// Sends @p size bytes without blocking.
/// @return 0, else an errno value; EAGAIN when there is no room
int SendNow(int socket, const void* bytes, std::size_t size);

/// A way into the inbox of an execution unit, for one sender and one registration of a task. The operations of the
/// first group may be called from every thread, the others are the receiving execution unit's.
class Channel {
 public:
  /// Room of a channel in bytes, at the kernel's own cost of a small message some 270 messages. The kernel doubles it.
  static constexpr int kRoomBytes = 104 * 1024;

  /// @param task    address that the sender sends to
  /// @param stamp   the task's registration
  /// @param process the sender
  /// @return null with errno set
  static std::shared_ptr<Channel> Create(TAaSysComSicad task, u32 stamp, std::shared_ptr<SendingProcess> process);

  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  /// Puts bytes into the channel in the sender's place. @return as SendNow; EPIPE once the channel is closed
  int Forward(const void* bytes, std::size_t size);
  /// Ends a wait for the next message. @return false when the channel is closed
  bool Wake();
  /// Passes the sending end on.
  /// @return whether there was one and @p pass said true of it
  template <typename Pass>
  bool PassSender(Pass pass) {
    const std::lock_guard lock(m_mutex);
    return m_sender && pass(m_sender.Get());
  }
  /// The sender is gone: takes nothing more. What it sent is still received.
  void Close();
  /// The task was given back: takes nothing more, and what is unread is dropped and counted.
  void Discard();
  bool IsDiscarded() const { return m_discarded; }
  /// @return whether nothing waits in it
  bool IsEmpty() const;
  /// When something was last received from it, in milliseconds of a clock that never goes back.
  std::int64_t LastUsedMs() const { return m_lastUsedMs.load(std::memory_order_relaxed); }

  /// @return whether this message was sent to the registration that the channel is for, as every sender has to
  bool Fits(const Message& message) const;
  /// Takes one datagram.
  /// @param wait whether to wait for one; a signal ends the wait with EINTR
  /// @return as recv: 0 once the channel is closed and empty, as well as for an empty datagram
  ssize_t Receive(void* buffer, std::size_t size, bool wait);
  /// @return whether these bytes are what Wake put in
  static bool IsWakeMark(const u8* bytes, ssize_t size);

  int Receiver() const { return m_receiver.Get(); }
  bool IsClosed() const { return m_closed; }
  const std::shared_ptr<SendingProcess>& Process() const { return m_process; }

  bool isReady = false;          ///< of its process: whether something can be received
  Channel* nextReady = nullptr;  ///< of its process
  unsigned postponed = 0;        ///< messages that selective receives left behind
  bool muted = false;            ///< too many are left behind: it is not listened to

 private:
  Channel(TAaSysComSicad task, u32 stamp, std::shared_ptr<SendingProcess> process)
      : m_task(task), m_stamp(stamp), m_process(std::move(process)) {}

  const TAaSysComSicad m_task;
  const u32 m_stamp;
  const std::shared_ptr<SendingProcess> m_process;
  Fd m_receiver;
  std::mutex m_mutex;
  Fd m_sender;  ///< under the mutex
  std::atomic<bool> m_closed{false};
  std::atomic<bool> m_discarded{false};
  std::atomic<std::int64_t> m_lastUsedMs{0};
};

}  // namespace hwapi::qis
