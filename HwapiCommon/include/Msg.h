/// @file
/// The typed envelope of a platform message.
#pragma once

#include "AaSysCom.h"

#include <cstring>
#include <type_traits>

namespace ps::hwapi::common {

/// Payload size of a new message: the low 16 bits of @p size (the platform's message size has 16 bits), or the size of
/// the payload record when @p size is 0.
constexpr u32 MsgPayloadSize(int size, std::size_t recordSize) {
  return size != 0 ? static_cast<u32>(size) & 0xFFFFu : static_cast<u32>(recordSize);
}

/// A platform message seen as one with the payload record @p Payload. A value of two pointers that owns nothing: a
/// created message is sent or destroyed by its user, a received one belongs to whoever delivered it.
/// Used by one thread at a time.
///
/// A received message may be shorter than the record: read its fields through Record(), which never leaves the payload.
template <typename Payload, u32 MsgId>
class Msg {
  static_assert(std::is_trivially_copyable_v<Payload> && std::is_standard_layout_v<Payload>);

 public:
  static constexpr u32 ID = MsgId;
  using PayloadType = Payload;

  /// Wraps a received message; null is allowed and has no payload.
  explicit Msg(void* received)
      : payload(received != nullptr ? static_cast<Payload*>(AaSysComMsgGetPayload(received)) : nullptr),
        msg(received) {}

  /// Creates a message with a zeroed payload of MsgPayloadSize(size) bytes. On failure `payload` is null.
  Msg(TAaSysComSicad receiver, int size)
      : Msg(AaSysComMsgCreate(MsgId, MsgPayloadSize(size, sizeof(Payload)), receiver)) {
    if (payload != nullptr) ClearPayload();
  }

  /// Zeroes the payload record, as far as the message holds it.
  void ClearPayload() {
    const std::size_t held = AaSysComMsgGetPayloadSize(msg);
    std::memset(static_cast<void*>(payload), 0, held < sizeof(Payload) ? held : sizeof(Payload));
  }

  /// Creates the answer, addressed to the sender of this message.
  template <typename Reply>
  Reply CreateReply(int size) const {
    return Reply(AaSysComMsgCreateReply(Reply::ID, MsgPayloadSize(size, sizeof(typename Reply::PayloadType)), msg));
  }

  Payload* operator->() const { return payload; }

  /// @return a copy of the payload record; fields beyond the payload's end are zero
  Payload Record() const {
    Payload record{};
    if (payload == nullptr) return record;
    const std::size_t held = AaSysComMsgGetPayloadSize(msg);
    std::memcpy(static_cast<void*>(&record), payload, held < sizeof(Payload) ? held : sizeof(Payload));
    return record;
  }

  TAaSysComSicad GetSender() const { return AaSysComMsgGetSender(msg); }
  void SetSender(TAaSysComSicad sender) { AaSysComMsgSetSender(msg, sender); }
  /// Hands the message to the platform.
  void Send() { AaSysComMsgSend(&msg); }

  Payload* payload;
  void* msg;
};

}  // namespace ps::hwapi::common
