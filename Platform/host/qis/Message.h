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
///
/// Each registration of a task has a stamp of its own (Tasks.h). An answer carries the stamp of the registration that
/// asked: the task's number may have another owner by the time it arrives.
struct WireHeader {
  u32 order;        ///< kHostOrderMark or kOtherOrderMark: byte order of the payload
  u32 id;           ///< message id
  u32 sender;       ///< address of the sender, 0 for none
  u32 receiver;     ///< address of the receiver
  u32 size;         ///< payload bytes
  u32 stamp;        ///< registration that the message is for; 0: whoever serves the receiver's address
  u32 senderStamp;  ///< registration of the sender; 0 when it is not known
  u32 foreign;      ///< 0 on the wire; 1 in a received message that another process sent
};
static_assert(sizeof(WireHeader) == 32 && sizeof(WireHeader) % 8 == 0, "the payload is aligned for every record");

/// Largest message on the wire.
inline constexpr std::size_t kMaxWireSize = sizeof(WireHeader) + AASYSCOM_MAX_PAYLOAD;

/// A message; its payload and kSlack zero bytes follow it in memory.
struct Message {
  WireHeader header;

  u8* Payload() { return reinterpret_cast<u8*>(this + 1); }
  std::size_t WireSize() const { return sizeof(WireHeader) + header.size; }
};
static_assert(sizeof(Message) == sizeof(WireHeader));

/// Gives a message's memory back to the pool that small messages come from (MessagePool.h).
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
/// @return a copy; null when memory is short
MessagePtr CopyMessage(const Message& message);

/// What becomes of a message that finds the room of its receiver in this process full.
enum class WhenFull {
  Drop,  ///< it is dropped and counted
  Keep,  ///< it is kept all the same, and comes before others of this process: an expired timer is not lost nor late
};

/// Sends a message to the task named in its header, as AaSysComMsgSend does.
void Deliver(MessagePtr message, WhenFull whenFull);

}  // namespace hwapi::qis
