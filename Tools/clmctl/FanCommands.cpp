/// @file
/// clmctl fan: freq, speed, watch.
#include "CommandError.h"
#include "Commands.h"
#include "FanNames.h"
#include "FanText.h"
#include "Output.h"
#include "Values.h"
#include "WatchCommand.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace clmctl {
namespace {

constexpr const char* kFans = "FAN is 201 to 203 or GAR_FAN1 to GAR_FAN3.";
constexpr const char* kReports =
    "\n\nA speed request makes the service report the speeds of all fans: first after the\n"
    "period, then every 60 s. The reports have one recipient, that of the last request;\n"
    "only another request changes that.";
constexpr const char* kSpeedReports =
    " Without --receiver it is this command, which ends:\n"
    "`clmctl fan watch` shows the reports.";
constexpr const char* kWatchReports =
    " A watch takes the reports over.\n\n"
    "A fan with \"no speed\" stands still, or cannot be read, or is not there: the reports\n"
    "say 0 rpm of all of these. The daemon's log warns of a fan that cannot be read.";

/// What the command line of a fan command says.
struct FanArguments {
  std::vector<std::string> settings;
  std::string period;
  std::string receiver;
  std::string count;
};

/// @return what the service says about the whole request, and when reports come, as far as they do
std::string OutcomeText(const FanAnswer& answer) {
  if (answer.periodSeconds == 0 || answer.status == EStatus_UndefinedError) return answer.info;
  return answer.info + " First report after " + std::to_string(answer.periodSeconds) + " s, then every 60 s.";
}

/// Prints the answer. @throw CommandError (refused) when it is a refusal
void PrintAnswer(const FanAnswer& answer, FanQuantity quantity, bool json) {
  if (json) {
    WriteJsonLines(AnswerObjects(answer, quantity));
  } else {
    WriteRaw(AnswerLines(answer, quantity));
    WriteLine(OutcomeText(answer));
  }
  if (answer.status != EStatus_NoError) throw CommandError(ExitCode::Refused, RefusalText(answer));
}

void RunFrequency(const FanArguments& arguments, const Settings& settings) {
  const std::vector<FanSetting> fans = ParseFanFrequencies(arguments.settings);
  const Client client;
  PrintAnswer(RequestFanFrequencies(client, fans, settings.timeout), FanQuantity::Frequency, settings.json);
}

void RunSpeed(const FanArguments& arguments, const Settings& settings) {
  FanSpeedRequest request{.fans = ParseFanSpeeds(arguments.settings), .receiver = {}, .period = {}};
  if (!arguments.period.empty()) request.period = ParseFanPeriod(arguments.period);
  if (!arguments.receiver.empty()) request.receiver = ParseFanReceiver(arguments.receiver);
  const Client client;
  PrintAnswer(RequestFanSpeeds(client, request, settings.timeout), FanQuantity::Speed, settings.json);
  if (arguments.receiver.empty()) {
    Diagnose("note: without --receiver the reports go to this command, which ends here; `clmctl fan watch` shows them");
  }
}

void RunWatch(const FanArguments& arguments, const Settings& settings) {
  FanSpeedRequest request{.fans = ParseFanSpeeds(arguments.settings), .receiver = {}, .period = kFanShortestPeriod};
  if (!arguments.period.empty()) request.period = ParseFanPeriod(arguments.period);
  WatchCommand command(arguments.count, settings);
  command.AddFans(std::move(request));
  command.Run();
}

}  // namespace

void AddFanCommands(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<FanArguments>();
  CLI::App* fan = app.add_subcommand("fan", "Fans: PWM frequency, speed, and the speed reports that follow");
  fan->require_subcommand(1);

  using Run = void (*)(const FanArguments&, const Settings&);
  const auto add = [&](const char* name, const char* text, const char* setting, const char* what, Run run) {
    CLI::App* command = fan->add_subcommand(name, text);
    command->add_option("SETTING", arguments->settings, what)->option_text(setting);
    command->callback(
        [&settings, arguments, run] { settings.run = [&settings, arguments, run] { run(*arguments, settings); }; });
    return command;
  };
  CLI::App* frequency = add("freq", "Set the PWM frequency of fans", "FAN=FREQUENCY ...",
                            "1kHz, 5kHz or 25kHz for each fan, e.g. 201=25kHz GAR_FAN2=5kHz", RunFrequency);
  CLI::App* speed = add("speed", "Set the speed of fans, and leave it at that", "FAN=SPEED ...",
                        "0 to 100 per cent for each fan, e.g. 201=60 GAR_FAN2=80%", RunSpeed);
  CLI::App* watch = add("watch", "Show the speeds of all fans until ^C", "[FAN=SPEED ...]",
                        "Speeds to set first, 0 to 100 per cent; without any, no fan is changed", RunWatch);
  frequency->footer(kFans);
  speed->footer(std::string(kFans) + kReports + kSpeedReports);
  watch->footer(std::string(kFans) + kReports + kWatchReports);
  for (CLI::App* command : {frequency, speed}) command->get_option("SETTING")->required();
  speed->add_option("--period", arguments->period, "Time to the first report, 8s to 120s; 20s when left out");
  speed->add_option("--receiver", arguments->receiver, "Recipient of the reports: BOARD/CPU/TASK or 0x number");
  watch->add_option("--period", arguments->period, "Time to the first report, 8s to 120s; 8s when left out");
  watch->add_option("--count", arguments->count, "End after so many reports");
}

}  // namespace clmctl
