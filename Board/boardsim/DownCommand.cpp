/// @file
/// boardsim down: ends a board and waits until it is gone.
#include "Commands.h"
#include "SimError.h"

#include <cstdio>

namespace boardsim {
namespace {

/// The daemon gets some seconds to end by itself, and then the simulator.
constexpr std::chrono::milliseconds kPatience{12'000};

void RunDown(const Settings& settings) {
  const StateDirectory state = settings.State();
  const std::optional<pid_t> pid = state.RunningPid();
  if (!pid) {
    std::fprintf(stderr, "boardsim: no board is up in %s\n", state.Root().c_str());
    return;
  }
  ProcessHandle(*pid).Terminate(kPatience);
  if (state.RunningPid()) {
    throw SimError(ExitCode::Refused, "the board in " + state.Root() + " does not go down; process " +
                                          std::to_string(*pid) + " must be ended by hand");
  }
  std::printf("down\n");
}

}  // namespace

void AddDownCommand(CLI::App& app, Settings& settings) {
  app.add_subcommand("down", "Bring a board down and wait until it is gone")->callback([&settings] {
    settings.run = [&settings] { RunDown(settings); };
  });
}

}  // namespace boardsim
