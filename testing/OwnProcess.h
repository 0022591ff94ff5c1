/// Each test of a program in a process of its own.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace clm::testing {

/// The tests that the flags of GoogleTest select, as "Suite.Name", in the program's order; disabled ones are left out
/// unless the flags ask for them. Call it after `InitGoogleTest`.
std::vector<std::string> SelectedTests();

enum class Outcome {
  Passed,
  Skipped,
  Failed,  ///< also: ended by a signal, or by the sanitizer
  TimedOut,
};

struct Result {
  Outcome outcome = Outcome::Failed;
  std::string output;  ///< both streams, as the process wrote them
  std::string end;     ///< how the process ended if it did not pass, e.g. "ended by signal 11"
  std::chrono::milliseconds took{0};
};

/// Runs one test in a process forked from this one, which must have no other threads; kills it once `limit` is over.
Result RunInOwnProcess(const std::string& test, std::chrono::seconds limit);

/// Runs the selected tests one after the other and prints a line for each, and the output of those that did not pass.
/// Returns the program's exit status: 0 if all passed, 77 if all were skipped, else 1.
int RunEachInOwnProcess(std::chrono::seconds limit);

}  // namespace clm::testing
