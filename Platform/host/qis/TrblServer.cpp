#include "TrblServer.h"

#include "AaSysLog.h"
#include "CallbackGate.h"
#include "ComLog.h"
#include "PlatformThread.h"
#include "ThreadWatch.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <vector>

namespace hwapi::qis {
namespace {

/// Most processes of a board that have troubleshooting files.
constexpr int kMostProcesses = 1000;
/// Most collectors at a time; one more takes the place of the one that was silent longest.
constexpr std::size_t kMostSessions = 8;
constexpr int kNoFreeDescriptorPauseMs = 100;

/// @return whether claiming a number failed because of that number: by a process, or by a thing that is not a lock or
/// not a socket
bool IsTaken(int error) { return error == EBUSY || error == EISDIR || error == EINVAL || error == EADDRINUSE; }

}  // namespace

TrblServer& TrblServer::Own() {
  static auto* const server = new TrblServer;  // the thread outlives the end of main
  return *server;
}

void TrblServer::Start() {
  const std::lock_guard lock(m_starting);
  if (m_started) {
    return;
  }
  CallbackGate::CloseAtExit();
  int error = Claim();
  if (error == 0) {
    error = StartPlatformThread(&Run, this);
  }
  m_started = error == 0;
  if (m_started) {
    return;
  }
  m_socket.Release();
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                 "The troubleshooting files of this process cannot be collected: %s", std::strerror(error));
}

/// Takes the first free number; that of a dead process is free, and one whose name something else has is not.
int TrblServer::Claim() {
  static const auto* const folder = new RunFolder(kTrblFolder);
  if (folder->Get() < 0) {
    return folder->Error();
  }
  int error = EBUSY;
  for (int number = 1; number <= kMostProcesses && IsTaken(error); ++number) {
    error = m_socket.Claim(*folder, std::to_string(number));
  }
  return error;
}

void* TrblServer::Run(void* server) {
  const WatchedThread watched("trbl");
  for (;;) {
    static_cast<TrblServer*>(server)->ServeOnce();
  }
}

void TrblServer::ServeOnce() {
  std::vector<pollfd> watched;
  for (const TrblSession& session : m_sessions) {
    watched.push_back({.fd = session.Connection(), .events = POLLIN, .revents = 0});
  }
  watched.push_back({.fd = m_socket.Listener(), .events = POLLIN, .revents = 0});
  if (AtRest([&] { return ::poll(watched.data(), watched.size(), -1); }) <= 0) {
    return;
  }
  std::vector<TrblSession> silent;
  std::vector<TrblSession> served;
  for (std::size_t i = 0; i < m_sessions.size(); ++i) {
    if (watched[i].revents == 0) {
      silent.push_back(std::move(m_sessions[i]));
    } else if (m_sessions[i].Answer()) {
      served.push_back(std::move(m_sessions[i]));
    }
  }
  m_sessions = std::move(silent);
  std::ranges::move(served, std::back_inserter(m_sessions));
  if (watched.back().revents != 0) {
    Admit();
  }
}

void TrblServer::Admit() {
  Fd connection(::accept4(m_socket.Listener(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!connection) {
    if (errno == EMFILE || errno == ENFILE) {
      ::poll(nullptr, 0, kNoFreeDescriptorPauseMs);  // it goes on knocking
    }
    return;
  }
  const Peer peer = PeerOf(connection.Get());
  std::optional<TrblSession> session = TrblSession::Open(std::move(connection), peer);
  if (!session) {
    return;
  }
  if (m_sessions.size() >= kMostSessions) {
    m_sessions.erase(m_sessions.begin());
  }
  m_sessions.push_back(std::move(*session));
}

}  // namespace hwapi::qis
