/// Attacks a daemon and says what came of it.
#include "PrivateRoot.h"
#include "Refusal.h"
#include "Report.h"
#include "Rows.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Row {
  const char* name;
  void (*attack)(const soak::Settings&, soak::Report&);
};
constexpr Row kRows[] = {
    {.name = "flood", .attack = &soak::AttackByFlood},     {.name = "clients", .attack = &soak::AttackByClients},
    {.name = "numbers", .attack = &soak::AttackByNumbers}, {.name = "idle", .attack = &soak::AttackByIdleConnections},
    {.name = "ends", .attack = &soak::AttackByEnds},       {.name = "hang", .attack = &soak::AttackByHangingChips},
};

enum Status : int { kKept = 0, kExceeded = 1, kUsage = 2, kSkipped = 77 };

std::vector<std::string> RowNames() {
  std::vector<std::string> names;
  for (const Row& row : kRows) names.emplace_back(row.name);
  return names;
}

int RunRows(const std::vector<std::string>& names, const soak::Settings& settings) {
  soak::Report report(!settings.IsShort());
  for (const Row& row : kRows) {
    if (!names.empty() && std::ranges::find(names, row.name) == names.end()) continue;
    report.BeginRow(row.name);
    row.attack(settings, report);
    report.EndRow();
  }
  return report.Print() ? kKept : kExceeded;
}

}  // namespace

int main(int argc, char** argv) {
  soak::Settings settings{.daemon = CLM_PROGRAM};
  std::vector<std::string> names;
  CLI::App app("Attacks on the climate service", "clm_soak");
  app.add_option("ROW", names, "Attacks; all when none is named")->check(CLI::IsMember(RowNames()));
  app.add_option("--seconds", settings.seconds, "Length of each step; below 5 times are not judged")
      ->check(CLI::Range(1, 3600))
      ->capture_default_str();
  app.add_option("--seed", settings.seed, "Of what attackers choose at random")->capture_default_str();
  app.add_option("--daemon", settings.daemon, "Program that is attacked")->check(CLI::ExistingFile);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::fprintf(stderr, "clm_soak: %s\n", commandline::Refusal(app, error).c_str());
    return kUsage;
  }

  // The black box's paths are absolute: in a root of its own nobody else has them.
  if (const std::string problem = ps::hwapi::common::climate::EnterPrivateRoot(); !problem.empty()) {
    std::fprintf(stderr, "clm_soak: no private root: %s\n", problem.c_str());
    return kSkipped;
  }
  std::signal(SIGPIPE, SIG_IGN);
  return RunRows(names, settings);
}
