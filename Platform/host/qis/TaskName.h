/// @file
/// How a task is announced to the other processes of the board: by two files in the folder "com" of the run directory,
/// the listening socket BBCC-TTTT (board, cpu, task in hexadecimal) and BBCC-TTTT.lock, whose lock the serving process
/// holds as long as it lives.
#pragma once

#include "AaSysCom.h"
#include "Fd.h"

#include <sys/types.h>

namespace hwapi::qis {

/// The announcement of a task by this process.
class TaskName {
 public:
  /// Takes the name, also a stale one of a dead process.
  /// @return 0; EBUSY when a living process has it (Holder() tells which), else an errno value
  int Claim(TAaSysComSicad sicad);
  /// Gives the name back. The announcement goes with the process in any case.
  void Release();

  /// Socket at which senders knock.
  int Listener() const { return m_listener.Get(); }
  /// Process that has the name after a Claim that failed with EBUSY; 0 when it is not known.
  pid_t Holder() const { return m_holder; }

 private:
  int Listen();

  TAaSysComSicad m_sicad = 0;
  Fd m_lock;
  Fd m_listener;
  pid_t m_holder = 0;
};

/// Connects to the process that serves a task, without waiting.
/// @return the connection; none with errno set (ENOENT, ECONNREFUSED: nobody serves it)
Fd ConnectToTask(TAaSysComSicad sicad);

}  // namespace hwapi::qis
