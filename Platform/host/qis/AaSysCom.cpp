// Creating, sending and receiving messages.
#include "AaSysCom.h"

#include "Clock.h"
#include "Export.h"
#include "LogLimit.h"
#include "Message.h"
#include "Routes.h"
#include "Tasks.h"
#include "ThreadWatch.h"

using hwapi::qis::Message;
using hwapi::qis::MessagePtr;

namespace {

Message* Of(void* msg) { return static_cast<Message*>(msg); }

/// Takes the message out of the caller's hand.
MessagePtr Take(void** msg) {
  return MessagePtr(msg != nullptr ? static_cast<Message*>(std::exchange(*msg, nullptr)) : nullptr);
}

/// Who sent the message that the calling thread received last, and as which registration.
struct LastSender {
  TAaSysComSicad sender = 0;
  u32 stamp = 0;
};
thread_local LastSender t_lastSender;

/// Notes whose message the calling thread is going to handle, if any.
void Remember(const Message* message) {
  t_lastSender = message != nullptr ? LastSender{message->header.sender, message->header.senderStamp} : LastSender{};
  hwapi::qis::HandlingMessageFrom(t_lastSender.sender, message == nullptr || message->header.foreign == 0);
}

/// A service may come back as another registration, and then gets what is sent to it; a client does not.
bool IsOfAClient(TAaSysComSicad address) { return (address & 0xFFFFu) >= hwapi::qis::kFirstFreeTask; }

}  // namespace

namespace hwapi::qis {

void Deliver(MessagePtr message, WhenFull whenFull) {
  WireHeader& header = message->header;
  const Tasks::Ends ends = Tasks::Own().Find(header.receiver, header.sender);
  header.senderStamp = ends.senderStamp;
  if (ends.receiver) {
    ends.receiver->Send(std::move(message), whenFull);
  } else {
    Routes::Own().To(header.receiver)->Send(*message);
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
    reply->header.stamp = Of(request)->header.senderStamp;
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
  MessagePtr message = Take(msg);
  if (!message) {
    return;
  }
  hwapi::qis::WireHeader& header = message->header;
  if (header.sender == 0) {
    header.sender = hwapi::qis::Tasks::Own().FirstTaskOf(AaProEuCurrent());
  }
  if (header.stamp == 0 && header.receiver == t_lastSender.sender && IsOfAClient(header.receiver)) {
    header.stamp = t_lastSender.stamp;  // an answer, too, although it was not created as one
  }
  hwapi::qis::Deliver(std::move(message), hwapi::qis::WhenFull::Drop);
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
  const std::shared_ptr<hwapi::qis::Inbox> inbox = hwapi::qis::Tasks::Own().InboxOf(eu);
  if (!inbox) {
    return nullptr;
  }
  const std::int64_t waitNs =
      timeoutUs == AASYSCOM_NO_TIMEOUT ? -1 : hwapi::qis::Clock::Own().RealNsOf(std::uint64_t{timeoutUs});
  const hwapi::qis::Rest rest;
  MessagePtr message = inbox->Receive(waitNs, filter);
  Remember(message.get());
  return message.release();
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
