/// @file
/// The messages that somebody holds. All functions are called with the platform's mutex held.
#pragma once

#include "fake/Messages.h"

#include <memory>

namespace fake::internal {

/// A message behind a handle. It outlives its use until the next Reset, so that a stale handle is known as one.
struct Envelope {
  u32 id = 0;
  u32 size = 0;
  TAaSysComSicad sender = 0;
  TAaSysComSicad receiver = 0;
  bool endianSame = true;
  std::unique_ptr<u8[]> buffer;  ///< payload and the bytes behind it
  bool stale = false;            ///< it was sent, destroyed or given to a timer: nobody may use it or its payload
};

/// @return a new message with zeroed payload; null when the size is out of range
Envelope* CreateEnvelope(u32 id, u32 size, TAaSysComSicad receiver);
/// @return a new message with the content of @p message
Envelope* CreateEnvelope(const Message& message);
/// @return the message of a handle; null for null, and, as a violation of @p function, for a stale or unknown one
Envelope* FindEnvelope(void* handle, const char* function);
/// Makes the handle stale. Checks that nobody wrote behind the payload.
/// @return the content
Message CloseEnvelope(Envelope& envelope);
/// Writes down which payloads were written after their messages had gone.
void CheckStalePayloads();
/// @return whether sent messages leave their handles as they are
bool SentHandlesAreLeft();

}  // namespace fake::internal
