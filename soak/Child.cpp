#include "Child.h"

#include "AaSysLog.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

namespace soak {

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

void Sleep(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

bool Eventually(const std::function<bool()>& condition) {
  constexpr double kPause = 0.005;
  for (const double end = Now() + kDeadline; Now() < end; Sleep(kPause)) {
    if (condition()) return true;
  }
  return condition();
}

Child::Child(const std::function<void()>& work) : m_pid(fork()) {
  if (m_pid < 0) bench::Die("fork");
  if (m_pid != 0) return;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // Losses are counted; a line for each is not needed.
  AaSysLogSetThreshold(static_cast<EAaSysLogSeverityLevel>(EAaSysLogSeverityLevel_Error + 1));
  work();
  _exit(0);
}

Child::Child(Child&& other) noexcept : m_pid(std::exchange(other.m_pid, 0)) {}

Child::~Child() {
  if (m_pid <= 0) return;
  kill(m_pid, SIGKILL);
  waitpid(m_pid, nullptr, 0);
}

bool Child::EndsWell(double seconds) {
  constexpr double kPause = 0.001;
  int status = 0;
  for (const double end = Now() + seconds; Now() < end; Sleep(kPause)) {
    if (waitpid(m_pid, &status, WNOHANG) != m_pid) continue;
    m_pid = 0;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
  return false;
}

}  // namespace soak
