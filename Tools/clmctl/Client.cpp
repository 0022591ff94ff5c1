#include "Client.h"

#include "CommandError.h"
#include "ServiceNames.h"
#include "Values.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace clmctl {
namespace {

std::string RunDirectory() {
  const char* run = std::getenv("HWAPI_RUN");
  return run != nullptr && *run != '\0' ? run : "/run/hwapi";
}

std::string WhatToDo() {
  return "run directory " + RunDirectory() +
         " (HWAPI_RUN chooses it). Is the board up and the daemon running? `boardsim status` tells";
}

std::string Describe(TAaSysComSicad address) {
  const std::string_view name = commandline::ServiceName(address & 0xFFFFu);
  return FormatAddress(address) + (name.empty() ? "" : " (" + std::string(name) + " service)");
}

}  // namespace

void RequireBoard() {
  if (std::getenv("HWAPI_BOARD") != nullptr) return;
  const std::string run = RunDirectory();
  if (access((run + "/board.toml").c_str(), R_OK) == 0) return;
  if (const std::string below = run + "/run"; access((below + "/board.toml").c_str(), R_OK) == 0) {
    throw CommandError(ExitCode::Unreachable, "HWAPI_RUN names " + run + ", the state folder of a board; its run " +
                                                  "directory is in there: export HWAPI_RUN=" + below);
  }
  if (access("/etc/hwapi/board.toml", R_OK) == 0) return;
  throw CommandError(ExitCode::Unreachable, "there is no board here: " + WhatToDo());
}

Client::Client(u32 task) : m_task(0), m_address(0) {
  RequireBoard();
  m_task = AaSysComUserRegister(task, AaProEuCurrent());
  if (m_task == 0) {
    throw CommandError(ExitCode::Unreachable,
                       task == 0 ? "cannot become a messaging user: " + WhatToDo()
                                 : "task " + FormatId(task) + " is served by another process; choose another --sender");
  }
  m_address = AddressOf(m_task);
}

Client::~Client() { AaSysComUserDeregister(m_task); }

TAaSysComSicad Client::AddressOf(u32 task) { return AaSysComSicadGet(task, AaSysComGetOwnNid()); }

Message Client::Create(u32 id, const void* payload, u32 size, TAaSysComSicad receiver) const {
  Message msg(AaSysComMsgCreate(id, size, receiver));
  if (msg == nullptr) {
    throw CommandError(ExitCode::Unreachable, "cannot create a message of " + std::to_string(size) + " bytes");
  }
  if (size != 0) std::memcpy(AaSysComMsgGetPayload(msg.get()), payload, size);
  return msg;
}

void Client::Send(Message msg) const {
  const TAaSysComSicad receiver = AaSysComMsgGetReceiver(msg.get());
  const u32 unserved = AaSysComCounterGet(EAaSysComCounter_NoReceiver);
  const u32 full = AaSysComCounterGet(EAaSysComCounter_QueueFull);
  void* raw = msg.release();
  AaSysComMsgSendS(&raw, m_address);
  if (AaSysComCounterGet(EAaSysComCounter_NoReceiver) != unserved) {
    throw CommandError(ExitCode::Unreachable, "nobody serves " + Describe(receiver) + ": " + WhatToDo());
  }
  if (AaSysComCounterGet(EAaSysComCounter_QueueFull) != full) {
    throw CommandError(ExitCode::Unreachable,
                       "the queue of " + Describe(receiver) + " is full: its process does not read; see its log");
  }
}

Message Client::ReceiveUntil(Clock::time_point deadline, const u16* filter) const {
  // The platform counts board time, which may run faster than the host's: a wait that ends early goes on.
  while (true) {
    if (deadline == Clock::time_point::max()) {
      Message endless(AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, filter));
      if (endless != nullptr) return endless;
      continue;
    }
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now()).count();
    const auto waitUs = std::clamp<std::int64_t>(left, 0, AASYSCOM_NO_TIMEOUT - 1);
    Message msg(AaSysComMsgReceive(static_cast<u32>(waitUs), filter));
    if (msg != nullptr || left <= 0) return msg;
  }
}

}  // namespace clmctl
