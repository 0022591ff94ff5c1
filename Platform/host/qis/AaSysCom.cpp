// Creating, sending and receiving messages.
#include "AaSysCom.h"

#include "Clock.h"
#include "Export.h"
#include "Message.h"
#include "Routes.h"
#include "Tasks.h"

using hwapi::qis::Message;
using hwapi::qis::MessagePtr;

namespace {

Message* Of(void* msg) { return static_cast<Message*>(msg); }

/// Takes the message out of the caller's hand.
MessagePtr Take(void** msg) {
  return MessagePtr(msg != nullptr ? static_cast<Message*>(std::exchange(*msg, nullptr)) : nullptr);
}

}  // namespace

namespace hwapi::qis {

void Deliver(Message& message) {
  if (const auto task = Tasks::Own().Find(message.header.receiver)) {
    task->Send(message);
  } else {
    Routes::Own().To(message.header.receiver)->Send(message);
  }
}

}  // namespace hwapi::qis

QIS_EXPORT void* AaSysComMsgCreate(u32 msgId, u32 size, TAaSysComSicad receiver) {
  return hwapi::qis::CreateMessage(msgId, size, receiver).release();
}

QIS_EXPORT void* AaSysComMsgCreateReply(u32 msgId, u32 size, void* request) {
  if (request == nullptr) {
    return nullptr;
  }
  MessagePtr reply = hwapi::qis::CreateMessage(msgId, size, Of(request)->header.sender);
  if (reply) {
    reply->header.sender = Of(request)->header.receiver;
  }
  return reply.release();
}

QIS_EXPORT void* AaSysComMsgGetPayload(void* msg) {
  return AaSysComMsgGetPayloadSize(msg) != 0 ? Of(msg)->Payload() : nullptr;
}

QIS_EXPORT u32 AaSysComMsgGetPayloadSize(void* msg) { return msg != nullptr ? Of(msg)->header.size : 0; }

QIS_EXPORT u32 AaSysComMsgGetId(void* msg) { return msg != nullptr ? Of(msg)->header.id : 0; }

QIS_EXPORT TAaSysComSicad AaSysComMsgGetSender(void* msg) { return msg != nullptr ? Of(msg)->header.sender : 0; }

QIS_EXPORT TAaSysComSicad AaSysComMsgGetReceiver(void* msg) { return msg != nullptr ? Of(msg)->header.receiver : 0; }

QIS_EXPORT void AaSysComMsgSetSender(void* msg, TAaSysComSicad sender) {
  if (msg != nullptr) {
    Of(msg)->header.sender = sender;
  }
}

QIS_EXPORT void AaSysComMsgSend(void** msg) {
  const MessagePtr message = Take(msg);
  if (!message) {
    return;
  }
  if (message->header.sender == 0) {
    message->header.sender = hwapi::qis::Tasks::Own().FirstTaskOf(AaProEuCurrent());
  }
  hwapi::qis::Deliver(*message);
}

QIS_EXPORT void AaSysComMsgSendS(void** msg, TAaSysComSicad sender) {
  if (msg != nullptr) {
    AaSysComMsgSetSender(*msg, sender);
  }
  AaSysComMsgSend(msg);
}

QIS_EXPORT void AaSysComMsgDestroy(void** msg) { Take(msg); }

QIS_EXPORT void* AaSysComMsgReceive(u32 timeoutUs, const u16* filter) {
  const TAaProEuId eu = AaProEuCurrent();
  hwapi::qis::Inbox* const inbox = hwapi::qis::Tasks::Own().InboxOf(eu);
  if (inbox == nullptr) {
    return nullptr;
  }
  const std::int64_t waitNs =
      timeoutUs == AASYSCOM_NO_TIMEOUT ? -1 : hwapi::qis::Clock::Own().RealNsOf(std::uint64_t{timeoutUs});
  return inbox->Receive(waitNs, filter).release();
}

QIS_EXPORT TBoolean AaSysComIsHostAndMsgEndianSame(void* msg) {
  return msg == nullptr || Of(msg)->header.order == hwapi::qis::kHostOrderMark ? GLO_TRUE : GLO_FALSE;
}

QIS_EXPORT void AaSysComMsgSetEndianSame(void* msg, TBoolean same) {
  if (msg != nullptr) {
    Of(msg)->header.order = same != GLO_FALSE ? hwapi::qis::kHostOrderMark : hwapi::qis::kOtherOrderMark;
  }
}

QIS_EXPORT u32 AaSysComCounterGet(EAaSysComCounter counter) { return hwapi::qis::CounterValue(counter); }
