/// @file
/// A message that is ours until it is sent.
#pragma once

#include "AaSysCom.h"

#include <utility>

namespace ps::hwapi::common {

/// Owns a message that was created or taken out of the queue: destroys it at the end of the scope unless it was sent or
/// released before. It lets go of the message before the platform gets it, so that nothing depends on whether a
/// platform clears the handle of a sent message. Used by one thread.
/// @tparam Message a Msg
template <typename Message>
class OwnedMsg : private Message {
 public:
  explicit OwnedMsg(const Message& message) : Message(message) {}
  OwnedMsg(const OwnedMsg&) = delete;
  OwnedMsg& operator=(const OwnedMsg&) = delete;
  ~OwnedMsg() {
    if (msg != nullptr) AaSysComMsgDestroy(&msg);
  }

  // Both are null once the message is no longer ours.
  using Message::msg;
  using Message::payload;
  using Message::operator->;
  using Message::Record;
  using Message::SetSender;

  /// Gives the message away, e.g. to a timer that took it. @return its handle; null when there is none
  void* Release() {
    payload = nullptr;
    return std::exchange(msg, nullptr);
  }
  /// Hands the message to the platform.
  void Send() {
    void* handle = Release();
    AaSysComMsgSend(&handle);
  }
  /// The same, with the address that the receiver will see as the sender's.
  void SendS(TAaSysComSicad sender) {
    void* handle = Release();
    AaSysComMsgSendS(&handle, sender);
  }
};

}  // namespace ps::hwapi::common
