/// @file
/// What an execution unit receives from: the messages of its own process, one channel per sender of other processes,
/// and the messages that a filter left behind.
#pragma once

#include "Channel.h"
#include "ComLog.h"
#include "EventLoop.h"
#include "OwnMessages.h"
#include "SendingProcess.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace hwapi::qis {

/// Whether a message for this receiver with this stamp is still expected by an execution unit, and whether that has a
/// task at all.
class Registrations {
 public:
  virtual ~Registrations() = default;
  virtual bool Expects(TAaProEuId eu, TAaSysComSicad receiver, u32 stamp) = 0;
  virtual bool HasTask(TAaProEuId eu) = 0;
};

/// Its own process and the others are served in turn, the others among each other in FairOrder; a turn of another
/// process may have several messages of one channel, as long as they are handled within a moment. It waits for all of
/// them at once; but as long as one sender is the only one that sends, it waits for that one alone, which spares a
/// system call per message. The platform's thread for connections then watches the others, and ends that wait when one
/// of them sends.
class Inbox : public EventHandler, public std::enable_shared_from_this<Inbox> {
 public:
  /// @param registrations outlives the inbox
  /// @return null with errno set
  static std::shared_ptr<Inbox> Create(TAaProEuId eu, Registrations& registrations);

  /// @name From every thread
  ///@{
  /// As OwnMessages::Post; wakes the receiver.
  bool Post(MessagePtr message, WhenFull whenFull);
  /// @param process id of the sender
  /// @return a new channel, which is received from until it is closed; null with errno set
  std::shared_ptr<Channel> AddChannel(TAaSysComSicad task, u32 stamp, pid_t process);
  /// Ends a wait in Receive, which then looks whether the execution unit still has a task.
  void Wake();
  /// The execution unit has ended and receives no more.
  void Retire();
  void OnReady(std::uint64_t key) override;
  ///@}

  /// As AaSysComMsgReceive, for an execution unit that has a task. Called by that one only.
  /// @param waitNs in real nanoseconds; negative: for ever
  MessagePtr Receive(std::int64_t waitNs, const u16* filter);

 private:
  /// How a wait ended.
  enum class Wait { Again, Ended };
  /// A message of another process that a filter left behind.
  struct Postponed {
    MessagePtr message;
    std::shared_ptr<Channel> channel;
  };
  struct BufferDeleter {
    void operator()(u8* buffer) const;
  };

  Inbox(TAaProEuId eu, Registrations& registrations) : m_eu(eu), m_registrations(registrations), m_losses(0) {}
  bool AllocateBuffer();
  bool Open();

  // Of the execution unit, but for those that AddChannel calls.
  void ChooseWait(std::int64_t waitNs, bool ownWaits);
  void ChargeServed();
  bool OwnWaits(u32 posts) const;
  void AddToOrder(SendingProcess& process);
  MessagePtr TakePostponed(const u16* filter);
  Wait ServeAll(std::int64_t waitNs, u32 posts, const u16* filter, MessagePtr& message);
  Wait ServeAlone(std::int64_t waitNs, u32 posts, const u16* filter, MessagePtr& message);
  MessagePtr ServeOwn(const u16* filter);
  MessagePtr ServeOther(const u16* filter);
  MessagePtr ServeChannel(Channel& channel, const u16* filter);
  MessagePtr Take(Channel& channel, ssize_t size, const u16* filter);
  void Postpone(MessagePtr message, Channel& channel);

  std::shared_ptr<SendingProcess> ProcessOf(pid_t id);
  void DiscardUnread();
  bool Listen(Channel& channel);
  void Mute(Channel& channel);
  void Drop(Channel& channel);
  std::shared_ptr<Channel> Shared(const Channel& channel);
  Wait Look();
  int TakeEvents(int timeoutMs);
  Wait WaitForAll(std::int64_t waitNs, u32 posts);
  void WaitForOneAlone();
  void WaitForAllAgain();
  static bool IsReadableWithin(int fd, std::int64_t waitNs);

  const TAaProEuId m_eu;
  Registrations& m_registrations;
  OwnMessages m_own;
  Fd m_epoll;  ///< every channel that is listened to, and m_wake
  Fd m_wake;   ///< an eventfd
  std::atomic<bool> m_waiting{false};
  std::atomic<bool> m_othersSend{false};  ///< while one is waited for alone

  std::mutex m_mutex;
  std::vector<std::shared_ptr<Channel>> m_channels;            ///< under the mutex, in the order of their making
  std::map<pid_t, std::weak_ptr<SendingProcess>> m_processes;  ///< under the mutex
  Channel* m_alone = nullptr;  ///< the one waited for alone; changed under the mutex, read by this thread without
  std::uint64_t m_othersKey = 0;

  std::unique_ptr<u8, BufferDeleter> m_buffer;
  std::deque<Postponed> m_postponed;
  LossLog m_losses;
  FairOrder m_order;
  bool m_servedOwn = false;  ///< whether the last message was of this process: then it is the others' turn
  u32 m_ownPassedOver = 0;   ///< posts at the time when no own message passed the filter
  bool m_ownIsPassedOver = false;
  SendingProcess* m_served = nullptr;  ///< whose message is being handled
  std::int64_t m_servedAtNs = 0;
  std::int64_t m_lookedAtNs = 0;  ///< when it was last looked who sends
  bool m_lookIsDue = false;
  bool m_goesOn = false;           ///< whether m_lastChannel is asked for another message in the same turn
  std::int64_t m_turnBeganNs = 0;  ///< when the first message of that turn was served
  Channel* m_lastChannel = nullptr;
  unsigned m_inARow = 0;  ///< messages of m_lastChannel without one of anybody else
  unsigned m_rowNeeded = 0;
  unsigned m_servedAlone = 0;
};

}  // namespace hwapi::qis
