/// @file
/// boardsim: a whole board on a machine that is none.
#include "Commands.h"
#include "Refusal.h"
#include "SimError.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>

namespace {

constexpr const char* kFooter =
    "A board lives in a state folder: --state DIR, else the folder above HWAPI_RUN, else "
    "${XDG_RUNTIME_DIR:-/tmp}/clm-UID.\n"
    "Exit status: 0 done, 1 refused, 2 wrong command line or board description, 3 no board is up.";

int Run(int argc, char** argv) {
  boardsim::Settings settings;
  CLI::App app("Simulated board: neighbouring services, hardware, and the climate daemon", "boardsim");
  app.fallthrough();
  app.require_subcommand(1);
  app.footer(kFooter);
  app.add_option("--state", settings.state, "State folder of the board");
  boardsim::AddUpCommand(app, settings);
  boardsim::AddSimulateCommand(app, settings);
  boardsim::AddDownCommand(app, settings);
  boardsim::AddStatusCommand(app, settings);
  boardsim::AddControlCommands(app, settings);
  boardsim::AddResetTypeCommand(app, settings);
  boardsim::AddResetCommand(app, settings);
  boardsim::AddUnitCommands(app, settings);
  boardsim::AddDetectCommand(app, settings);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    throw boardsim::SimError(boardsim::ExitCode::Usage, commandline::Refusal(app, error));
  }
  settings.run();
  return static_cast<int>(boardsim::ExitCode::Done);
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return Run(argc, argv);
  } catch (const boardsim::SimError& error) {
    std::fprintf(stderr, "boardsim: %s\n", error.what());
    return static_cast<int>(error.Code());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "boardsim: %s\n", error.what());
    return static_cast<int>(boardsim::ExitCode::Unreachable);
  }
}
