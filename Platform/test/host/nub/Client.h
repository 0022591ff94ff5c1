/// @file
/// The other side of a service's messages: this process as a client.
#pragma once

#include "AaSysCom.h"
#include "ServiceProcess.h"

#include <cstring>
#include <optional>

/// A messaging user of the test's own.
class Client {
 public:
  Client() : m_task(AaSysComUserRegister(0, AaProEuCurrent())) {}
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() { AaSysComUserDeregister(m_task); }

  /// Sends a message of zeros to the service, an empty one unless a size is given.
  void Send(u32 msgId, u32 size = 0) const {
    void* msg = AaSysComMsgCreate(msgId, size, AaSysComSicadGet(kProbeTask, AaSysComGetOwnNid()));
    AaSysComMsgSendS(&msg, AaSysComSicadGet(m_task, AaSysComGetOwnNid()));
  }
  /// @return number in the next answer; none when there is no answer for long
  std::optional<u32> Answer() const {
    void* msg = AaSysComMsgReceive(30'000'000, nullptr);
    if (msg == nullptr || AaSysComMsgGetPayloadSize(msg) != sizeof(u32)) return std::nullopt;
    u32 value = 0;
    std::memcpy(&value, AaSysComMsgGetPayload(msg), sizeof value);
    AaSysComMsgDestroy(&msg);
    return value;
  }
  std::optional<u32> Ask(u32 msgId) const {
    Send(msgId);
    return Answer();
  }

 private:
  const u32 m_task;
};
