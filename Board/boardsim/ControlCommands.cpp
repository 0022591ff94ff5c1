/// @file
/// boardsim temp, fan, tag, clock: each changes one thing on a running board.
#include "AaConfig.h"
#include "BoardDescription.h"
#include "Commands.h"
#include "ControlClient.h"
#include "Fans.h"
#include "ProcessingUnits.h"
#include "SimError.h"
#include "Values.h"
#include "ddal_error.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <variant>

namespace boardsim {
namespace {

struct ControlArguments {
  std::string target;
  std::string value;
};

/// @return the simulated sensors of the board itself
std::string SimulatedDevices() {
  std::string text;
  for (const hwapi::board::Temperature& sensor : hwapi::board::OwnBoard().temperatures) {
    if (!std::holds_alternative<hwapi::board::SimTemperature>(sensor.source)) continue;
    if (SlotOfSensor(hwapi::board::OwnBoard(), sensor.device) != nullptr) continue;
    char device[16];
    std::snprintf(device, sizeof device, " 0x%x", sensor.device);
    text += device;
  }
  return text.empty() ? " none" : text;
}

/// @return why a sensor cannot be changed
std::string NoSensorText(const std::string& device, u32 id) {
  if (const UnitSlot* slot = SlotOfSensor(hwapi::board::OwnBoard(), id)) {
    const std::string name(slot->name);
    return "slot " + name + " has no unit with a simulated sensor " + device + "; plug one, such as `boardsim plug " +
           name + " m`; `boardsim status` shows what is there";
  }
  return device + " is no simulated sensor of this board; there are" + SimulatedDevices();
}

/// @throw SimError (refused) for an error code of the driver
void ExpectDone(i32 error) {
  if (error == 0) return;
  char text[80];
  throw SimError(ExitCode::Refused, std::string("the hardware refuses: ") + ddal_strerror(error, text, sizeof text));
}

void RunTemp(const ControlArguments& arguments, const Settings& settings) {
  const TempReq request = ParseTemp(arguments.target, arguments.value);
  settings.State().Join();
  const i32 error = RequestTemp(request);
  if (error == DDAL_ERR_NO_DEVICE) throw SimError(ExitCode::Refused, NoSensorText(arguments.target, request.device));
  ExpectDone(error);
}

std::string SimulatedFans() {
  std::string text;
  for (const hwapi::board::Fan& fan : hwapi::board::OwnBoard().fans) {
    if (!std::holds_alternative<hwapi::board::SimFan>(fan.source)) continue;
    const std::string name = commandline::FanNameOf(fan.id);
    text += " " + std::to_string(fan.id) + (name.empty() ? "" : " (" + name + ")");
  }
  return text.empty() ? " none" : text;
}

void RunFan(const ControlArguments& arguments, const Settings& settings) {
  const FanReq request = ParseFan(arguments.target, arguments.value);
  settings.State().Join();
  const i32 error = RequestFan(request);
  if (error == DDAL_ERR_NO_DEVICE) {
    throw SimError(ExitCode::Refused,
                   arguments.target + " is no simulated fan of this board; there are" + SimulatedFans());
  }
  ExpectDone(error);
}

void RunTag(const ControlArguments& arguments, const Settings& settings) {
  const std::string bytes = ParseTagValue(arguments.value);
  settings.State().Join();
  const i32 error = AaConfigTagPublicSet(arguments.target.c_str(), bytes.data(), static_cast<u32>(bytes.size()));
  if (error == 0) return;
  throw SimError(ExitCode::Refused, "cannot set the tag " + arguments.target + ": " + std::strerror(error));
}

void RunClock(const ControlArguments& arguments, const Settings& settings) {
  settings.State().Join();
  SAaTime now{};
  AaUtcTimeGet(&now);
  const SAaTime wanted = ParseClock(arguments.value, now);
  if (const i32 error = AaUtcTimeSet(&wanted); error != 0) {
    throw SimError(ExitCode::Usage, "'" + arguments.value + "' is no calendar time: " + std::strerror(error));
  }
  std::printf("clock %04u-%02u-%02uT%02u:%02u:%02uZ\n", wanted.year, wanted.month, wanted.day, wanted.hour,
              wanted.minute, wanted.second);
}

}  // namespace

void AddControlCommands(CLI::App& app, Settings& settings) {
  const auto arguments = std::make_shared<ControlArguments>();
  const auto add = [&](const char* name, const char* text, auto run) {
    CLI::App* command = app.add_subcommand(name, text);
    command->callback(
        [&settings, arguments, run] { settings.run = [&settings, arguments, run] { run(*arguments, settings); }; });
    return command;
  };
  CLI::App* temp = add("temp", "Let a simulated sensor show a value, fail, or follow the physics again", RunTemp);
  temp->add_option("DEVICE", arguments->target, "Device id, e.g. 0x10000")->required();
  temp->add_option("VALUE", arguments->value, "Degrees Celsius, fail=CODE, or auto")->required();
  CLI::App* fan = add("fan", "Let a simulated fan stick, fail, or follow the physics again", RunFan);
  fan->add_option("ID", arguments->target, "Driver id from 0, 201 to 203, or GAR_FAN1 to GAR_FAN3")->required();
  fan->add_option("VALUE", arguments->value,
                  "rpm=N (stuck at that speed; 0 stands still), fail-read=CODE, fail-write=CODE, fail=CODE (both), or "
                  "auto (none of these); each leaves the others as they are")
      ->required();
  CLI::App* tag = add("tag", "Set a public configuration tag", RunTag);
  tag->add_option("NAME", arguments->target, "Name of the tag")->required();
  tag->add_option("VALUE", arguments->value, "A number (4 bytes) or text; text:... is text")->required();
  add("clock", "Set the board's clock", RunClock)
      ->add_option("TIME", arguments->value,
                   "+1h, -10min, 2030-01-01T00:00:00Z, now (the host's time), or unset (1970)")
      ->required();
}

}  // namespace boardsim
