/// @file
/// Hands the troubleshooting files of this process to collectors.
#pragma once

#include "NamedSocket.h"
#include "TrblSession.h"

#include <mutex>
#include <vector>

namespace hwapi::qis {

/// Serves a socket in the folder "trbl" of the run directory, on one thread of the platform; the callbacks of the files
/// run there too, one at a time. Collectors are served in turn, request by request: one that is silent keeps nobody
/// waiting.
class TrblServer {
 public:
  static TrblServer& Own();

  /// Lets collectors in from here on. Later calls do nothing, unless an earlier one failed; a failure is told at Error.
  void Start();

 private:
  TrblServer() = default;
  int Claim();
  static void* Run(void* server);
  void ServeOnce();
  void Admit();

  std::mutex m_starting;
  bool m_started = false;
  NamedSocket m_socket;
  std::vector<TrblSession> m_sessions;  ///< of the thread; who was served longest ago is the first
};

}  // namespace hwapi::qis
