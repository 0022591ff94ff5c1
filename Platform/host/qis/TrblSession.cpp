#include "TrblSession.h"

#include "AaSysLog.h"
#include "CallbackGate.h"
#include "ComLog.h"
#include "FileSource.h"
#include "PassedFd.h"

#include <sys/socket.h>

#include <cerrno>
#include <exception>

namespace hwapi::qis {
namespace {

/// Calls a callback of the program, which may be missing.
/// @return its answer; EAaTrblCbStatus_Failed when it throws or the process ends
int Call(int (*callback)(const char*, const void*), const TrblFile& file) {
  const CallbackGate::Pass pass;
  if (!pass) {
    return EAaTrblCbStatus_Failed;
  }
  try {
    return callback != nullptr ? callback(file.name.c_str(), file.context) : EAaTrblCbStatus_Ok;
  } catch (const std::exception& exception) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "A callback of the troubleshooting file %s threw: %s", file.name.c_str(), exception.what());
  } catch (...) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "A callback of the troubleshooting file %s threw an unknown exception", file.name.c_str());
  }
  return EAaTrblCbStatus_Failed;
}

EAaTrblCollect ResultOf(int prepared) {
  if (prepared == EAaTrblCbStatus_Ok) {
    return EAaTrblCollect_Ok;
  }
  return prepared == EAaTrblCbStatus_NotReady ? EAaTrblCollect_NotReady : EAaTrblCollect_Failed;
}

}  // namespace

std::optional<TrblSession> TrblSession::Open(Fd connection, const Peer& peer) {
  if (IsAllowed(peer)) {
    return TrblSession(std::move(connection));
  }
  TellRefusal("Troubleshooting files for", peer);
  TrblListAnswer answer{};
  answer.listed = TrblListed::Refused;
  SendWithFd(connection.Get(), &answer, sizeof answer, -1);
  return std::nullopt;
}

bool TrblSession::Answer() {
  TrblRequest request{};
  const ssize_t size = ::recv(Connection(), &request, sizeof request, MSG_DONTWAIT | MSG_TRUNC);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return true;
  }
  if (size != sizeof request) {
    return false;
  }
  switch (request.operation) {
    case TrblOperation::List:
      return List(request.index);
    case TrblOperation::Hand:
      return Hand(request.index);
    case TrblOperation::Stored:
      return Stored(request.index);
  }
  return false;
}

bool TrblSession::List(u32 index) {
  if (index == 0) {
    m_files = TrblRegistry::Own().Files();
  }
  TrblListAnswer answer{};
  answer.listed = TrblListed::End;
  if (index < m_files.size()) {
    const TrblFile& file = m_files[index];
    answer.listed = TrblListed::File;
    answer.priority = file.priority;
    file.name.copy(answer.name.data(), answer.name.size() - 1);
    file.path.copy(answer.path.data(), answer.path.size() - 1);
  }
  return SendWithFd(Connection(), &answer, sizeof answer, -1) > 0;
}

bool TrblSession::Hand(u32 index) {
  const std::optional<TrblFile> file = Find(index);
  if (!file) {
    return Send({.result = EAaTrblCollect_Withdrawn, .error = 0}, -1);
  }
  const EAaTrblCollect result = ResultOf(Call(file->prepare, *file));
  if (result != EAaTrblCollect_Ok) {
    return Send({.result = result, .error = 0}, -1);
  }
  const Fd content = OpenSource(file->path.c_str());
  return content ? Send({.result = EAaTrblCollect_Ok, .error = 0}, content.Get())
                 : Send({.result = EAaTrblCollect_NoFile, .error = errno}, -1);
}

bool TrblSession::Stored(u32 index) {
  if (const std::optional<TrblFile> file = Find(index)) {
    Call(file->store, *file);
  }
  return Send({.result = EAaTrblCollect_Ok, .error = 0}, -1);
}

bool TrblSession::Send(const TrblOutcome& outcome, int content) const {
  return SendWithFd(Connection(), &outcome, sizeof outcome, content) > 0;
}

/// A file may have been taken out, or registered anew, since it was listed.
std::optional<TrblFile> TrblSession::Find(u32 index) const {
  return index < m_files.size() ? TrblRegistry::Own().Find(m_files[index].name) : std::nullopt;
}

}  // namespace hwapi::qis
