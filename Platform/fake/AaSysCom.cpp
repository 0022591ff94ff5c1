#include "AaSysCom.h"

#include "Execution.h"
#include "Internal.h"
#include "MessagePool.h"
#include "MessageQueues.h"

#include <cerrno>
#include <functional>
#include <optional>
#include <utility>

using namespace fake;
using namespace fake::internal;

namespace {

/// The message of a handle, for a function that only looks: records the call.
struct Looked {
  Looked(const char* function, void* handle) : envelope(FindEnvelope(handle, function)) {
    failure = Record({function, envelope != nullptr ? Value(envelope->id) : Value(nullptr)});
  }
  Envelope* envelope;
  std::optional<int> failure;
};

void Send(const char* function, void** msg, std::optional<TAaSysComSicad> sender) {
  std::vector<std::function<void(const Message&)>> actions;
  Message message;
  {
    const Lock lock;
    Envelope* envelope = msg != nullptr ? FindEnvelope(*msg, function) : nullptr;
    if (msg != nullptr && !SentHandlesAreLeft()) *msg = nullptr;
    Call call = envelope != nullptr ? Call(function, envelope->id, envelope->receiver) : Call(function, nullptr);
    if (sender) call.arguments.emplace_back(*sender);
    Record(std::move(call));
    if (envelope == nullptr) return;
    if (sender) envelope->sender = *sender;
    if (envelope->sender == 0) envelope->sender = FirstTaskOf(CurrentEu());
    message = CloseEnvelope(*envelope);
    actions = RecordSent(message);
  }
  for (const auto& action : actions) action(message);
}

}  // namespace

