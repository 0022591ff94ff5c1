/// @file
/// The command groups. Each adds its subcommands to the command line; the one that was chosen runs in Settings::run
/// once the line is parsed.
#pragma once

#include <CLI/App.hpp>

#include <chrono>
#include <functional>

namespace clmctl {

/// Options of every command.
struct Settings {
  bool json = false;
  std::chrono::milliseconds timeout{2000};  ///< longest wait for an answer, host time
  std::function<void()> run;                ///< the chosen command; throws CommandError
};

void AddTempCommands(CLI::App& app, Settings& settings);
void AddFanCommands(CLI::App& app, Settings& settings);
void AddTagCommands(CLI::App& app, Settings& settings);
void AddTechlogCommands(CLI::App& app, Settings& settings);
void AddSendCommand(CLI::App& app, Settings& settings);
void AddBlackBoxCommands(CLI::App& app, Settings& settings);
void AddResetCommand(CLI::App& app, Settings& settings);

}  // namespace clmctl
