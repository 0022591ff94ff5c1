#include "DaemonKeeper.h"

#include "AaSysLog.h"
#include "Sandbox.h"
#include "SimError.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace boardsim {
namespace {

constexpr std::chrono::milliseconds kPatience{5000};

/// How the daemon ends when the board's description is wrong, or hardware that it names cannot be used.
constexpr int kBoardRefused = 2;

using Clock = std::chrono::steady_clock;

std::string ReadAll(int fd) {
  std::string text;
  char buffer[256];
  for (ssize_t length = read(fd, buffer, sizeof buffer); length > 0; length = read(fd, buffer, sizeof buffer)) {
    text.append(buffer, static_cast<std::size_t>(length));
  }
  return text;
}

}  // namespace

DaemonKeeper::DaemonKeeper(StateDirectory state, std::string daemon, std::function<void()> refused)
    : m_state(std::move(state)),
      m_daemon(std::move(daemon)),
      m_refused(std::move(refused)),
      m_thread([this] { Loop(); }) {}

DaemonKeeper::~DaemonKeeper() {
  std::shared_ptr<ProcessHandle> process;
  {
    const std::lock_guard lock(m_mutex);
    m_stopping = true;
    process = m_process;
  }
  m_changed.notify_all();
  if (process) process->Terminate(kPatience);
  m_thread.join();
}

pid_t DaemonKeeper::Pid() const {
  const std::lock_guard lock(m_mutex);
  return m_pid;
}

unsigned DaemonKeeper::Starts() const {
  const std::lock_guard lock(m_mutex);
  return m_starts;
}

void DaemonKeeper::Reset(const std::function<void()>& change) {
  std::unique_lock lock(m_mutex);
  m_held = true;
  if (m_process) m_process->Signal(SIGKILL);
  m_changed.notify_all();
  m_changed.wait(lock, [this] { return m_down; });
  const struct Release {
    DaemonKeeper& keeper;
    ~Release() {
      keeper.m_held = false;
      keeper.m_changed.notify_all();
    }
  } release{*this};
  change();
}

void DaemonKeeper::Loop() {
  // The thread that starts the daemon lives as long as this object: the daemon ends with its parent thread.
  while (true) {
    const Clock::time_point started = Clock::now();
    std::string outcome;
    try {
      outcome = WaitForChild(Start());
    } catch (const SimError& error) {
      outcome = error.what();
    }
    const auto ran = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started);
    if (!Pause(outcome, ran)) return;
  }
}

pid_t DaemonKeeper::Start() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw SimError(ExitCode::Unreachable, "cannot make a pipe");
  const Fd readEnd(ends[0]);
  Fd writeEnd(ends[1]);
  const pid_t child = Spawn({.command = SandboxCommand(m_state, OwnProgram(m_daemon), writeEnd.Get()),
                             .logFile = m_state.DaemonLog(),
                             .ownSession = true,
                             .inheritedFd = writeEnd.Get()});
  writeEnd.Close();
  const pid_t inner = InnerPid(ReadAll(readEnd.Get()));
  auto process = std::make_shared<ProcessHandle>(inner);

  const std::lock_guard lock(m_mutex);
  ++m_starts;
  m_pid = inner;
  m_process = process;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0, "daemon started, process %d", static_cast<int>(inner));
  // The board may have been told to go down, or been reset, between the start and here.
  if (m_stopping) process->Signal(SIGTERM);
  if (m_held) process->Signal(SIGKILL);
  return child;
}

bool DaemonKeeper::Pause(const std::string& outcome, std::chrono::milliseconds ran) {
  std::unique_lock lock(m_mutex);
  m_pid = 0;
  m_process.reset();
  m_down = true;
  m_changed.notify_all();
  if (!m_stopping && m_starts == 1 && outcome == ExitText(kBoardRefused)) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 0, "daemon ended with %s: it cannot use this board, which goes down",
                   outcome.c_str());
    lock.unlock();
    m_refused();
    return false;
  }
  if (!m_stopping && !m_held) {
    const std::chrono::milliseconds pause = m_pause.Next(ran);
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 0, "daemon ended after %lld ms: %s; starting it again in %lld ms",
                   static_cast<long long>(ran.count()), outcome.c_str(), static_cast<long long>(pause.count()));
    m_changed.wait_for(lock, pause, [this] { return m_stopping || m_held; });
  }
  m_changed.wait(lock, [this] { return m_stopping || !m_held; });
  m_down = false;
  return !m_stopping;
}

}  // namespace boardsim
