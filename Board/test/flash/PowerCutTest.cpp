// The power is cut at any moment of a change, and the service starts again.
#include "ScenarioTest.h"

#include <algorithm>

namespace flash {
namespace {

class PowerCut : public ::testing::TestWithParam<Scenario> {
 protected:
  void SetUp() override {
    const std::string problem = m_test.Prepare(GetParam());
    if (!problem.empty()) GTEST_SKIP() << problem;
  }
  const Expectation& Expected() const { return m_test.Expected(); }
  /// Judges what the power cut left.
  Faults Judge(const Tree& state, bool atEnd) const {
    return atEnd ? Expected().FaultsOfDone(state) : Expected().FaultsOf(state);
  }
  /// Starts the service on that and judges what it makes of it.
  Faults JudgeRestart(const Tree& state) const {
    LayOutFlash(state);
    const Scenario without{.name = "", .prepare = nullptr, .use = nullptr, .change = [](Scenario::BlackBoxData&) {}};
    const Scenario& scenario = GetParam().cleanedByChange ? GetParam() : without;
    const auto problem = Live([&scenario] { return StartAndChange(scenario, nullptr); });
    if (!problem) return {"the service ended:\n" + Log()};
    if (!problem->empty()) return {*problem + ":\n" + Log()};
    const Tree after = ReadFlash();
    Faults faults = GetParam().IsMadeByStart() ? Expected().FaultsOfDone(after) : Expected().FaultsOf(after);
    std::ranges::copy(Expected().StraysOf(after), std::back_inserter(faults));
    return faults;
  }
  bool IsNoticedWithout(Operation::Kind sync) const {
    return !m_test
                .FaultsWithout(sync, GetParam().mostBlocks,
                               [this](const Tree& state, bool atEnd) { return Judge(state, atEnd); })
                .empty();
  }

  ScenarioTest m_test;
};

TEST_P(PowerCut, LeavesEveryFileWholeAndTheRestartLeavesNoOther) {
  m_test.ExpectNoFaults(GetParam().mostBlocks, [this](const Tree& state, bool atEnd) {
    const Faults faults = Judge(state, atEnd);
    return faults.empty() ? JudgeRestart(state) : faults;
  });
}

TEST_P(PowerCut, IsNoticedWhereFilesAreNotSynced) { EXPECT_TRUE(IsNoticedWithout(Operation::Kind::Sync)); }

TEST_P(PowerCut, IsNoticedWhereFoldersAreNotSynced) { EXPECT_TRUE(IsNoticedWithout(Operation::Kind::SyncFolder)); }

INSTANTIATE_TEST_SUITE_P(During, PowerCut, ::testing::ValuesIn(kScenarios, kScenarios + kNumberOfScenarios),
                         [](const auto& scenario) { return scenario.param.name; });

}  // namespace
}  // namespace flash
