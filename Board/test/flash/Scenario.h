/// @file
/// What the service writes, one file or group of files at a time.
#pragma once

#include "BlackBoxData.h"
#include "Expectation.h"
#include "FileCalls.h"

#include <iosfwd>
#include <string>

namespace flash {

/// A flash, and a change that the service makes on it.
struct Scenario {
  using BlackBoxData = ps::hwapi::common::climate::BlackBoxData;

  const char* name;
  /// Alters the flash of a board that has been running for a while.
  void (*prepare)(Tree& flash);
  /// Lets the black box see something to be written; null when it needs nothing.
  void (*use)(BlackBoxData& blackBox);
  /// Makes the change when the black box is in use, also several times; null when taking it into use makes it.
  void (*change)(BlackBoxData& blackBox);
  /// Into how many blocks a power cut may cut a file: fewer where there are more files, or larger ones.
  std::size_t mostBlocks = 96;
  /// What a power cut leaves behind goes when the change is made the next time, not already with the restart.
  bool cleanedByChange = false;

  bool IsMadeByStart() const { return change == nullptr; }
};

extern const Scenario kScenarios[];
extern const std::size_t kNumberOfScenarios;

/// @return the flash before the change, identities as they are on the flash now laid out
Tree LayOut(const Scenario& scenario);

/// Starts the black box and makes the change.
/// @param observer sees the file calls of the change; null when nobody does
/// @return "", else what did not work
std::string StartAndChange(const Scenario& scenario, FileCallObserver* observer);

void PrintTo(const Scenario& scenario, std::ostream* out);

}  // namespace flash
