#include "MessagePool.h"

#include "Internal.h"
#include "fake/AddressSanitizer.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <unordered_map>

#if defined(FAKE_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(address)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(address)
#endif

namespace fake {
namespace {

/// Bytes behind the payload that nobody may write.
constexpr u32 kSlack = 64;
/// Fills payloads that nobody may write any more.
constexpr u8 kStale = 0xDD;

struct Pool {
  std::unordered_map<const void*, std::unique_ptr<internal::Envelope>> envelopes;
  std::size_t live = 0;
  bool leavesSentHandles = std::getenv("FAKE_LEAVES_SENT_HANDLES") != nullptr;
};

Pool& ThePool() {
  static auto& pool = *new Pool;
  return pool;
}

void CheckSlack(const internal::Envelope& envelope) {
  ASAN_UNPOISON_MEMORY_REGION(envelope.buffer.get() + envelope.size, kSlack);
  for (u32 offset = 0; offset < kSlack; ++offset) {
    if (envelope.buffer[envelope.size + offset] == 0) continue;
    std::ostringstream text;
    text << "message 0x" << std::hex << envelope.id << std::dec << ": byte " << offset << " behind its payload of "
         << envelope.size << " bytes was written";
    internal::AddViolation(text.str());
    return;
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Message& message) {
  const std::ios_base::fmtflags flags = out.flags();
  out << std::hex << "message 0x" << message.id << " from 0x" << message.sender << " to 0x" << message.receiver << ' ';
  out.flags(flags);
  return out << Value(message.payload) << (message.otherEndian ? " in the other byte order" : "");
}

std::size_t LiveMessages() {
  const internal::Lock lock;
  return ThePool().live;
}

void LeaveSentHandles(bool leave) {
  const internal::Lock lock;
  ThePool().leavesSentHandles = leave;
}

ReceivedMessage::ReceivedMessage(const Message& message) {
  const internal::Lock lock;
  m_handle = internal::CreateEnvelope(message);
}

ReceivedMessage::~ReceivedMessage() {
  const internal::Lock lock;
  if (internal::Envelope* envelope = internal::FindEnvelope(m_handle, "the receive loop"); envelope != nullptr) {
    internal::CloseEnvelope(*envelope);
  }
}

namespace internal {

Envelope* CreateEnvelope(u32 id, u32 size, TAaSysComSicad receiver) {
  if (size > AASYSCOM_MAX_PAYLOAD) return nullptr;
  auto envelope = std::make_unique<Envelope>();
  envelope->id = id;
  envelope->size = size;
  envelope->receiver = receiver;
  envelope->buffer = std::make_unique<u8[]>(size + kSlack);
  ASAN_POISON_MEMORY_REGION(envelope->buffer.get() + size, kSlack);
  Envelope* handle = envelope.get();
  ThePool().envelopes.emplace(handle, std::move(envelope));
  ++ThePool().live;
  return handle;
}

Envelope* CreateEnvelope(const Message& message) {
  Envelope* envelope = CreateEnvelope(message.id, static_cast<u32>(message.payload.size()), message.receiver);
  if (envelope == nullptr) return nullptr;
  envelope->sender = message.sender;
  envelope->endianSame = !message.otherEndian;
  std::copy(message.payload.begin(), message.payload.end(), envelope->buffer.get());
  return envelope;
}

Envelope* FindEnvelope(void* handle, const char* function) {
  if (handle == nullptr) return nullptr;
  const auto found = ThePool().envelopes.find(handle);
  if (found == ThePool().envelopes.end()) {
    AddViolation(std::string(function) + " with a handle that is no message");
    return nullptr;
  }
  if (found->second->stale) {
    std::ostringstream text;
    text << function << " with message 0x" << std::hex << found->second->id << " after it was sent or destroyed";
    AddViolation(text.str());
    return nullptr;
  }
  return found->second.get();
}

Message CloseEnvelope(Envelope& envelope) {
  CheckSlack(envelope);
  Message message{.id = envelope.id,
                  .payload = Bytes(envelope.buffer.get(), envelope.buffer.get() + envelope.size),
                  .sender = envelope.sender,
                  .receiver = envelope.receiver,
                  .otherEndian = !envelope.endianSame};
  std::fill_n(envelope.buffer.get(), envelope.size, kStale);
  ASAN_POISON_MEMORY_REGION(envelope.buffer.get(), envelope.size + kSlack);
  envelope.stale = true;
  --ThePool().live;
  return message;
}

void CheckStalePayloads() {
  for (const auto& [handle, envelope] : ThePool().envelopes) {
    if (!envelope->stale) continue;
    u8* const payload = envelope->buffer.get();
    ASAN_UNPOISON_MEMORY_REGION(payload, envelope->size);
    if (std::any_of(payload, payload + envelope->size, [](u8 byte) { return byte != kStale; })) {
      std::ostringstream text;
      text << "message 0x" << std::hex << envelope->id << ": its payload was written after it was sent or destroyed";
      AddViolation(text.str());
      std::fill_n(payload, envelope->size, kStale);
    }
    ASAN_POISON_MEMORY_REGION(payload, envelope->size);
  }
}

bool SentHandlesAreLeft() { return ThePool().leavesSentHandles; }

void ResetMessages() {
  for (auto& [handle, envelope] : ThePool().envelopes) {
    ASAN_UNPOISON_MEMORY_REGION(envelope->buffer.get(), envelope->size + kSlack);
  }
  ThePool() = Pool();
}

}  // namespace internal
}  // namespace fake
