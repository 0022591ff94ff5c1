#include "Shutdown.h"

#include "TagWaits.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace hwapi::nub {
namespace {

constexpr u32 kSignalThreadStack = 16384;

sigset_t EndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

}  // namespace

Shutdown& Shutdown::Own() {
  static Shutdown* const own = new Shutdown;
  return *own;
}

void Shutdown::BlockSignals() {
  const sigset_t signals = EndSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void Shutdown::TakeSignals() {
  TAaProEuId eu = 0;
  if (AaSysComEuCreateAndStart(&eu, "signals", WaitForSignals, kSignalThreadStack, 0, nullptr, 0) == 0) return;
  // Without the thread the process could not be ended in order: let the signals end it at once.
  const sigset_t signals = EndSignals();
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void* Shutdown::WaitForSignals(void*) {
  const sigset_t signals = EndSignals();
  int number = 0;
  while (sigwait(&signals, &number) != 0) {
  }
  // Whoever sends a second signal does not want to wait for the orderly end: it finds this thread and ends the process.
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  Own().Request();
  for (;;) pause();
}

void Shutdown::Request() {
  m_requested = true;
  TagWaits::Own().Interrupt();
  const TAaSysComSicad endpoint = m_endpoint;
  if (endpoint == 0) return;
  void* msg = AaSysComMsgCreate(kWakeUpMsg, 0, endpoint);
  AaSysComMsgSendS(&msg, endpoint);
}

}  // namespace hwapi::nub
