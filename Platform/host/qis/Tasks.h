/// @file
/// The messaging users (tasks) and execution units of this process.
#pragma once

#include "Doorway.h"
#include "Inbox.h"
#include "Message.h"
#include "TaskName.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace hwapi::qis {

/// A registered task.
class Task {
 public:
  Task(TAaSysComSicad sicad, TAaProEuId eu, u32 stamp, std::shared_ptr<Queue> queue, TaskName name)
      : m_sicad(sicad), m_eu(eu), m_stamp(stamp), m_queue(std::move(queue)), m_name(std::move(name)), m_losses(sicad) {}

  /// Lets senders of other processes in.
  /// @return 0, else an errno value
  int Open();
  void Close();
  /// Puts a message of this process into the queue.
  void Send(Message& message);

  TAaSysComSicad Sicad() const { return m_sicad; }
  TAaProEuId Eu() const { return m_eu; }
  u32 Stamp() const { return m_stamp; }
  const Queue& GetQueue() const { return *m_queue; }

 private:
  TAaSysComSicad m_sicad;
  TAaProEuId m_eu;
  u32 m_stamp;
  std::shared_ptr<Queue> m_queue;
  TaskName m_name;
  std::shared_ptr<Doorway> m_doorway;
  std::mutex m_mutex;
  LossLog m_losses;
};

/// Each registration has a stamp, which messages carry: what was queued for a registration that ended is recognised.
class Tasks : public Registrations {
 public:
  static Tasks& Own();

  /// @return a new execution unit
  TAaProEuId AddEu();
  /// Gives back the tasks of an execution unit that ends.
  void RemoveEu(TAaProEuId eu);

  /// As AaSysComUserRegister.
  u32 Register(u32 task, TAaProEuId eu);
  /// As AaSysComUserDeregister.
  void Deregister(u32 task);

  /// @return the task of this process with that address; null when there is none
  std::shared_ptr<Task> Find(TAaSysComSicad sicad);
  /// @return address of the first task registered for an execution unit, 0 when it has none
  TAaSysComSicad FirstTaskOf(TAaProEuId eu);
  /// @return the inbox of an execution unit; null when it has no task. Used by that execution unit only.
  Inbox* InboxOf(TAaProEuId eu);

  bool Expects(TAaProEuId eu, TAaSysComSicad receiver, u32 stamp) override;
  bool HasTask(TAaProEuId eu) override;

 private:
  struct EuRecord {
    std::unique_ptr<Inbox> inbox;
    std::vector<TAaSysComSicad> tasks;  ///< in the order of their registration
  };

  u32 RegisterFree(TAaProEuId eu, EuRecord& record);
  int Add(TAaSysComSicad sicad, TAaProEuId eu, EuRecord& record, pid_t& holder);

  std::mutex m_mutex;
  std::map<TAaProEuId, EuRecord> m_eus;
  std::map<TAaSysComSicad, std::shared_ptr<Task>> m_tasks;
  TAaProEuId m_lastEu = 0;
  u32 m_lastStamp = 0;
};

}  // namespace hwapi::qis
