#include "Message.h"

#include "MessagePool.h"

#include <cstring>

namespace hwapi::qis {
namespace {

/// @return a message whose slack is zero, header and payload undefined; null when memory is short
MessagePtr Allocate(u32 payloadSize) {
  MessagePtr message(static_cast<Message*>(AllocateBlock(sizeof(Message) + payloadSize + kSlack)));
  if (message) {
    std::memset(message->Payload() + payloadSize, 0, kSlack);
  }
  return message;
}

}  // namespace

void MessageDeleter::operator()(Message* message) const { FreeBlock(message); }

MessagePtr CreateMessage(u32 id, u32 size, TAaSysComSicad receiver) {
  if (size > AASYSCOM_MAX_PAYLOAD) {
    return nullptr;
  }
  MessagePtr message = Allocate(size);
  if (message) {
    message->header = {.order = kHostOrderMark,
                       .id = id,
                       .sender = 0,
                       .receiver = receiver,
                       .size = size,
                       .stamp = 0,
                       .senderStamp = 0,
                       .foreign = 0};
    std::memset(message->Payload(), 0, size);
  }
  return message;
}

bool IsMessage(const void* bytes, std::size_t size) {
  WireHeader header;
  if (size < sizeof header || size > kMaxWireSize) {
    return false;
  }
  std::memcpy(&header, bytes, sizeof header);
  return (header.order == kHostOrderMark || header.order == kOtherOrderMark) && header.size == size - sizeof header;
}

MessagePtr MessageFromWire(const void* bytes) {
  WireHeader header;
  std::memcpy(&header, bytes, sizeof header);
  MessagePtr message = Allocate(header.size);
  if (message) {
    std::memcpy(static_cast<void*>(message.get()), bytes, sizeof header + header.size);
  }
  return message;
}

MessagePtr CopyMessage(const Message& message) { return MessageFromWire(&message); }

}  // namespace hwapi::qis
