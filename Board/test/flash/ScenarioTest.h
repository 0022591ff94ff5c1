/// @file
/// What the tests of all scenarios begin with.
#pragma once

#include "FileCalls.h"
#include "Life.h"
#include "PrivateRoot.h"
#include "Scenario.h"

#include <gtest/gtest.h>

namespace flash {

/// Lays a scenario's flash out in a private root and makes the change once, undisturbed.
class ScenarioTest {
 public:
  /// @return "", else why there is no private root here
  std::string Prepare(const Scenario& scenario) {
    if (std::string problem = ps::hwapi::common::climate::EnterPrivateRoot(); !problem.empty()) return problem;
    DescribeBoard();
    const Tree before = LayOut(scenario);
    const auto text = Live([&scenario] {
      Recorder recorder;
      const std::string problem = StartAndChange(scenario, &recorder);
      return problem.empty() ? ToText(recorder.Done()) : "";
    });
    EXPECT_TRUE(text && !text->empty()) << Log();
    m_operations = FromText(text.value_or(""));
    m_expected = Expectation(before, ReadFlash());
    return "";
  }

  const Operations& Done() const { return m_operations; }
  const Expectation& Expected() const { return m_expected; }

 private:
  Operations m_operations;
  Expectation m_expected{{}, {}};
};

/// @return the faults as one text
inline std::string TextOf(const Faults& faults) {
  std::string text;
  for (const std::string& fault : faults) text += fault + "\n";
  return text;
}

}  // namespace flash
