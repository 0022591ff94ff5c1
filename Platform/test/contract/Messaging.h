/// @file
/// Messages and tasks as objects that clean up after themselves.
#pragma once

#include "AaSysCom.h"
#include "Rig.h"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace contract {

/// A message that the test holds; destroyed with this object unless it was sent.
class Held {
 public:
  explicit Held(void* handle) : msg(handle) {}
  Held(Held&& other) noexcept : msg(std::exchange(other.msg, nullptr)) {}
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { AaSysComMsgDestroy(&msg); }

  u32 Id() const { return AaSysComMsgGetId(msg); }
  TAaSysComSicad Sender() const { return AaSysComMsgGetSender(msg); }
  std::string Payload() const {
    const void* payload = AaSysComMsgGetPayload(msg);
    return payload != nullptr ? std::string(static_cast<const char*>(payload), AaSysComMsgGetPayloadSize(msg)) : "";
  }
  /// Hands the message to the platform, which may clear its handle or leave it.
  void Send() {
    void* handle = std::exchange(msg, nullptr);
    AaSysComMsgSend(&handle);
  }
  void SendS(TAaSysComSicad sender) {
    void* handle = std::exchange(msg, nullptr);
    AaSysComMsgSendS(&handle, sender);
  }

  void* msg;
};

inline Held Create(u32 id, const std::string& payload, TAaSysComSicad receiver) {
  Held message(AaSysComMsgCreate(id, static_cast<u32>(payload.size()), receiver));
  if (!payload.empty()) std::memcpy(AaSysComMsgGetPayload(message.msg), payload.data(), payload.size());
  return message;
}

inline void Send(u32 id, TAaSysComSicad receiver, const std::string& payload = "") {
  Create(id, payload, receiver).Send();
}

inline Held Receive(u32 timeoutUs = rig::kPatienceUs) { return Held(AaSysComMsgReceive(timeoutUs, nullptr)); }

/// @return the ids of what is queued for the calling thread, in order
inline std::vector<u32> ReceiveIds() {
  std::vector<u32> ids;
  for (u32 id = Receive(0).Id(); id != 0; id = Receive(0).Id()) ids.push_back(id);
  return ids;
}

/// A task of the calling thread, given back with this object.
class OwnTask {
 public:
  explicit OwnTask(u32 wanted = 0, TAaProEuId eu = AaProEuCurrent()) : task(AaSysComUserRegister(wanted, eu)) {}
  OwnTask(const OwnTask&) = delete;
  OwnTask& operator=(const OwnTask&) = delete;
  ~OwnTask() { AaSysComUserDeregister(task); }
  TAaSysComSicad Address() const { return AaSysComSicadGet(task, AaSysComGetOwnNid()); }

  const u32 task;
};

}  // namespace contract
