/// @file
/// clmctl: the command-line client of the climate service.
#include "AaSysLog.h"
#include "CommandError.h"
#include "Commands.h"
#include "Output.h"
#include "Refusal.h"
#include "Values.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <exception>
#include <string>

namespace {

constexpr const char* kFooter =
    "HWAPI_RUN names the run directory of the board (default /run/hwapi).\n"
    "Exit status: 0 done, 1 refused by the service, 2 wrong command line, 3 unreachable or no answer in time.";

/// The platform's own log lines: an outcome that matters is told by the command in its words.
void SilencePlatformLog() {
  AaSysLogSetThreshold(static_cast<EAaSysLogSeverityLevel>(EAaSysLogSeverityLevel_Error + 1));
}

int Run(int argc, char** argv) {
  clmctl::Settings settings;
  std::string timeout = "2s";
  bool verbose = false;
  CLI::App app("Command-line client of the climate service", "clmctl");
  app.fallthrough();
  app.require_subcommand(1);
  app.footer(kFooter);
  app.add_flag("--json", settings.json, "One JSON object a line");
  app.add_option("--timeout", timeout, "Longest wait for an answer, 1ms or more")->capture_default_str();
  app.add_flag("-v,--verbose", verbose, "Show the messaging layer's own log lines, too");
  clmctl::AddTempCommands(app, settings);
  clmctl::AddFanCommands(app, settings);
  clmctl::AddTagCommands(app, settings);
  clmctl::AddTechlogCommands(app, settings);
  clmctl::AddSendCommand(app, settings);
  clmctl::AddBlackBoxCommands(app, settings);
  clmctl::AddResetCommand(app, settings);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    throw clmctl::CommandError(clmctl::ExitCode::Usage, commandline::Refusal(app, error));
  }
  settings.timeout = clmctl::ParseTimeout(timeout);
  if (!verbose) SilencePlatformLog();
  settings.run();
  return static_cast<int>(clmctl::ExitCode::Done);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::signal(SIGPIPE, SIG_IGN);
    return Run(argc, argv);
  } catch (const clmctl::CommandError& error) {
    clmctl::Diagnose(error.what());
    return static_cast<int>(error.Code());
  } catch (const std::exception& error) {
    clmctl::Diagnose(error.what());
    return static_cast<int>(clmctl::ExitCode::Unreachable);
  }
}
