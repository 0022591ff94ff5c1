#include "Tasks.h"

#include "AaSysLog.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace hwapi::qis {
namespace {

constexpr u32 kFirstFreeTask = 0x8000;
constexpr u32 kLastTask = 0xFFFF;
constexpr u32 kFreeTasks = kLastTask - kFirstFreeTask + 1;

void TellRefusal(TAaSysComSicad sicad, int error, pid_t holder) {
  const unsigned board = AaSysComNmapGetBoard(sicad);
  const unsigned cpu = AaSysComNmapGetCpu(sicad);
  if (error == EBUSY) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "Task 0x%04X of board %u, cpu %u is already served by process %d: end that one first",
                   sicad & 0xFFFFu, board, cpu, static_cast<int>(holder));
    return;
  }
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "Task 0x%04X of board %u, cpu %u cannot be announced in the run directory: %s", sicad & 0xFFFFu, board,
                 cpu, std::strerror(error));
}

}  // namespace

int Task::Open() {
  m_doorway = std::make_shared<Doorway>(m_name.Listener(), m_queue, m_stamp);
  return m_doorway->Open();
}

void Task::Close() {
  m_doorway->Close();
  m_name.Release();
}

void Task::Send(Message& message) {
  const std::lock_guard lock(m_mutex);
  message.header.stamp = m_stamp;
  if (SendNow(m_queue->Sender(), &message, message.WireSize()) == 0) {
    m_losses.Delivered();
  } else {
    m_losses.Lost(EAaSysComCounter_QueueFull, 1, "its queue is full, it does not read");
  }
}

Tasks& Tasks::Own() {
  static auto* const tasks = new Tasks;  // threads may send after the end of main
  return *tasks;
}

TAaProEuId Tasks::AddEu() {
  const std::lock_guard lock(m_mutex);
  m_eus.try_emplace(++m_lastEu);
  return m_lastEu;
}

void Tasks::RemoveEu(TAaProEuId eu) {
  std::vector<TAaSysComSicad> tasks;
  {
    const std::lock_guard lock(m_mutex);
    tasks = m_eus[eu].tasks;
  }
  for (const TAaSysComSicad sicad : tasks) {
    Deregister(sicad & 0xFFFFu);
  }
  const std::lock_guard lock(m_mutex);
  m_eus.erase(eu);
}

u32 Tasks::Register(u32 task, TAaProEuId eu) {
  const std::lock_guard lock(m_mutex);
  const auto record = m_eus.find(eu);
  if (task > kLastTask || record == m_eus.end()) {
    return 0;
  }
  if (task == 0) {
    return RegisterFree(eu, record->second);
  }
  const TAaSysComSicad sicad = AaSysComSicadGet(task, AaSysComGetOwnNid());
  pid_t holder = 0;
  const int error = Add(sicad, eu, record->second, holder);
  if (error != 0) {
    TellRefusal(sicad, error, holder);
  }
  return error == 0 ? task : 0;
}

/// Each process begins at a number of its own: what is still on its way to a process that ended does not reach the
/// next.
u32 Tasks::RegisterFree(TAaProEuId eu, EuRecord& record) {
  const auto first = static_cast<u32>(::getpid());
  for (u32 i = 0; i < kFreeTasks; ++i) {
    const u32 task = kFirstFreeTask + (first + i) % kFreeTasks;
    const TAaSysComSicad sicad = AaSysComSicadGet(task, AaSysComGetOwnNid());
    pid_t holder = 0;
    const int error = Add(sicad, eu, record, holder);
    if (error == 0) {
      return task;
    }
    if (error != EBUSY) {
      TellRefusal(sicad, error, holder);
      break;
    }
  }
  return 0;
}

int Tasks::Add(TAaSysComSicad sicad, TAaProEuId eu, EuRecord& record, pid_t& holder) {
  TaskName name;
  if (const int error = name.Claim(sicad); error != 0) {
    holder = name.Holder();
    return error;
  }
  if (!record.inbox) {
    std::shared_ptr<Queue> queue = Queue::Create();
    if (!queue) {
      const int error = errno;
      name.Release();
      return error;
    }
    record.inbox = std::make_unique<Inbox>(eu, std::move(queue), *this);
  }
  const auto task = std::make_shared<Task>(sicad, eu, ++m_lastStamp, record.inbox->GetQueue(), std::move(name));
  if (const int error = task->Open(); error != 0) {
    task->Close();
    return error;
  }
  record.tasks.push_back(sicad);
  m_tasks[sicad] = task;
  return 0;
}

void Tasks::Deregister(u32 task) {
  std::shared_ptr<Task> removed;
  {
    const std::lock_guard lock(m_mutex);
    auto found = m_tasks.extract(AaSysComSicadGet(task, AaSysComGetOwnNid()));
    if (task == 0 || task > kLastTask || !found) {
      return;
    }
    removed = std::move(found.mapped());
    std::erase(m_eus[removed->Eu()].tasks, removed->Sicad());
  }
  removed->Close();
  if (removed->Eu() != AaProEuCurrent()) {
    removed->GetQueue().Wake();  // a receive of an execution unit without a task ends
  }
}

std::shared_ptr<Task> Tasks::Find(TAaSysComSicad sicad) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_tasks.find(sicad);
  return found != m_tasks.end() ? found->second : nullptr;
}

TAaSysComSicad Tasks::FirstTaskOf(TAaProEuId eu) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_eus.find(eu);
  return found != m_eus.end() && !found->second.tasks.empty() ? found->second.tasks.front() : 0;
}

Inbox* Tasks::InboxOf(TAaProEuId eu) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_eus.find(eu);
  return found != m_eus.end() && !found->second.tasks.empty() ? found->second.inbox.get() : nullptr;
}

bool Tasks::Expects(TAaProEuId eu, TAaSysComSicad receiver, u32 stamp) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_tasks.find(receiver);
  return found != m_tasks.end() && found->second->Eu() == eu && found->second->Stamp() == stamp;
}

bool Tasks::HasTask(TAaProEuId eu) { return FirstTaskOf(eu) != 0; }

}  // namespace hwapi::qis
