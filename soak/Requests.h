/// @file
/// What clients say to the service. Called in the process of a client.
#pragma once

#include "AaSysCom.h"
#include "messages/FanControl.h"

#include <cstring>
#include <memory>
#include <optional>
#include <type_traits>

namespace soak {

/// A message of the platform, freed with this object unless it was sent.
struct MessageDeleter {
  void operator()(void* msg) const { AaSysComMsgDestroy(&msg); }
};
using Message = std::unique_ptr<void, MessageDeleter>;

/// A client's task.
class Task {
 public:
  /// Registers any free task for the calling thread; ends the process when there is none.
  Task();
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  Task(Task&& other) noexcept;
  Task& operator=(Task&&) = delete;
  ~Task();
  TAaSysComSicad Address() const;

 private:
  u32 m_task;
};

/// Sends bytes to a service of the daemon.
/// @param sender 0: the first task of the calling thread
void SendBytes(u32 service, u32 id, const void* payload, std::size_t size, TAaSysComSicad sender = 0);

template <typename Payload>
requires std::is_trivially_copyable_v<Payload>
void SendTo(u32 service, u32 id, const Payload& payload, TAaSysComSicad sender = 0) {
  SendBytes(service, id, &payload, sizeof payload, sender);
}

/// Takes the calling thread's next message, waiting at most @p seconds of real time. @return null when none came
Message Receive(double seconds);

/// @return the payload of a message; nothing when it has another id or is too short
template <typename Payload>
std::optional<Payload> PayloadOf(const Message& message, u32 id) {
  if (!message || AaSysComMsgGetId(message.get()) != id) return std::nullopt;
  if (AaSysComMsgGetPayloadSize(message.get()) < sizeof(Payload)) return std::nullopt;
  Payload payload;
  std::memcpy(&payload, AaSysComMsgGetPayload(message.get()), sizeof payload);
  return payload;
}

/// @name Requests
///@{
/// Stops a measurement that does not run: the shortest way through the daemon that is answered.
void SendStop(TAaSysComSicad sender = 0);
/// Starts the measurement of the control board once a second of real time.
void SendStart();
/// Asks for the frequency of a fan; the answer carries the transaction.
void SendFrequency(u32 transaction, EFanUnit fan = EFanUnit_GarFan1);
/// As SendFrequency, for as many fans as 43 kB hold.
void SendLargeFrequency(u32 transaction);
/// Asks for speed reports to this thread, of which one comes every second of real time.
void SendSpeed();
/// Stores a file, which WriteSourceFile made.
void SendStoreFile(u32 transaction);
void SendStoreData(u32 transaction);
void SendUnknown(u32 id);
///@}

/// Writes the file that SendStoreFile names.
void WriteSourceFile();

}  // namespace soak
