/// @file
/// Sees to it that fans are handed back as they were found, however the process ends.
#pragma once

#include "Descriptor.h"
#include "FanNote.h"

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace hwapi::ddal {

/// This process's fan guard: a process of its own (FanGuardProcess.h), forked when the first fan is about to be
/// changed. It is told of a fan before the fan is changed, and writes back what it was told when this process is gone.
/// Every operation may be called from every thread; none waits for a chip longer than its deadline.
class FanGuard {
 public:
  FanGuard(const FanGuard&) = delete;
  FanGuard& operator=(const FanGuard&) = delete;

  /// @return the process's guard, never destroyed
  static FanGuard& Own();

  /// A fan that is being changed. At the end of the process the fans are handed back when the changes that are under
  /// way are over, and nobody changes them afterwards.
  class Change {
   public:
    Change();
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change();
    /// @return whether the fan may be changed; not when the process ends
    bool Allowed() const { return m_allowed; }

   private:
    bool m_allowed;
  };

  /// Starts the guard where none runs; another one takes the place of a lost one. Waits up to 2 s, once, for another
  /// process to hand the fans back, and hands back itself what is on record of one that was killed with its guard. A
  /// failure is one line of the log.
  /// @return 0, DDAL_ERR_BUSY (another process has the fans, or this one has handed them back) or DDAL_ERR_IO
  int Start();
  /// Puts a fan, or more that is to be handed back of it, on record, and informs the running guard.
  /// @param attributes numbers that stay valid for ever
  /// @return 0, or DDAL_ERR_IO: the fan must not be changed
  int Keep(const FanNote& note, const FanDescriptors& attributes);
  /// Has the fans handed back, waits up to 2 s until they are, and refuses every change from then on. Called at the end
  /// of the process; harmless in its forked children.
  void End();

 private:
  struct Kept {
    FanNote note;
    FanDescriptors attributes;
  };

  FanGuard() = default;
  bool Lost() const;
  void Reap();
  int TakeLock();
  bool Fork();
  bool Send(const Kept& fan) const;

  std::mutex m_mutex;
  std::atomic<pid_t> m_owner{0};  ///< the process that started the guard
  pid_t m_guard = -1;
  Descriptor m_socket;  ///< nobody else has this side: its end is the end of this process
  Descriptor m_lock;
  std::vector<Kept> m_kept;
  std::chrono::milliseconds m_patience{2000};  ///< for the lock
  unsigned m_changes = 0;                      ///< under way
  std::condition_variable m_changed;
  bool m_ended = false;
};

}  // namespace hwapi::ddal
