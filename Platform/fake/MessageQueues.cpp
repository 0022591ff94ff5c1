#include "MessageQueues.h"

#include "Execution.h"
#include "Internal.h"
#include "MessagePool.h"
#include "fake/Time.h"

#include <algorithm>
#include <deque>
#include <map>

namespace fake {
namespace {

using internal::Lock;

/// Messages that wait for one execution unit; one more is dropped.
constexpr std::size_t kQueueLimit = 4096;
constexpr u32 kFirstFreeTask = 0x8000;
constexpr u32 kLastTask = 0xFFFF;

struct Queued {
  TAaProEuId eu;
  Message message;
};

struct User {
  u32 task;
  TAaProEuId eu;
};

struct Hook {
  u32 id;
  std::function<void(const Message&)> action;
};

struct Queues {
  TAaSysComNid ownNid = 0x0101;
  std::vector<User> users;
  std::deque<Queued> queue;
  std::vector<Message> sent;
  std::vector<Hook> hooks;
  std::map<u32, u32> counters;
};

Queues& TheQueues() {
  static auto& queues = *new Queues;
  return queues;
}

const User* FindUser(u32 task) {
  const auto& users = TheQueues().users;
  const auto found = std::ranges::find(users, task, &User::task);
  return found == users.end() ? nullptr : &*found;
}

bool Accepts(const u16* filter, u32 id) {
  return filter == nullptr || std::find(filter + 1, filter + 1 + filter[0], id) != filter + 1 + filter[0];
}

}  // namespace

std::vector<Message> SentMessages() {
  const Lock lock;
  return TheQueues().sent;
}

std::vector<Message> SentMessages(u32 id) {
  std::vector<Message> messages = SentMessages();
  std::erase_if(messages, [&](const Message& message) { return message.id != id; });
  return messages;
}

void ClearSentMessages() {
  const Lock lock;
  TheQueues().sent.clear();
}

std::vector<Message> QueuedMessages() {
  const Lock lock;
  std::vector<Message> messages;
  for (const Queued& queued : TheQueues().queue) messages.push_back(queued.message);
  return messages;
}

void Deliver(const Message& message) {
  const Lock lock;
  const User* user = FindUser(message.receiver & kLastTask);
  TheQueues().queue.push_back({user != nullptr ? user->eu : internal::kTestEu, message});
}

void OnSent(u32 id, std::function<void(const Message& sent)> action) {
  const Lock lock;
  TheQueues().hooks.push_back({id, std::move(action)});
}

void ServeTask(u32 task) {
  const Lock lock;
  internal::RegisterTask(task, internal::CurrentEu());
}

void SetOwnNid(TAaSysComNid nid) {
  const Lock lock;
  TheQueues().ownNid = nid & kLastTask;
}

namespace internal {

u32 RegisterTask(u32 task, TAaProEuId eu) {
  if (task > kLastTask || !IsKnownEu(eu)) return 0;
  if (task == 0) {
    task = kFirstFreeTask;
    while (task <= kLastTask && FindUser(task) != nullptr) ++task;
    if (task > kLastTask) return 0;
  }
  if (FindUser(task) != nullptr) return 0;
  TheQueues().users.push_back({task, eu});
  return task;
}

void DeregisterTask(u32 task) {
  std::erase_if(TheQueues().users, [&](const User& user) { return user.task == task; });
  std::erase_if(TheQueues().queue, [&](const Queued& queued) { return (queued.message.receiver & kLastTask) == task; });
}

TAaSysComSicad FirstTaskOf(TAaProEuId eu) {
  const auto& users = TheQueues().users;
  const auto found = std::ranges::find(users, eu, &User::eu);
  return found == users.end() ? 0 : (TheQueues().ownNid << 16) | found->task;
}

TAaSysComNid OwnNid() { return TheQueues().ownNid; }

void Route(Message message) {
  Queues& queues = TheQueues();
  const User* user = message.receiver >> 16 == queues.ownNid ? FindUser(message.receiver & kLastTask) : nullptr;
  if (user == nullptr) {
    ++queues.counters[EAaSysComCounter_NoReceiver];
    return;
  }
  const auto waiting = std::ranges::count(queues.queue, user->eu, &Queued::eu);
  if (static_cast<std::size_t>(waiting) >= kQueueLimit) {
    ++queues.counters[EAaSysComCounter_QueueFull];
    return;
  }
  queues.queue.push_back({user->eu, std::move(message)});
}

std::vector<std::function<void(const Message&)>> RecordSent(const Message& message) {
  TheQueues().sent.push_back(message);
  Route(message);
  std::vector<std::function<void(const Message&)>> actions;
  for (const Hook& hook : TheQueues().hooks) {
    if (hook.id == message.id) actions.push_back(hook.action);
  }
  return actions;
}

u32 Counter(EAaSysComCounter counter) {
  const auto found = TheQueues().counters.find(counter);
  return found == TheQueues().counters.end() ? 0 : found->second;
}

std::optional<Message> Take(TAaProEuId eu, const u16* filter) {
  auto& queue = TheQueues().queue;
  const auto found = std::ranges::find_if(
      queue, [&](const Queued& queued) { return queued.eu == eu && Accepts(filter, queued.message.id); });
  if (found == queue.end()) return std::nullopt;
  Message message = std::move(found->message);
  queue.erase(found);
  return message;
}

void* Receive(u32 timeoutUs, const u16* filter, WaitingRuns waitingRuns) {
  const std::uint64_t deadline = timeoutUs == AASYSCOM_NO_TIMEOUT ? ~std::uint64_t{0} : Now() + timeoutUs;
  while (true) {
    {
      const Lock lock;
      const TAaProEuId eu = CurrentEu();
      if (std::optional<Message> message = Take(eu, filter)) return CreateEnvelope(*message);
      if (FirstTaskOf(eu) == 0) return nullptr;
    }
    if (waitingRuns == WaitingRuns::StartedThreads && RunStartedThread()) continue;
    if (PassTimeToNextEvent(deadline)) continue;
    if (timeoutUs == AASYSCOM_NO_TIMEOUT) {
      AddViolation("a receive without time-out waits for ever: nothing is queued and no timer runs");
      return nullptr;
    }
    PassTimeTo(deadline);
    return nullptr;
  }
}

void ResetQueues() { TheQueues() = Queues(); }

}  // namespace internal
}  // namespace fake
