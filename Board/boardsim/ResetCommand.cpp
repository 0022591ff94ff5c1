/// @file
/// boardsim reset: the board itself is reset.
#include "Commands.h"
#include "ControlClient.h"
#include "ResetAnswer.h"
#include "SimError.h"
#include "Values.h"
#include "ddal_error.h"

#include <memory>
#include <string>

namespace boardsim {
namespace {

struct ResetArguments {
  std::string type;
  std::string partition;
  std::string counter;
  std::string clock;
};

ResetReq RequestFrom(const ResetArguments& arguments) {
  ResetReq request{};
  if (!arguments.partition.empty()) request.fileSystem = ParsePartition(arguments.partition);
  if (!arguments.counter.empty()) {
    request.setsCounter = 1;
    request.counter = ParseCounter(arguments.counter);
  }
  if (!arguments.clock.empty()) {
    SAaTime now{};
    AaUtcTimeGet(&now);
    request.setsClock = 1;
    request.clock = ParseClock(arguments.clock, now);
  }
  return request;
}

void RunReset(const ResetArguments& arguments, const Settings& settings) {
  const StateDirectory state = settings.State();
  state.Join();
  const ResetReq request = RequestFrom(arguments);
  if (!arguments.type.empty()) {
    ResetAnswer::FromCommand(arguments.type, ResetAnswer::Current(state.ResetAnswer())).Save(state.ResetAnswer());
  }
  const i32 error = RequestReset(request);
  if (error == DDAL_ERR_INVALID) {
    throw SimError(ExitCode::Usage, "'" + arguments.clock + "' is no calendar time; the board was reset without it");
  }
  if (error != 0) {
    throw SimError(ExitCode::Refused,
                   "the board was reset, but not all of it as asked: " + state.SimulatorLog() + " has the reason");
  }
}

}  // namespace

void AddResetCommand(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<ResetArguments>();
  CLI::App* command = app.add_subcommand(
      "reset", "Reset the board: the daemon is killed, and starts on a board whose other services are there already");
  command->add_option("TYPE", arguments->type, "What it then learns of the reset: as `boardsim reset-type`");
  command->add_option("--partition", arguments->partition, "File system that runs then: 1 or 2");
  command->add_option("--counter", arguments->counter, "Counter of resets in a row; from 7 on the boot falls back");
  command->add_option("--clock", arguments->clock, "Clock then: unset, or as `boardsim clock`");
  command->callback(
      [&settings, arguments] { settings.run = [&settings, arguments] { RunReset(*arguments, settings); }; });
}

}  // namespace boardsim
