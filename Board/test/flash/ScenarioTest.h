/// @file
/// What the tests of all scenarios begin with.
#pragma once

#include "FileCalls.h"
#include "FlashModel.h"
#include "Life.h"
#include "PrivateRoot.h"
#include "Scenario.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

namespace flash {

/// @return the faults as one text
inline std::string TextOf(const Faults& faults) {
  std::string text;
  for (const std::string& fault : faults) text += fault + "\n";
  return text;
}

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

  using Judge = std::function<Faults(const Tree& state, bool atEnd)>;
  /// Lets every state be judged in which a power cut can leave the flash, until one has faults; prints how many there
  /// were.
  void ExpectNoFaults(std::size_t mostBlocks, const Judge& judge) const {
    /// So many different states each change must have: a model that looks at less would prove nothing.
    constexpr std::size_t kFewestStates = 200;
    Faults faults;
    const auto count =
        FlashModel(m_expected.Before(), m_operations, mostBlocks).ForEachState([&](const Tree& state, bool atEnd) {
          faults = judge(state, atEnd);
          return faults.empty();
        });
    std::printf("%zu operations, %zu states, %zu of them different\n", m_operations.size(), count.states,
                count.different);
    EXPECT_TRUE(faults.empty()) << TextOf(faults);
    EXPECT_GE(count.different, kFewestStates);
  }
  /// @return the first faults when syncs of a kind are taken for not done
  Faults FaultsWithout(Operation::Kind sync, std::size_t mostBlocks, const Judge& judge) const {
    Operations unsynced = m_operations;
    std::erase_if(unsynced, [sync](const Operation& operation) { return operation.kind == sync; });
    Faults faults;
    FlashModel(m_expected.Before(), unsynced, mostBlocks).ForEachState([&](const Tree& state, bool atEnd) {
      faults = judge(state, atEnd);
      return faults.empty();
    });
    return faults;
  }

  const Operations& Done() const { return m_operations; }
  const Expectation& Expected() const { return m_expected; }

 private:
  Operations m_operations;
  Expectation m_expected{{}, {}};
};

}  // namespace flash
