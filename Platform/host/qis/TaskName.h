/// @file
/// How a task is announced to the other processes of the board: by the socket BBCC-TTTT (board, cpu, task in
/// hexadecimal) in the folder "com" of the run directory.
#pragma once

#include "AaSysCom.h"
#include "NamedSocket.h"

namespace hwapi::qis {

/// The announcement of a task by this process.
class TaskName {
 public:
  /// As NamedSocket::Claim.
  int Claim(TAaSysComSicad sicad);
  /// As NamedSocket::Release.
  void Release() { m_socket.Release(); }

  /// Socket at which senders knock.
  int Listener() const { return m_socket.Listener(); }
  /// As NamedSocket::Holder.
  pid_t Holder() const { return m_socket.Holder(); }

 private:
  NamedSocket m_socket;
};

/// Connects to the process that serves a task, without waiting.
/// @return the connection; none with errno set (ENOENT, ECONNREFUSED: nobody serves it)
Fd ConnectToTask(TAaSysComSicad sicad);

}  // namespace hwapi::qis
