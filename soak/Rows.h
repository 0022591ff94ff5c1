/// @file
/// The attacks. Each starts a board and a daemon of its own, and puts its figures into the report.
#pragma once

#include "Report.h"

#include <string>

namespace soak {

/// How the rows run.
struct Settings {
  double seconds = 10;  ///< length of each step
  unsigned seed = 1;    ///< of what attackers choose at random
  std::string daemon;   ///< program that is attacked
  bool IsShort() const { return seconds < 5; }
};

void AttackByFlood(const Settings& settings, Report& report);
void AttackByClients(const Settings& settings, Report& report);
void AttackByNumbers(const Settings& settings, Report& report);
void AttackByIdleConnections(const Settings& settings, Report& report);
void AttackByEnds(const Settings& settings, Report& report);
void AttackByHangingChips(const Settings& settings, Report& report);

}  // namespace soak