extern "C" {

void* AaSysComMsgCreate(u32 msgId, u32 size, TAaSysComSicad receiver) {
  const Lock lock;
  if (Record({"AaSysComMsgCreate", msgId, size, receiver})) return nullptr;
  return CreateEnvelope(msgId, size, receiver);
}

void* AaSysComMsgCreateReply(u32 msgId, u32 size, void* request) {
  const Lock lock;
  Envelope* asked = FindEnvelope(request, "AaSysComMsgCreateReply");
  const Value about = asked != nullptr ? Value(asked->id) : Value(nullptr);
  if (Record({"AaSysComMsgCreateReply", msgId, size, about}) || asked == nullptr) return nullptr;
  Envelope* reply = CreateEnvelope(msgId, size, asked->sender);
  if (reply != nullptr) reply->sender = asked->receiver;
  return reply;
}

void* AaSysComMsgGetPayload(void* msg) {
  const Lock lock;
  const Looked looked("AaSysComMsgGetPayload", msg);
  if (looked.failure || looked.envelope == nullptr || looked.envelope->size == 0) return nullptr;
  return looked.envelope->buffer.get();
}

u32 AaSysComMsgGetPayloadSize(void* msg) {
  const Lock lock;
  const Looked looked("AaSysComMsgGetPayloadSize", msg);
  if (looked.failure) return static_cast<u32>(*looked.failure);
  return looked.envelope != nullptr ? looked.envelope->size : 0;
}

u32 AaSysComMsgGetId(void* msg) {
  const Lock lock;
  const Looked looked("AaSysComMsgGetId", msg);
  return looked.envelope != nullptr ? looked.envelope->id : 0;
}

TAaSysComSicad AaSysComMsgGetSender(void* msg) {
  const Lock lock;
  const Looked looked("AaSysComMsgGetSender", msg);
  if (looked.failure) return static_cast<u32>(*looked.failure);
  return looked.envelope != nullptr ? looked.envelope->sender : 0;
}

TAaSysComSicad AaSysComMsgGetReceiver(void* msg) {
  const Lock lock;
  const Looked looked("AaSysComMsgGetReceiver", msg);
  return looked.envelope != nullptr ? looked.envelope->receiver : 0;
}

void AaSysComMsgSetSender(void* msg, TAaSysComSicad sender) {
  const Lock lock;
  Envelope* envelope = FindEnvelope(msg, "AaSysComMsgSetSender");
  Record({"AaSysComMsgSetSender", envelope != nullptr ? Value(envelope->id) : Value(nullptr), sender});
  if (envelope != nullptr) envelope->sender = sender;
}

void AaSysComMsgSend(void** msg) { Send("AaSysComMsgSend", msg, std::nullopt); }

void AaSysComMsgSendS(void** msg, TAaSysComSicad sender) { Send("AaSysComMsgSendS", msg, sender); }

void AaSysComMsgDestroy(void** msg) {
  const Lock lock;
  const Looked looked("AaSysComMsgDestroy", msg != nullptr ? *msg : nullptr);
  if (msg != nullptr) *msg = nullptr;
  if (looked.envelope != nullptr) CloseEnvelope(*looked.envelope);
}

void* AaSysComMsgReceive(u32 timeoutUs, const u16* filter) {
  Call call("AaSysComMsgReceive", timeoutUs);
  for (u32 i = 1; filter != nullptr && i <= filter[0]; ++i) call.arguments.emplace_back(filter[i]);
  if (Record(std::move(call))) return nullptr;
  return Receive(timeoutUs, filter, WaitingRuns::StartedThreads);
}

TBoolean AaSysComIsHostAndMsgEndianSame(void* msg) {
  const Lock lock;
  const Looked looked("AaSysComIsHostAndMsgEndianSame", msg);
  return looked.envelope == nullptr || looked.envelope->endianSame ? GLO_TRUE : GLO_FALSE;
}

void AaSysComMsgSetEndianSame(void* msg, TBoolean same) {
  const Lock lock;
  Envelope* envelope = FindEnvelope(msg, "AaSysComMsgSetEndianSame");
  Record({"AaSysComMsgSetEndianSame", envelope != nullptr ? Value(envelope->id) : Value(nullptr), same});
  if (envelope != nullptr) envelope->endianSame = same != GLO_FALSE;
}

u16 AaSysComEnd16Swap(u16 value) {
  Record({"AaSysComEnd16Swap", value});
  return static_cast<u16>((value >> 8) | (value << 8));
}

u32 AaSysComEnd32Swap(u32 value) {
  Record({"AaSysComEnd32Swap", value});
  return (value >> 24) | ((value >> 8) & 0xFF00u) | ((value << 8) & 0xFF0000u) | (value << 24);
}

TAaSysComNid AaSysComGetOwnNid(void) {
  const Lock lock;
  Record({"AaSysComGetOwnNid"});
  return OwnNid();
}

TAaSysComSicad AaSysComSicadGet(u32 task, TAaSysComNid nid) {
  Record({"AaSysComSicadGet", task, nid});
  return (nid << 16) | (task & 0xFFFFu);
}

u8 AaSysComNmapGetBoard(TAaSysComSicad sicad) {
  Record({"AaSysComNmapGetBoard", sicad});
  return static_cast<u8>(sicad >> 24);
}

u8 AaSysComNmapGetCpu(TAaSysComSicad sicad) {
  Record({"AaSysComNmapGetCpu", sicad});
  return static_cast<u8>(sicad >> 16);
}

TAaSysComSicad AaSysComNmapGetSicad(u8 board, u8 cpu, u16 task) {
  Record({"AaSysComNmapGetSicad", board, cpu, task});
  return (static_cast<u32>(board) << 24) | (static_cast<u32>(cpu) << 16) | task;
}

u32 AaSysComUserRegister(u32 task, TAaProEuId eu) {
  const Lock lock;
  if (const auto failure = Record({"AaSysComUserRegister", task, eu})) return static_cast<u32>(*failure);
  return RegisterTask(task, eu);
}

i32 AaSysComUserDeregister(u32 task) {
  const Lock lock;
  if (const auto failure = Record({"AaSysComUserDeregister", task})) return *failure;
  DeregisterTask(task);
  return 0;
}

i32 AaSysComEuCreateAndStart(TAaProEuId* eu, const char* name, void* (*entry)(void*), u32 stackSize, u32 priority,
                             const void* argument, u32 argumentSize) {
  Call call("AaSysComEuCreateAndStart", name, stackSize, priority);
  const auto* bytes = static_cast<const u8*>(argument);
  call.arguments.emplace_back(bytes != nullptr ? Value(Bytes(bytes, bytes + argumentSize)) : Value(nullptr));
  if (const auto failure = Record(std::move(call))) return *failure;
  if (eu == nullptr || name == nullptr || entry == nullptr || (argument == nullptr && argumentSize != 0)) return EINVAL;
  std::function<void()> action;
  {
    const Lock lock;
    *eu = AddThread(name, entry, stackSize, priority, argument, argumentSize);
    action = ActionOfAStart();
  }
  if (action) action();
  return 0;
}

TAaProEuId AaProEuCurrent(void) {
  const Lock lock;
  if (const auto failure = Record({"AaProEuCurrent"})) return static_cast<u32>(*failure);
  return CurrentEu();
}

u32 AaSysComCounterGet(EAaSysComCounter counter) {
  const Lock lock;
  if (const auto failure = Record({"AaSysComCounterGet", counter})) return static_cast<u32>(*failure);
  return Counter(counter);
}

}  // extern "C"
