#include "Refusal.h"

#include <algorithm>
#include <vector>

namespace commandline {
namespace {

/// @return the names of the commands that people may give; hidden ones have no group
std::vector<std::string> CommandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); })) {
    names.push_back(command->get_name());
  }
  return names;
}

std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i != 0) text += i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

bool IsOption(const std::string& word) { return word.size() > 1 && word.front() == '-'; }

}  // namespace

std::string Refusal(const CLI::App& app, const CLI::ParseError& error) {
  // What people left out or wrote too much of; anything else is said by the error itself.
  const bool aboutWords = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) ||
                          error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
  const CLI::App* command = &app;
  std::string path = app.get_name();
  while (!command->get_subcommands().empty()) {
    command = command->get_subcommands().front();
    path += " " + command->get_name();
  }
  const std::vector<std::string> unknown = app.remaining(true), commands = CommandsOf(*command);
  const auto option = std::find_if(unknown.begin(), unknown.end(), IsOption);
  const std::string help = "; `" + path + " --help` tells more";
  if (!aboutWords) return std::string(error.what()) + help;
  if (option != unknown.end()) return "'" + *option + "' is no option of `" + path + "`" + help;
  if (!commands.empty()) {
    const std::string what = unknown.empty() ? "`" + path + "` needs a command"
                                             : "'" + unknown.front() + "' is no command of `" + path + "`";
    return what + ": give " + Listed(commands) + help;
  }
  if (!unknown.empty()) return "'" + unknown.front() + "' is one argument too many for `" + path + "`" + help;
  return std::string(error.what()) + help;
}

}  // namespace commandline
