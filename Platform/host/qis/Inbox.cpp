#include "Inbox.h"

#include <algorithm>
#include <chrono>

namespace hwapi::qis {
namespace {

/// Most messages that filters may leave behind.
constexpr std::size_t kMostPostponed = 4096;

bool Matches(const Message& message, const u16* filter) {
  return filter == nullptr || std::find(filter + 1, filter + 1 + *filter, message.header.id) != filter + 1 + *filter;
}

/// The rest of a wait.
class Deadline {
 public:
  explicit Deadline(std::int64_t waitNs) : m_waitNs(waitNs), m_end(waitNs > 0 ? Now() + waitNs : 0) {}
  std::int64_t Rest() const { return m_waitNs <= 0 ? m_waitNs : std::max<std::int64_t>(0, m_end - Now()); }

 private:
  static std::int64_t Now() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  }

  std::int64_t m_waitNs;
  std::int64_t m_end;
};

}  // namespace

MessagePtr Inbox::Receive(std::int64_t waitNs, const u16* filter) {
  if (MessagePtr message = TakePostponed(filter)) {
    return message;
  }
  const Deadline deadline(waitNs);
  do {
    std::size_t size = 0;
    const Queue::Wait end = m_queue->Receive(deadline.Rest(), size);
    if (end == Queue::Wait::Ended) {
      break;
    }
    MessagePtr message = end == Queue::Wait::Arrived ? TakeArrived(size) : nullptr;
    if (!message) {
      continue;
    }
    if (Matches(*message, filter)) {
      return message;
    }
    Postpone(std::move(message));
  } while (m_registrations.HasTask(m_eu));
  return nullptr;
}

MessagePtr Inbox::TakePostponed(const u16* filter) {
  for (auto place = m_postponed.begin(); place != m_postponed.end();) {
    if (!Matches(**place, filter)) {
      ++place;
      continue;
    }
    MessagePtr message = std::move(*place);
    place = m_postponed.erase(place);
    if (IsExpected(*message)) {
      return message;
    }
  }
  return nullptr;
}

MessagePtr Inbox::TakeArrived(std::size_t size) {
  if (!IsMessage(m_queue->Buffer(), size)) {
    Count(EAaSysComCounter_Malformed);
    return nullptr;
  }
  MessagePtr message = MessageFromWire(m_queue->Buffer());
  return message && IsExpected(*message) ? std::move(message) : nullptr;
}

bool Inbox::IsExpected(const Message& message) {
  const bool expected = m_registrations.Expects(m_eu, message.header.receiver, message.header.stamp);
  if (!expected) {
    Count(EAaSysComCounter_Unexpected);
  }
  return expected;
}

void Inbox::Postpone(MessagePtr message) {
  if (m_postponed.size() >= kMostPostponed) {
    m_losses.Lost(EAaSysComCounter_QueueFull, 1, "too many messages wait behind a selective receive");
    return;
  }
  m_postponed.push_back(std::move(message));
}

}  // namespace hwapi::qis
