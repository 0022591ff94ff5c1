/// @file
/// Messages in a row, linked through their own memory: no allocation per message.
#pragma once

#include "Message.h"

namespace hwapi::qis {

/// @return whether a message passes the filter of a selective receive: a count, then ids; null passes all
bool Passes(const Message& message, const u16* filter);

/// First in, first out. Not synchronised.
class MessageList {
 public:
  MessageList() = default;
  MessageList(const MessageList&) = delete;
  MessageList& operator=(const MessageList&) = delete;
  ~MessageList();

  void Append(MessagePtr message);
  /// @return the first message that passes the filter; null when there is none
  MessagePtr Take(const u16* filter);

  bool IsEmpty() const { return m_first == nullptr; }

 private:
  static Message* Next(const Message* message);

  Message* m_first = nullptr;
  Message* m_last = nullptr;
};

}  // namespace hwapi::qis
