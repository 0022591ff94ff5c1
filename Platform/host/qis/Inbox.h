/// @file
/// What an execution unit receives from: its queue, and the messages that a filter left behind.
#pragma once

#include "Queue.h"

#include <cstdint>
#include <deque>
#include <memory>

namespace hwapi::qis {

/// Whether a message for this receiver with this stamp is still expected by an execution unit, and whether that has a
/// task at all.
class Registrations {
 public:
  virtual ~Registrations() = default;
  virtual bool Expects(TAaProEuId eu, TAaSysComSicad receiver, u32 stamp) = 0;
  virtual bool HasTask(TAaProEuId eu) = 0;
};

/// Used by its execution unit only.
class Inbox {
 public:
  Inbox(TAaProEuId eu, std::shared_ptr<Queue> queue, Registrations& registrations)
      : m_eu(eu), m_queue(std::move(queue)), m_registrations(registrations), m_losses(0) {}

  const std::shared_ptr<Queue>& GetQueue() const { return m_queue; }

  /// As AaSysComMsgReceive, for an execution unit that has a task.
  /// @param waitNs in real nanoseconds; negative: for ever
  MessagePtr Receive(std::int64_t waitNs, const u16* filter);

 private:
  MessagePtr TakePostponed(const u16* filter);
  MessagePtr TakeArrived(std::size_t size);
  bool IsExpected(const Message& message);
  void Postpone(MessagePtr message);

  TAaProEuId m_eu;
  std::shared_ptr<Queue> m_queue;
  Registrations& m_registrations;
  std::deque<MessagePtr> m_postponed;
  LossLog m_losses;
};

}  // namespace hwapi::qis
