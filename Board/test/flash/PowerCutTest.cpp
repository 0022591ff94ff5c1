// The power is cut at any moment of a change, and the service starts again.
#include "FlashModel.h"
#include "ScenarioTest.h"

#include <algorithm>
#include <cstdio>

namespace flash {
namespace {

/// So many different states each change must have: a model that looks at less would prove nothing.
constexpr std::size_t kFewestStates = 200;

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
  /// @return the first faults when syncs of a kind are taken for not done
  Faults JudgeWithout(Operation::Kind sync) const {
    Operations unsynced = m_test.Done();
    std::erase_if(unsynced, [sync](const Operation& operation) { return operation.kind == sync; });
    Faults faults;
    FlashModel(Expected().Before(), unsynced, GetParam().mostBlocks).ForEachState([&](const Tree& state, bool atEnd) {
      faults = Judge(state, atEnd);
      return faults.empty();
    });
    return faults;
  }

  ScenarioTest m_test;
};

TEST_P(PowerCut, LeavesEveryFileWholeAndTheRestartLeavesNoOther) {
  Faults faults;
  const FlashModel model(Expected().Before(), m_test.Done(), GetParam().mostBlocks);
  const auto count = model.ForEachState([&](const Tree& state, bool atEnd) {
    faults = Judge(state, atEnd);
    if (faults.empty()) faults = JudgeRestart(state);
    return faults.empty();
  });
  std::printf("%zu operations, %zu states, %zu of them different\n", m_test.Done().size(), count.states,
              count.different);
  EXPECT_TRUE(faults.empty()) << TextOf(faults);
  EXPECT_GE(count.different, kFewestStates);
}

TEST_P(PowerCut, IsNoticedWhereFilesAreNotSynced) { EXPECT_FALSE(JudgeWithout(Operation::Kind::Sync).empty()); }

TEST_P(PowerCut, IsNoticedWhereFoldersAreNotSynced) { EXPECT_FALSE(JudgeWithout(Operation::Kind::SyncFolder).empty()); }

INSTANTIATE_TEST_SUITE_P(During, PowerCut, ::testing::ValuesIn(kScenarios, kScenarios + kNumberOfScenarios),
                         [](const auto& scenario) { return scenario.param.name; });

}  // namespace
}  // namespace flash
