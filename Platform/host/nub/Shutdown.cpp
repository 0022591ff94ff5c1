#include "Shutdown.h"

#include "AaProWatch.h"
#include "TagWaits.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

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

/// Those that the thread of the signals takes: these, and the alarm of a Limit.
sigset_t TakenSignals() {
  sigset_t signals = EndSignals();
  sigaddset(&signals, SIGALRM);
  return signals;
}

}  // namespace

Shutdown& Shutdown::Own() {
  static Shutdown* const own = new Shutdown;
  return *own;
}

void Shutdown::BlockSignals() {
  const sigset_t signals = TakenSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void Shutdown::TakeSignals() {
  TAaProEuId eu = 0;
  if (AaSysComEuCreateAndStart(&eu, "signals", WaitForSignals, kSignalThreadStack, 0, nullptr, 0) == 0) return;
  // Without the thread the process could not be ended in order: let the signals end it at once.
  const sigset_t signals = TakenSignals();
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void* Shutdown::WaitForSignals(void*) {
  const sigset_t taken = TakenSignals();
  int number = 0;
  AaProRestBegin();
  while (sigwait(&taken, &number) != 0 || number == SIGALRM) {
    if (number == SIGALRM) Own().EndAtLimit();
  }
  AaProRestEnd();
  const sigset_t signals = EndSignals();
  // Whoever sends a second signal does not want to wait for the orderly end: it finds this thread and ends the process.
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  Own().Request();
  Own().GiveUpStart(number);
  AaProRestBegin();
  for (;;) pause();
}

/// Holds the mutex to the end of the process: the thread of the start must not go on any more.
void Shutdown::GiveUpStart(int signal) {
  std::unique_lock lock(m_startMutex);
  if (m_startEnded.wait_for(lock, kPatienceWithStart, [this] { return m_wayOut == nullptr; })) return;
  m_wayOut();
  ::signal(signal, SIG_DFL);
  raise(signal);
  _exit(128 + signal);  // the first process of a namespace is not ended by its own signals
}

Shutdown::Start::Start(void (*wayOut)()) {
  const std::lock_guard lock(Own().m_startMutex);
  Own().m_wayOut = wayOut;
}

Shutdown::Start::~Start() {
  const std::lock_guard lock(Own().m_startMutex);
  Own().m_wayOut = nullptr;
  Own().m_startEnded.notify_all();
}

Shutdown::Limit::Limit(unsigned seconds, int status, std::string text) {
  const std::lock_guard lock(Own().m_startMutex);
  Own().m_limitStatus = status;
  Own().m_limitText = std::move(text);
  alarm(seconds);
}

Shutdown::Limit::~Limit() {
  alarm(0);
  const std::lock_guard lock(Own().m_startMutex);
  Own().m_limitText.clear();
}

/// An alarm that came when its step was over ends nothing.
void Shutdown::EndAtLimit() {
  const std::lock_guard lock(m_startMutex);
  if (m_limitText.empty()) return;
  std::fputs(m_limitText.c_str(), stderr);
  _exit(m_limitStatus);
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
