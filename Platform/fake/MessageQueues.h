/// @file
/// Who serves which task, and what waits for whom. All functions are called with the platform's mutex held, but Receive
/// without it.
#pragma once

#include "fake/Messages.h"

#include <functional>
#include <optional>
#include <vector>

namespace fake::internal {

/// As AaSysComUserRegister.
u32 RegisterTask(u32 task, TAaProEuId eu);
/// As AaSysComUserDeregister.
void DeregisterTask(u32 task);
/// @return address of the first task registered for an execution unit; 0 when it has none
TAaSysComSicad FirstTaskOf(TAaProEuId eu);
TAaSysComNid OwnNid();

/// Queues a message for whoever serves its receiver, or counts why it cannot be.
void Route(Message message);
/// Writes down that a message was sent, and queues it.
/// @return the actions to run, with the mutex free
std::vector<std::function<void(const Message&)>> RecordSent(const Message& message);
u32 Counter(EAaSysComCounter counter);

/// Takes the first message that waits for an execution unit and has one of the ids of @p filter (null: any).
std::optional<Message> Take(TAaProEuId eu, const u16* filter);

/// Whether threads that were started and did not run yet are run while waiting.
enum class WaitingRuns { Nothing, StartedThreads };
/// As AaSysComMsgReceive.
void* Receive(u32 timeoutUs, const u16* filter, WaitingRuns waitingRuns);

}  // namespace fake::internal
