#include "FanGuard.h"

#include "AaSysLog.h"
#include "BoardDescription.h"
#include "FanGuardProcess.h"
#include "FanRestore.h"
#include "ddal_error.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <utility>

namespace hwapi::ddal {
namespace {

constexpr u32 kDriverFeature = 2;  // id of the drivers' own log lines
constexpr int kHandBackMs = 2000;
/// For changes that are under way at the end of the process: longer than most chips may take for one.
constexpr std::chrono::milliseconds kChangesEnd{500};

int Refuse(const char* what, const char* why) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kDriverFeature,
                 "No fan is changed, as it could not be handed back: %s: %s", what, why);
  return DDAL_ERR_IO;
}

/// Waits until the other side of a socket is gone. @return whether it is
bool WaitForEnd(int socket, int timeoutMs) {
  pollfd other{.fd = socket, .events = 0, .revents = 0};
  int ready = 0;
  do {
    ready = poll(&other, 1, timeoutMs);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

/// The end of the process, or of the library in it.
__attribute__((destructor)) void HandFansBack() { FanGuard::Own().End(); }

}  // namespace

FanGuard& FanGuard::Own() {
  static FanGuard* const own = new FanGuard;
  return *own;
}

bool FanGuard::Lost() const { return WaitForEnd(m_socket.Get(), 0); }

void FanGuard::Reap() {
  m_socket = Descriptor();
  while (waitpid(m_guard, nullptr, 0) < 0 && errno == EINTR) {
  }
  m_guard = -1;
}

int FanGuard::TakeLock() {
  if (m_lock.Open()) return DDAL_OK;
  std::string why;
  m_lock = LockFans(m_patience, &why);
  if (m_lock.Open()) {
    RestoreFans([](const std::string& line) {
      AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, kDriverFeature, "On record: %s", line.c_str());
    });
    return DDAL_OK;
  }
  const std::string path = board::RunDirectory() + "/fans.lock";
  if (!why.empty()) return Refuse(path.c_str(), why.c_str());
  m_patience = {};  // whoever has the fans now is not about to end
  Refuse(path.c_str(), "another process has the fans; end it first");
  return DDAL_ERR_BUSY;
}

bool FanGuard::Fork() {
  const std::string run = board::RunDirectory();
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return false;
  m_socket = Descriptor(ends[0]);
  const Descriptor guards(ends[1]);
  // No handler of this process may run in the guard, and no signal but SIGKILL may end it.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  m_guard = fork();
  if (m_guard == 0) RunFanGuard(guards.Get(), m_lock.Get(), run.c_str());
  const int error = errno;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  errno = error;
  if (m_guard < 0) m_socket = Descriptor();
  return m_guard > 0;
}

int FanGuard::Start() {
  const std::lock_guard lock(m_mutex);
  if (m_ended) return DDAL_ERR_BUSY;
  if (m_socket.Open()) {
    if (!Lost()) return DDAL_OK;
    Reap();
    AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, kDriverFeature, "The fan guard was ended; another one takes over");
  }
  if (const int error = TakeLock()) return error;
  if (!Fork()) return Refuse("the fan guard cannot be started", std::strerror(errno));
  m_owner = getpid();
  for (const Kept& fan : m_kept) {
    if (Send(fan)) continue;
    const int error = errno;
    Reap();  // one that does not know every fan is no guard
    return Refuse("the fan guard does not answer", std::strerror(error));
  }
  return DDAL_OK;
}

int FanGuard::Keep(const FanNote& note, const FanDescriptors& attributes) {
  const std::lock_guard lock(m_mutex);
  if (m_ended) return DDAL_ERR_BUSY;
  Kept fan{note, attributes};
  const auto same =
      std::find_if(m_kept.begin(), m_kept.end(), [&](auto& k) { return k.note.record.fan == note.record.fan; });
  fan.note.record.turn = static_cast<u32>(same - m_kept.begin());
  if (const int error = WriteNote(fan.note)) return Refuse("it cannot be put on record", std::strerror(error));
  if (!Send(fan)) return Refuse("the fan guard does not answer", std::strerror(errno));
  if (same != m_kept.end()) {
    *same = std::move(fan);
  } else {
    m_kept.push_back(std::move(fan));
  }
  return DDAL_OK;
}

bool FanGuard::Send(const Kept& fan) const {
  FanRecord record = fan.note.record;
  FanDescriptors passed{};
  std::size_t count = 0;
  for (std::size_t attribute = 0; attribute < kFanAttributes; ++attribute) {
    if (record.found[attribute] != kNoValue) passed[count++] = fan.attributes[attribute];
  }
  alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof passed)] = {};
  iovec data{.iov_base = &record, .iov_len = sizeof record};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = CMSG_SPACE(count * sizeof(int));
  cmsghdr* header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(count * sizeof(int));
  std::memcpy(CMSG_DATA(header), passed.data(), count * sizeof(int));
  return sendmsg(m_socket.Get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(sizeof record);
}

FanGuard::Change::Change() {
  FanGuard& guard = Own();
  const std::lock_guard lock(guard.m_mutex);
  m_allowed = !guard.m_ended;
  if (m_allowed) ++guard.m_changes;
}

FanGuard::Change::~Change() {
  FanGuard& guard = Own();
  const std::lock_guard lock(guard.m_mutex);
  if (m_allowed && --guard.m_changes == 0) guard.m_changed.notify_all();
}

void FanGuard::End() {
  if (m_owner != getpid()) return;
  std::unique_lock lock(m_mutex);
  m_ended = true;
  m_changed.wait_for(lock, kChangesEnd, [this] { return m_changes == 0; });
  if (!m_socket.Open()) return;
  shutdown(m_socket.Get(), SHUT_WR);
  if (WaitForEnd(m_socket.Get(), kHandBackMs)) Reap();
}

}  // namespace hwapi::ddal
