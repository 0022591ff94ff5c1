#include "Tasks.h"

#include "AaSysLog.h"
#include "EndpointTags.h"

#include <sys/random.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace hwapi::qis {
namespace {

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
  m_acceptor = std::make_shared<Acceptor>(m_name.Listener(), m_inbox, m_sicad, m_stamp);
  return m_acceptor->Open();
}

void Task::Close() {
  m_acceptor->Close();
  m_name.Release();
}

void Task::Send(MessagePtr message, WhenFull whenFull) {
  if (message->header.stamp != 0 && message->header.stamp != m_stamp) {
    Count(EAaSysComCounter_Unexpected);  // an answer to a registration that ended
    return;
  }
  message->header.stamp = m_stamp;
  const std::lock_guard lock(m_mutex);
  if (m_inbox->Post(std::move(message), whenFull)) {
    m_losses.Delivered();
  } else {
    m_losses.Lost(EAaSysComCounter_QueueFull, 1, "its queue is full, it does not read");
  }
}

/// Another process, and the next one of the same number, begins with other stamps and other free tasks: what is still
/// on its way to this one does not reach them.
Tasks::Tasks() : m_lastStamp(0), m_nextFree(static_cast<u32>(::getpid())) {
  if (::getrandom(&m_lastStamp, sizeof m_lastStamp, GRND_NONBLOCK) != sizeof m_lastStamp) {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    m_lastStamp = static_cast<u32>(now.tv_nsec) * 2654435761U ^ static_cast<u32>(::getpid()) << 16;
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
  std::shared_ptr<Inbox> inbox;  // ends after the lock
  const std::lock_guard lock(m_mutex);
  if (const auto ended = m_eus.extract(eu)) {
    inbox = ended.mapped().inbox;
  }
  if (inbox) {
    inbox->Retire();
  }
}

u32 Tasks::Register(u32 task, TAaProEuId eu) {
  if (task > kLastTask) {
    return 0;
  }
  if (task == 0) {
    return RegisterFree(eu);
  }
  const TAaSysComSicad sicad = AaSysComSicadGet(task, AaSysComGetOwnNid());
  pid_t holder = 0;
  const int error = Claim(sicad, eu, holder);
  if (error != 0 && error != ESRCH) {
    TellRefusal(sicad, error, holder);
  }
  return error == 0 ? task : 0;
}

/// Goes round through the numbers: one that was given back rests as long as possible before it is taken again.
u32 Tasks::RegisterFree(TAaProEuId eu) {
  for (u32 i = 0; i < kFreeTasks; ++i) {
    u32 next = 0;
    {
      const std::lock_guard lock(m_mutex);
      next = m_nextFree++;
    }
    const u32 task = kFirstFreeTask + next % kFreeTasks;
    const TAaSysComSicad sicad = AaSysComSicadGet(task, AaSysComGetOwnNid());
    pid_t holder = 0;
    const int error = Claim(sicad, eu, holder);
    if (error == 0) {
      return task;
    }
    if (error != EBUSY) {
      if (error != ESRCH) {
        TellRefusal(sicad, error, holder);
      }
      break;
    }
  }
  return 0;
}

/// The name is claimed without the lock: it takes several system calls, for which nobody else's messages wait.
/// @return 0, ESRCH when there is no such execution unit, else an errno value
int Tasks::Claim(TAaSysComSicad sicad, TAaProEuId eu, pid_t& holder) {
  TaskName name;
  int error = name.Claim(sicad);
  if (error != 0) {
    holder = name.Holder();
    return error;
  }
  error = Add(sicad, eu, name);
  if (error != 0) {
    name.Release();
  }
  return error;
}

int Tasks::Add(TAaSysComSicad sicad, TAaProEuId eu, TaskName& name) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_eus.find(eu);
  if (found == m_eus.end()) {
    return ESRCH;
  }
  EuRecord& record = found->second;
  if (!record.inbox) {
    record.inbox = Inbox::Create(eu, *this);
    if (!record.inbox) {
      return errno;
    }
  }
  m_lastStamp += m_lastStamp == UINT32_MAX ? 2 : 1;  // 0 is none
  const auto task = std::make_shared<Task>(sicad, eu, m_lastStamp, record.inbox, std::move(name));
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
  EndpointGivenBack(removed->Sicad());
  removed->Close();
  if (removed->Eu() != AaProEuCurrent()) {
    removed->GetInbox().Wake();  // a receive of an execution unit without a task ends
  }
}

Tasks::Ends Tasks::Find(TAaSysComSicad receiver, TAaSysComSicad sender) {
  const std::lock_guard lock(m_mutex);
  Ends ends;
  if (const auto found = m_tasks.find(receiver); found != m_tasks.end()) {
    ends.receiver = found->second;
  }
  if (const auto found = m_tasks.find(sender); found != m_tasks.end()) {
    ends.senderStamp = found->second->Stamp();
  }
  return ends;
}

TAaSysComSicad Tasks::FirstTaskOf(TAaProEuId eu) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_eus.find(eu);
  return found != m_eus.end() && !found->second.tasks.empty() ? found->second.tasks.front() : 0;
}

std::shared_ptr<Inbox> Tasks::InboxOf(TAaProEuId eu) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_eus.find(eu);
  return found != m_eus.end() && !found->second.tasks.empty() ? found->second.inbox : nullptr;
}

bool Tasks::Expects(TAaProEuId eu, TAaSysComSicad receiver, u32 stamp) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_tasks.find(receiver);
  return found != m_tasks.end() && found->second->Eu() == eu && found->second->Stamp() == stamp;
}

bool Tasks::HasTask(TAaProEuId eu) { return FirstTaskOf(eu) != 0; }

}  // namespace hwapi::qis
