/// @file
/// Listening sockets in folders of the run directory, by which processes of the board find each other: the socket NAME
/// and the file NAME.lock, whose lock the listening process holds as long as it lives.
#pragma once

#include "Fd.h"
#include "RunFolder.h"

#include <sys/types.h>

#include <string>

namespace hwapi::qis {

/// A name that this process listens at.
class NamedSocket {
 public:
  /// Takes the name, also a stale one of a dead process, and listens.
  /// @param folder outlives this object
  /// @return 0; EBUSY when a living process has it (Holder() tells which), else an errno value
  int Claim(const RunFolder& folder, const std::string& name);
  /// Gives the name back. It goes with the process in any case.
  void Release();

  /// The socket; knocks are accepted without waiting.
  int Listener() const { return m_listener.Get(); }
  /// Process that has the name after a Claim that failed with EBUSY; 0 when it is not known.
  pid_t Holder() const { return m_holder; }

 private:
  int Listen();

  const RunFolder* m_folder = nullptr;
  std::string m_name;
  Fd m_lock;
  Fd m_listener;
  pid_t m_holder = 0;
};

/// @return whether a file of this name in the folder is a socket's lock
bool IsLockName(const std::string& name);

/// Connects to the process that listens at a name, without waiting.
/// @return the connection; none with errno set (ENOENT, ECONNREFUSED: nobody listens)
Fd ConnectTo(const RunFolder& folder, const std::string& name);

}  // namespace hwapi::qis
