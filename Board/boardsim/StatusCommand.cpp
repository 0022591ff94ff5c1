/// @file
/// boardsim status: processes, endpoints, slots, sensors, fans, clock.
#include "AaSysTime.h"
#include "BoardDescription.h"
#include "Commands.h"
#include "ControlClient.h"
#include "Fans.h"
#include "OnlineTag.h"
#include "SensorNames.h"
#include "ServiceNames.h"
#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_temp.h"

#include <cstdio>
#include <string>
#include <variant>

namespace boardsim {
namespace {

/// @return "" for a sensor that is not there, as its processing unit is not
std::string ModeText(const SimulatorStatus& status, const hwapi::board::Temperature& sensor) {
  if (std::holds_alternative<hwapi::board::HwmonTemperature>(sensor.source)) return "kernel";
  for (const SensorStatus& known : status.sensors) {
    if (known.device != sensor.device) continue;
    if (known.mode == SensorMode::Absent) return "";
    if (known.mode == SensorMode::Pinned) return "pinned";
    return known.mode == SensorMode::Failing ? "failing" : "auto";
  }
  return "unknown";
}

std::string ValueText(u32 device) {
  int thousandths = 0;
  char text[80];
  if (const int error = ddal_temp_get_curr(device, &thousandths); error != 0) {
    return std::string("- ") + ddal_strerror(error, text, sizeof text);
  }
  std::snprintf(text, sizeof text, "%.3f C", thousandths / 1000.0);
  return text;
}

void PrintProcesses(const StatusResp& status) {
  std::printf("PROCESS      PID\n%-10s %5d\n", "simulator", status.simulatorPid);
  if (status.daemonStarts == 0) {
    std::printf("%-10s     -  none (--no-daemon)\n", "daemon");
  } else if (status.daemonPid == 0) {
    std::printf("%-10s     -  not running just now, started %u times\n", "daemon", status.daemonStarts);
  } else {
    std::printf("%-10s %5d  started %u %s\n", "daemon", status.daemonPid, status.daemonStarts,
                status.daemonStarts == 1 ? "time" : "times");
  }
}

void PrintSensors(const SimulatorStatus& status) {
  std::printf("\nSENSOR                       MODE        VALUE\n");
  for (const hwapi::board::Temperature& sensor : hwapi::board::OwnBoard().temperatures) {
    const std::string mode = ModeText(status, sensor);
    if (mode.empty()) continue;
    std::printf("0x%-8x %-17s %-8s %s\n", sensor.device, SensorNameOf(sensor.device).c_str(), mode.c_str(),
                ValueText(sensor.device).c_str());
  }
}

std::string ModeText(const SimulatorStatus& status, const hwapi::board::Fan& fan) {
  if (std::holds_alternative<hwapi::board::HwmonFan>(fan.source)) return "kernel";
  for (const FanStatus& known : status.fans) {
    if (known.fan != fan.id) continue;
    std::string text = known.stuck != 0 ? "stuck" : "auto";
    if (known.readFailure != 0) text += ", fail-read=" + std::to_string(known.readFailure);
    if (known.writeFailure != 0) text += ", fail-write=" + std::to_string(known.writeFailure);
    return text;
  }
  return "unknown";
}

/// @return what a driver reads and its unit, or "-"
std::string FanValueText(int (*read)(ddal_fan_id_t, int*), u32 id, const char* unit) {
  int value = 0;
  return read(id, &value) == 0 ? std::to_string(value) + " " + unit : "-";
}

void PrintFans(const SimulatorStatus& status) {
  if (hwapi::board::OwnBoard().fans.empty()) return;
  std::printf("\nFAN                SPEED  CONTROL  FREQUENCY  MODE\n");
  for (const hwapi::board::Fan& fan : hwapi::board::OwnBoard().fans) {
    std::printf("%-3u %-8s %11s  %7s  %9s  %s\n", fan.id, commandline::FanNameOf(fan.id).c_str(),
                FanValueText(ddal_fan_get_rpm, fan.id, "rpm").c_str(),
                FanValueText(ddal_fan_get_pwm, fan.id, "%").c_str(),
                FanValueText(ddal_fan_get_fan_pwm_freq, fan.id, "Hz").c_str(), ModeText(status, fan).c_str());
  }
}

void PrintClock() {
  SAaTime now{};
  AaUtcTimeGet(&now);
  std::printf("\nclock %04u-%02u-%02uT%02u:%02u:%02uZ, speed %u\n", now.year, now.month, now.day, now.hour, now.minute,
              now.second, hwapi::board::OwnBoard().clock.speed);
}

void RunStatus(const Settings& settings) {
  const StateDirectory state = settings.State();
  state.Join();
  const SimulatorStatus status = RequestStatus();
  PrintProcesses(status.header);
  std::printf("\n");
  PrintEndpoints();
  PrintSlots();
  PrintSensors(status);
  PrintFans(status);
  PrintClock();
  std::printf("export HWAPI_RUN=%s\n", state.Run().c_str());
}

}  // namespace

void PrintEndpoints() {
  std::printf("ENDPOINT     TASK   STATE\n");
  for (const commandline::NamedService& endpoint : commandline::kServices) {
    std::printf("%-12s 0x%-4x %s\n", std::string(endpoint.name).c_str(), endpoint.task,
                OnlineTagText(endpoint.task).c_str());
  }
}

void AddStatusCommand(CLI::App& app, Settings& settings) {
  app.add_subcommand("status", "Show processes, endpoints, slots, sensors, fans and clock of a board")
      ->callback([&settings] { settings.run = [&settings] { RunStatus(settings); }; });
}

}  // namespace boardsim
