/// @file
/// Messages that were sent, messages that arrive, and who serves which task.
///
/// The payload of every message is followed by 64 bytes that nobody may write; they are checked when the message is
/// sent or destroyed (Violations()). Under the address sanitizer even reading them is reported at once.
///
/// A message that is sent to a registered task of the own node is queued for it, as on a board. One to any other task
/// is taken as carried away: it is recorded and counted (EAaSysComCounter_NoReceiver), without a log line.
#pragma once

#include "AaSysCom.h"
#include "fake/Recorder.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <vector>

namespace fake {

/// A copy of a message.
struct Message {
  u32 id = 0;
  Bytes payload = {};
  TAaSysComSicad sender = 0;
  TAaSysComSicad receiver = 0;
  bool otherEndian = false;  ///< the payload is in the other byte order than this host's

  /// @return the payload as a record; fields beyond its end are zero
  template <typename Record>
  Record As() const {
    static_assert(std::is_trivially_copyable_v<Record>);
    Record record{};
    std::memcpy(static_cast<void*>(&record), payload.data(), std::min(payload.size(), sizeof(Record)));
    return record;
  }

  bool operator==(const Message&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Message& message);
};

/// Chooses between what the contract leaves open: a sent message's handle is cleared, or left as it is. Until then, and
/// after each Reset: cleared, unless the environment has FAKE_LEAVES_SENT_HANDLES.
void LeaveSentHandles(bool leave);

/// @return copies of all messages handed to AaSysComMsgSend and AaSysComMsgSendS, in order
std::vector<Message> SentMessages();
/// @return those with an id
std::vector<Message> SentMessages(u32 id);
/// Forgets the messages sent so far.
void ClearSentMessages();

/// @return number of messages that somebody holds: created or received, and not yet sent, destroyed or given to a timer
std::size_t LiveMessages();
/// @return copies of the messages that wait to be received, in order
std::vector<Message> QueuedMessages();

/// Lets a message arrive: queues it for the execution unit that serves its receiver, else for that of the thread that
/// called Reset (the test's). Not recorded.
void Deliver(const Message& message);

/// Runs @p action after each send of a message with that id, e.g. to deliver the answer of a neighbouring service.
void OnSent(u32 id, std::function<void(const Message& sent)> action);

/// Registers a task for the calling thread as AaSysComUserRegister does, without recording it.
void ServeTask(u32 task);
/// Sets the own node; 0x0101 until then.
void SetOwnNid(TAaSysComNid nid);

/// A received message as a handler gets it; destroyed with this object, as the receive loop does after the handler.
class ReceivedMessage {
 public:
  explicit ReceivedMessage(const Message& message);
  ReceivedMessage(const ReceivedMessage&) = delete;
  ReceivedMessage& operator=(const ReceivedMessage&) = delete;
  ~ReceivedMessage();
  /// The handle.
  operator void*() const { return m_handle; }

 private:
  void* m_handle;
};

}  // namespace fake
