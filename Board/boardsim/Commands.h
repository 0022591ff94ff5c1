/// @file
/// The commands. Each adds itself to the command line; the one that was chosen runs in Settings::run once the line is
/// parsed.
#pragma once

#include "StateDirectory.h"

#include <CLI/App.hpp>

#include <functional>
#include <string>

namespace boardsim {

/// Options of every command.
struct Settings {
  std::string state;          ///< --state; empty: the default
  std::function<void()> run;  ///< the chosen command; throws SimError

  StateDirectory State() const { return StateDirectory::FromOption(state); }
};

void AddUpCommand(CLI::App& app, Settings& settings);
/// The background process of `up`; not for people.
void AddSimulateCommand(CLI::App& app, Settings& settings);
void AddDownCommand(CLI::App& app, Settings& settings);
void AddStatusCommand(CLI::App& app, Settings& settings);
/// temp, fan, tag, clock
void AddControlCommands(CLI::App& app, Settings& settings);
void AddResetTypeCommand(CLI::App& app, Settings& settings);
void AddResetCommand(CLI::App& app, Settings& settings);
void AddDetectCommand(CLI::App& app, Settings& settings);
/// plug, unplug, autodet
void AddUnitCommands(CLI::App& app, Settings& settings);

/// Prints the endpoints and whether they are online.
void PrintEndpoints();
/// Prints the slots for processing units and what is in them; nothing on a board without slots.
void PrintSlots();

}  // namespace boardsim
