/// @file
/// clmctl temp: start, stop, watch, types.
#include "CommandError.h"
#include "Commands.h"
#include "Output.h"
#include "TempRequest.h"
#include "TempSource.h"
#include "TempTypes.h"
#include "Values.h"
#include "WatchCommand.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace clmctl {
namespace {

/// What the command line of a temp command says.
struct TempArguments {
  std::string type;
  std::string interval = "1s";
  std::string client;
  std::string count;
  bool fans = false;
};

void PrintResponse(const SApiTempMeasReq& request, u32 error, bool json) {
  const bool start = request.command == ETempMeasCommand_Start;
  const std::string type = SensorTypeText(request.sensorType);
  if (json) {
    nlohmann::ordered_json object;
    object["command"] = start ? "start" : "stop";
    object["sensor_type"] = type;
    object["interval_ms"] = start ? nlohmann::ordered_json(request.interval) : nullptr;
    object["client"] = request.clientAddr != 0 ? nlohmann::ordered_json(FormatAddress(request.clientAddr)) : nullptr;
    object["error"] = TempErrorName(error);
    object["error_code"] = error;
    WriteJson(object);
  } else if (error == ETempMeasError_NoError) {
    WriteLine(type + (start ? " started, every " + std::to_string(request.interval) + "ms" : " stopped"));
  }
}

void RunRequest(ETempMeasCommand command, const TempArguments& arguments, const Settings& settings) {
  SApiTempMeasReq request{};
  request.command = command;
  request.sensorType = ParseSensorType(arguments.type);
  if (command == ETempMeasCommand_Start) {
    request.interval = static_cast<u32>(ParseDuration(arguments.interval).count());
    if (!arguments.client.empty()) request.clientAddr = ParseAddress(arguments.client);
  }
  const Client client;
  const u32 error = RequestTempMeas(client, request, settings.timeout).error;
  PrintResponse(request, error, settings.json);
  if (error != ETempMeasError_NoError) {
    const std::string type = SensorTypeText(request.sensorType);
    throw CommandError(ExitCode::Refused, "the request about " + type + " is refused (" +
                                              std::string(TempErrorName(error)) +
                                              "): " + TempErrorMeaning(error, type));
  }
  if (command == ETempMeasCommand_Start && request.clientAddr == 0) {
    Diagnose("note: without --client the indications have no receiver; `clmctl temp watch` shows them");
  }
}

void RunWatch(const TempArguments& arguments, const Settings& settings) {
  const TempSource::Settings measurement{.type = ParseSensorType(arguments.type),
                                         .interval = ParseDuration(arguments.interval),
                                         .timeout = settings.timeout};
  WatchCommand command(arguments.count, settings);
  command.watch.Add(std::make_unique<TempSource>(measurement));
  command.dashboard.temperatures.emplace(SensorTypeText(measurement.type) + " temperatures every " +
                                         arguments.interval);
  if (arguments.fans) command.AddFans({.fans = {}, .receiver = {}, .period = kFanShortestPeriod});
  command.Run();
}

void PrintTypes(bool json) {
  for (u32 type = ETempSensorType_None + 1; type <= ETempSensorType_Backplane; ++type) {
    if (json) {
      WriteJson({{"sensor_type", SensorTypeText(type)}, {"sensor_type_number", type}});
    } else {
      WriteLine(SensorTypeText(type) + std::string(12 - SensorTypeText(type).size(), ' ') + std::to_string(type));
    }
  }
}

}  // namespace

void AddTempCommands(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<TempArguments>();
  CLI::App* temp = app.add_subcommand("temp", "Temperature measurement: requests and the indications that follow");
  temp->require_subcommand(1);

  const auto add = [&](const char* name, const char* text, std::function<void()> run) {
    CLI::App* command = temp->add_subcommand(name, text);
    command->add_option("TYPE", arguments->type, "Sensor type, e.g. Kel, KelOcxo, DaxAll, Tov, RFP1, or its number")
        ->required();
    command->callback([&settings, run = std::move(run)] { settings.run = run; });
    return command;
  };
  CLI::App* start = add("start", "Start a measurement and leave it running",
                        [&settings, arguments] { RunRequest(ETempMeasCommand_Start, *arguments, settings); });
  add("stop", "Stop a measurement, whoever started it",
      [&settings, arguments] { RunRequest(ETempMeasCommand_Stop, *arguments, settings); });
  CLI::App* watch = add("watch", "Start a measurement and show it until ^C; then stop it",
                        [&settings, arguments] { RunWatch(*arguments, settings); });
  for (CLI::App* command : {start, watch}) {
    command->add_option("--interval", arguments->interval, "Time between two indications, 900ms to 71min")
        ->capture_default_str();
  }
  start->add_option("--client", arguments->client, "Receiver of the indications: BOARD/CPU/TASK or 0x number");
  watch->add_option("--count", arguments->count, "End after so many indications");
  watch->add_flag("--fans", arguments->fans,
                  "Show the fans, too; takes their speed reports over, as `clmctl fan watch` does");
  temp->add_subcommand("types", "List the sensor types")->callback([&settings] {
    settings.run = [&settings] { PrintTypes(settings.json); };
  });
}

}  // namespace clmctl
