#include "Signals.h"

#include <csignal>
#include <cstring>

namespace clmctl {
namespace {

sigset_t ForwardedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGWINCH);
  return signals;
}

[[noreturn]] void* ForwardLoop(void* argument) {
  TAaSysComSicad receiver = 0;
  std::memcpy(&receiver, argument, sizeof receiver);
  const sigset_t signals = ForwardedSignals();
  while (true) {
    int number = 0;
    if (sigwait(&signals, &number) != 0) continue;
    void* msg = AaSysComMsgCreate(CLMCTL_SIGNAL_IND_MSG, sizeof(u32), receiver);
    if (msg == nullptr) continue;
    const u32 value = static_cast<u32>(number);
    std::memcpy(AaSysComMsgGetPayload(msg), &value, sizeof value);
    AaSysComMsgSend(&msg);
  }
}

}  // namespace

void BlockSignals() {
  const sigset_t signals = ForwardedSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void ForwardSignals(TAaSysComSicad receiver) {
  TAaProEuId eu = 0;
  AaSysComEuCreateAndStart(&eu, "signals", ForwardLoop, 16 * 1024, 0, &receiver, sizeof receiver);
}

bool IsStopSignal(void* msg) {
  u32 number = 0;
  if (AaSysComMsgGetPayloadSize(msg) < sizeof number) return false;
  std::memcpy(&number, AaSysComMsgGetPayload(msg), sizeof number);
  return number == SIGINT || number == SIGTERM;
}

}  // namespace clmctl
