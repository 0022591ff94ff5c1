#include "Message.h"

#include <cstdlib>
#include <cstring>

namespace hwapi::qis {

void MessageDeleter::operator()(Message* message) const { std::free(message); }

MessagePtr CreateMessage(u32 id, u32 size, TAaSysComSicad receiver) {
  if (size > AASYSCOM_MAX_PAYLOAD) {
    return nullptr;
  }
  MessagePtr message(static_cast<Message*>(std::calloc(1, sizeof(Message) + size + kSlack)));
  if (message) {
    message->header = {.order = kHostOrderMark, .id = id, .sender = 0, .receiver = receiver, .size = size, .stamp = 0};
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
  const std::size_t wireSize = sizeof header + header.size;
  MessagePtr message(static_cast<Message*>(std::malloc(wireSize + kSlack)));
  if (message) {
    std::memcpy(static_cast<void*>(message.get()), bytes, wireSize);
    std::memset(message->Payload() + header.size, 0, kSlack);
  }
  return message;
}

}  // namespace hwapi::qis
