/// @file
/// The messaging users (tasks) and execution units of this process.
#pragma once

#include "Acceptor.h"
#include "Inbox.h"
#include "Message.h"
#include "TaskName.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace hwapi::qis {

/// Numbers of the tasks that get any free one, as clients do: such a task does not come back as somebody else.
inline constexpr u32 kFirstFreeTask = 0x8000;
inline constexpr u32 kLastTask = 0xFFFF;

/// A registered task.
class Task {
 public:
  Task(TAaSysComSicad sicad, TAaProEuId eu, u32 stamp, std::shared_ptr<Inbox> inbox, TaskName name)
      : m_sicad(sicad), m_eu(eu), m_stamp(stamp), m_inbox(std::move(inbox)), m_name(std::move(name)), m_losses(sicad) {}

  /// Lets senders of other processes in.
  /// @return 0, else an errno value
  int Open();
  void Close();
  /// Takes a message of this process.
  void Send(MessagePtr message, WhenFull whenFull);

  TAaSysComSicad Sicad() const { return m_sicad; }
  TAaProEuId Eu() const { return m_eu; }
  u32 Stamp() const { return m_stamp; }
  Inbox& GetInbox() const { return *m_inbox; }

 private:
  TAaSysComSicad m_sicad;
  TAaProEuId m_eu;
  u32 m_stamp;
  std::shared_ptr<Inbox> m_inbox;
  TaskName m_name;
  std::shared_ptr<Acceptor> m_acceptor;
  std::mutex m_mutex;
  LossLog m_losses;
};

/// Each registration has a stamp, which differs from those of other registrations of the board for long: what was sent
/// to a registration that ended is recognised.
class Tasks : public Registrations {
 public:
  Tasks();
  static Tasks& Own();

  /// @return a new execution unit
  TAaProEuId AddEu();
  /// Gives back the tasks of an execution unit that ends.
  void RemoveEu(TAaProEuId eu);

  /// As AaSysComUserRegister.
  u32 Register(u32 task, TAaProEuId eu);
  /// As AaSysComUserDeregister.
  void Deregister(u32 task);

  /// What is known of the two ends of a message.
  struct Ends {
    std::shared_ptr<Task> receiver;  ///< null when this process does not serve it
    u32 senderStamp = 0;             ///< 0 when this process does not serve the sender
  };
  Ends Find(TAaSysComSicad receiver, TAaSysComSicad sender);
  /// @return address of the first task registered for an execution unit, 0 when it has none
  TAaSysComSicad FirstTaskOf(TAaProEuId eu);
  /// @return the inbox of an execution unit; null when it has no task
  std::shared_ptr<Inbox> InboxOf(TAaProEuId eu);

  bool Expects(TAaProEuId eu, TAaSysComSicad receiver, u32 stamp) override;
  bool HasTask(TAaProEuId eu) override;

 private:
  struct EuRecord {
    std::shared_ptr<Inbox> inbox;
    std::vector<TAaSysComSicad> tasks;  ///< in the order of their registration
  };

  u32 RegisterFree(TAaProEuId eu);
  int Claim(TAaSysComSicad sicad, TAaProEuId eu, pid_t& holder);
  int Add(TAaSysComSicad sicad, TAaProEuId eu, TaskName& name);

  std::mutex m_mutex;
  std::map<TAaProEuId, EuRecord> m_eus;
  std::map<TAaSysComSicad, std::shared_ptr<Task>> m_tasks;
  TAaProEuId m_lastEu = 0;
  u32 m_lastStamp;
  u32 m_nextFree;  ///< number of the next task that gets any free one, counted from the first of these
};

}  // namespace hwapi::qis
