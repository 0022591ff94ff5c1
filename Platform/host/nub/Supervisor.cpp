#include "Supervisor.h"

#include "AaSysLog.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace hwapi::nub {

Supervisor::~Supervisor() {
  if (m_socket >= 0) close(m_socket);
}

void Supervisor::Ready() {
  Connect();
  Tell("READY=1");
}

void Supervisor::Stopping() {
  Tell("STOPPING=1");
  if (m_socket >= 0) close(m_socket);
  m_socket = -1;
}

void Supervisor::Alive() { Tell("WATCHDOG=1"); }

u32 Supervisor::AlivePeriodUs() {
  const char* pid = std::getenv("WATCHDOG_PID");
  const char* interval = std::getenv("WATCHDOG_USEC");
  if (interval == nullptr || (pid != nullptr && std::strtol(pid, nullptr, 10) != getpid())) return 0;
  return static_cast<u32>(std::min<unsigned long long>(std::strtoull(interval, nullptr, 10) / 2, UINT32_MAX));
}

/// A path, or a name of the kernel's abstract ones, written with '@' for their leading zero byte.
void Supervisor::Connect() {
  const char* name = std::getenv("NOTIFY_SOCKET");
  if (name == nullptr || m_socket >= 0) return;
  const std::string_view path(name);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() < 2 || path.size() >= sizeof address.sun_path || (path[0] != '/' && path[0] != '@')) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, m_printFeature,
                   "NOTIFY_SOCKET \"%s\" is neither a path nor a @name; the supervisor is not told", name);
    return;
  }
  path.copy(address.sun_path, path.size());
  if (path[0] == '@') address.sun_path[0] = '\0';
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (m_socket >= 0 && connect(m_socket, reinterpret_cast<const sockaddr*>(&address), size) == 0) return;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, m_printFeature, "The supervisor at %s is not reached: %s", name,
                 std::strerror(errno));
  if (m_socket >= 0) close(m_socket);
  m_socket = -1;
}

/// Never blocks: a supervisor that does not listen must not stop the service.
void Supervisor::Tell(const char* state) {
  if (m_socket < 0 || send(m_socket, state, std::strlen(state), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) return;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, m_printFeature, "The supervisor is not told %s: %s", state,
                 std::strerror(errno));
}

}  // namespace hwapi::nub
