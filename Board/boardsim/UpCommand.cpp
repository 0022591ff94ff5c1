/// @file
/// boardsim up: a whole board in the background (or in the foreground), and its simulator process.
#include "Commands.h"
#include "DescriptionInput.h"
#include "FlashLayout.h"
#include "LogTail.h"
#include "OnlineTag.h"
#include "OnlineWatch.h"
#include "Sandbox.h"
#include "ServiceNames.h"
#include "SimError.h"
#include "Simulator.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace boardsim {
namespace {

constexpr std::chrono::milliseconds kComeUpTime{20'000};
constexpr std::chrono::milliseconds kGoDownTime{12'000};

/// How the simulator ends when the daemon cannot use the board, or it cannot itself.
constexpr int kBoardRefused = static_cast<int>(ExitCode::Usage);

struct UpArguments {
  std::string description;
  std::string daemon;
  bool fresh = false;
  bool noDaemon = false;
  bool foreground = false;
};

struct SimulateArguments {
  std::string daemon;
  int lockFd = -1;
  bool withParent = false;
};

/// What this run of the board writes.
struct Logs {
  explicit Logs(const StateDirectory& state) : daemon(state.DaemonLog()), simulator(state.SimulatorLog()) {}

  LogTail daemon;
  LogTail simulator;
};

/// @return a log and how it ends, as the end of a sentence
std::string EndOf(const LogTail& log) {
  const std::string lines = log.Lines();
  return lines.empty() ? log.Path() + " has nothing of this start\n" : log.Path() + " ends with\n" + lines;
}

void WriteDescription(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text << std::flush;
  if (!file) throw SimError(ExitCode::Unreachable, "cannot write " + path + ": " + std::strerror(errno));
}

pid_t StartSimulator(const StateDirectory& state, const UpArguments& arguments, const std::string& daemon,
                     const Fd& lock) {
  std::vector<std::string> command =
      OwnProgram(std::filesystem::read_symlink("/proc/self/exe"),
                 {"simulate", "--state", state.Root(), "--daemon", daemon, "--lock-fd", std::to_string(lock.Get())});
  if (arguments.foreground) command.push_back("--with-parent");
  const pid_t pid = Spawn(
      {.command = std::move(command), .logFile = state.SimulatorLog(), .ownSession = true, .inheritedFd = lock.Get()});
  state.NotePid(lock, pid);
  return pid;
}

std::vector<u32> AwaitedTasks(bool withDaemon) {
  std::vector<u32> tasks;
  for (const commandline::NamedService& endpoint : commandline::kServices) {
    if (withDaemon || !endpoint.ofDaemon) tasks.push_back(endpoint.task);
  }
  return tasks;
}

/// @param simulator the child that has ended
std::string WhyItEnded(pid_t simulator, const Logs& logs) {
  if (WaitForChild(simulator) == ExitText(kBoardRefused) && !logs.daemon.Lines().empty()) {
    return "the daemon cannot use it; its log " + EndOf(logs.daemon);
  }
  return "the simulator ended; its log " + EndOf(logs.simulator);
}

/// @return what went wrong; "" when all are online
std::string WaitUntilOnline(const Logs& logs, pid_t simulatorPid, const ProcessHandle& simulator, bool withDaemon) {
  const int changed = WatchOnlineTags(AwaitedTasks(withDaemon));
  const auto deadline = std::chrono::steady_clock::now() + kComeUpTime;
  while (true) {
    const std::vector<u32> missing = TasksNotOnline();
    if (missing.empty()) return "";
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    if (left <= 0) {
      return OnlineTagName(missing.front()) + " did not come within " + std::to_string(kComeUpTime.count() / 1000) +
             " s; the daemon's log " + EndOf(logs.daemon) + "and the simulator's log " + EndOf(logs.simulator);
    }
    pollfd events[] = {{.fd = changed, .events = POLLIN, .revents = 0},
                       {.fd = simulator.Descriptor(), .events = POLLIN, .revents = 0}};
    if (poll(events, 2, static_cast<int>(left)) <= 0) continue;
    if (events[1].revents != 0) return WhyItEnded(simulatorPid, logs);
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t length = read(changed, &count, sizeof count);
  }
}

sigset_t EndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  return signals;
}

/// Keeps the board up until a signal comes, then brings it down.
void StayInForeground(const Logs& logs, const ProcessHandle& simulator, const Fd& signals) {
  pollfd events[] = {{.fd = signals.Get(), .events = POLLIN, .revents = 0},
                     {.fd = simulator.Descriptor(), .events = POLLIN, .revents = 0}};
  while (poll(events, 2, -1) <= 0) {
  }
  if (events[1].revents != 0) {
    throw SimError(ExitCode::Unreachable, "the simulator ended; its log " + EndOf(logs.simulator));
  }
  simulator.Terminate(kGoDownTime);
}

void RunUp(const UpArguments& arguments, const Settings& settings) {
  const DescriptionInput description = ReadDescriptionInput(arguments.description);
  const StateDirectory state = settings.State();
  const std::string daemon = arguments.noDaemon ? "" : FindDaemon(arguments.daemon);
  const Fd lock = state.Lock();
  state.Prepare(arguments.fresh);
  LayOutFlash(state, description.board);
  if (!daemon.empty()) CheckSandbox(state);
  WriteDescription(state.Description(), description.text);
  state.SetEnvironment();

  // Blocked before the platform starts its threads, and only where they are waited for.
  const sigset_t endSignals = EndSignals();
  Fd signals;
  if (arguments.foreground) {
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);
    signals = Fd(signalfd(-1, &endSignals, SFD_CLOEXEC));
  }
  const Logs logs(state);
  const pid_t simulatorPid = StartSimulator(state, arguments, daemon, lock);
  const ProcessHandle simulator(simulatorPid);
  const std::string problem = WaitUntilOnline(logs, simulatorPid, simulator, !daemon.empty());
  if (!problem.empty()) {
    simulator.Terminate(kGoDownTime);
    throw SimError(ExitCode::Unreachable, "the board does not come up: " + problem);
  }
  PrintEndpoints();
  std::printf("export HWAPI_RUN=%s\n", state.Run().c_str());
  std::fflush(stdout);
  if (arguments.foreground) StayInForeground(logs, simulator, signals);
}

void RunSimulate(const SimulateArguments& arguments, const Settings& settings) {
  if (arguments.lockFd >= 0) fcntl(arguments.lockFd, F_SETFD, FD_CLOEXEC);
  if (arguments.withParent) prctl(PR_SET_PDEATHSIG, SIGTERM);
  const StateDirectory state = settings.State();
  state.SetEnvironment();
  Simulate(state, arguments.daemon);
}

}  // namespace

void AddUpCommand(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<UpArguments>();
  CLI::App* up = app.add_subcommand("up", "Bring a board up: neighbouring services, hardware, the daemon");
  up->add_option("FILE", arguments->description, "Board description (TOML); - reads standard input")->required();
  up->add_flag("--fresh", arguments->fresh, "Erase flash and logs of earlier runs first");
  up->add_flag("--no-daemon", arguments->noDaemon, "Only the neighbours and the hardware");
  up->add_flag("--foreground", arguments->foreground, "Stay attached; ^C brings the board down");
  up->add_option("--daemon", arguments->daemon, "Program file of the daemon (found by itself when left out)");
  up->callback([&settings, arguments] { settings.run = [&settings, arguments] { RunUp(*arguments, settings); }; });
}

void AddSimulateCommand(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<SimulateArguments>();
  CLI::App* simulate = app.add_subcommand("simulate", "The background process of up")->group("");
  simulate->add_option("--daemon", arguments->daemon);
  simulate->add_option("--lock-fd", arguments->lockFd);
  simulate->add_flag("--with-parent", arguments->withParent);
  simulate->callback(
      [&settings, arguments] { settings.run = [&settings, arguments] { RunSimulate(*arguments, settings); }; });
}

}  // namespace boardsim
