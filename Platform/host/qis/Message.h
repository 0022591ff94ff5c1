/// @file
/// A message in memory and on the wire: one header, directly followed by the payload.
#pragma once

#include "AaSysCom.h"

#include <cstddef>
#include <memory>

namespace hwapi::qis {

/// What the first word of a message says: that it is one, and in which byte order its payload is.
inline constexpr u32 kHostOrderMark = 0x48574D01;
inline constexpr u32 kOtherOrderMark = 0x014D5748;
/// Zero bytes behind every payload, so that a short message reads as zeros.
inline constexpr std::size_t kSlack = 64;

/// The header, in host byte order: the wire does not leave the board.
struct WireHeader {
  u32 order;     ///< kHostOrderMark or kOtherOrderMark: byte order of the payload
  u32 id;        ///< message id
  u32 sender;    ///< address of the sender, 0 for none
  u32 receiver;  ///< address of the receiver
  u32 size;      ///< payload bytes
  u32 stamp;     ///< the receiver's registration, as in Tasks.h
};
static_assert(sizeof(WireHeader) == 24 && sizeof(WireHeader) % 8 == 0, "the payload is aligned for every record");

/// Largest message on the wire.
inline constexpr std::size_t kMaxWireSize = sizeof(WireHeader) + AASYSCOM_MAX_PAYLOAD;

/// A message; its payload and kSlack zero bytes follow it in memory.
struct Message {
  WireHeader header;

  u8* Payload() { return reinterpret_cast<u8*>(this + 1); }
  std::size_t WireSize() const { return sizeof(WireHeader) + header.size; }
};
static_assert(sizeof(Message) == sizeof(WireHeader));

struct MessageDeleter {
  void operator()(Message* message) const;
};
using MessagePtr = std::unique_ptr<Message, MessageDeleter>;

/// @return a zeroed message without sender; null when the size is out of range or memory is short
MessagePtr CreateMessage(u32 id, u32 size, TAaSysComSicad receiver);
/// @return whether these bytes are one whole message
bool IsMessage(const void* bytes, std::size_t size);
/// @return the message of bytes for which IsMessage is true; null when memory is short
MessagePtr MessageFromWire(const void* bytes);

/// Sends a message to the task named in its header, as AaSysComMsgSend does; the message stays the caller's. Its
/// stamp is changed.
void Deliver(Message& message);

}  // namespace hwapi::qis
