// File calls fail one after the other: the flash is full, read-only or worn out, or a signal comes.
#include "ScenarioTest.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <sstream>
#include <tuple>

namespace flash {
namespace {

using enum CallKind;

/// What is wrong with the flash.
struct Trouble {
  const char* name;
  int error;  ///< as FileCallObserver::Before gives it
  std::set<CallKind> calls;
  bool lasts;      ///< from the first failing call on all fail
  bool isSerious;  ///< the change may fail
};

const Trouble kTroubles[] = {
    {.name = "full",
     .error = ENOSPC,
     .calls = {Create, Write, Sync, Rename, MakeDirectory},
     .lasts = true,
     .isSerious = true},
    {.name = "read_only",
     .error = EROFS,
     .calls = {Create, Rename, Remove, MakeDirectory, SetMode, SetOwner},
     .lasts = true,
     .isSerious = true},
    {.name = "worn_out_in_one_place",
     .error = EIO,
     .calls = {Open, Create, Read, Write, Sync, SetMode, SetOwner, Lock, Rename, Remove, MakeDirectory, List, Examine,
               Close},
     .lasts = false,
     .isSerious = true},
    {.name = "worn_out",
     .error = EIO,
     .calls = {Open, Create, Read, Write, Sync, SetMode, SetOwner, Lock, Rename, Remove, MakeDirectory, List, Examine,
               Close},
     .lasts = true,
     .isSerious = true},
    {.name = "writing_in_pieces",
     .error = FileCallObserver::kOneByteOnly,
     .calls = {Write},
     .lasts = false,
     .isSerious = false},
    {.name = "interrupted_by_a_signal",
     .error = EINTR,
     .calls = {Open, Read, Write, Sync, Lock},
     .lasts = false,
     .isSerious = false},
};

void PrintTo(const Trouble& trouble, std::ostream* out) { *out << trouble.name; }

/// Lets the n-th call fail of those that the trouble concerns.
class TroubledCalls : public FileCallObserver {
 public:
  TroubledCalls(const Trouble& trouble, unsigned first) : m_trouble(trouble), m_first(first) {}
  int Before(CallKind kind) override {
    if (!m_trouble.calls.contains(kind)) return 0;
    ++m_count;
    const bool fails = m_trouble.lasts ? m_count >= m_first : m_count == m_first;
    m_hasFailed |= fails;
    return fails ? m_trouble.error : 0;
  }
  void After(const Operation&) override {}
  bool HasFailed() const { return m_hasFailed; }

 private:
  const Trouble& m_trouble;
  const unsigned m_first;
  unsigned m_count = 0;
  bool m_hasFailed = false;
};

/// The service's black box keeps this one open for good.
constexpr const char* kTrace = "/ffs/fs1/config/lifedata/blackbox_temperature";

/// More calls no change makes.
constexpr unsigned kMostCalls = 1000;

using Case = std::tuple<Scenario, Trouble>;

class FailingFlash : public ::testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    const std::string problem = m_test.Prepare(TheScenario());
    if (!problem.empty()) GTEST_SKIP() << problem;
  }
  static const Scenario& TheScenario() { return std::get<0>(GetParam()); }
  static const Trouble& TheTrouble() { return std::get<1>(GetParam()); }

  /// In a life: makes the change on the troubled flash, and once more when the trouble is over.
  Faults ChangeInTrouble(TroubledCalls& calls) const {
    const bool isStarted = StartAndChange(TheScenario(), &calls).empty();
    Faults faults = JudgeInTrouble(ReadFlash());
    if (TheScenario().IsMadeByStart()) return faults;
    if (!isStarted) return {"the black box cannot be taken into use"};
    TheScenario().change(*Scenario::BlackBoxData::getInstance());
    Add(faults, JudgeDone(ReadFlash()));
    return faults;
  }
  Faults JudgeInTrouble(const Tree& state) const {
    Faults faults = m_test.Expected().FaultsOf(state);
    const bool isDone = m_test.Expected().FaultsOfDone(state).empty();
    if (!isDone && !TheTrouble().isSerious) faults.push_back("the change was not made");
    if (!isDone && TheTrouble().isSerious && !IsTold()) faults.push_back("no line tells the file and the error");
    if (!TheTrouble().calls.contains(Remove)) Add(faults, m_test.Expected().StraysOf(state));
    for (const std::string& path : OpenFiles()) {
      if (!path.starts_with(kTrace)) faults.push_back(path + " was left open");
    }
    return faults;
  }
  Faults JudgeDone(const Tree& state) const {
    Faults faults = m_test.Expected().FaultsOfDone(state);
    Add(faults, m_test.Expected().StraysOf(state));
    return faults;
  }
  /// @return whether a line at Error has a path and the error's text
  static bool IsTold() {
    std::istringstream log(Log());
    for (std::string line; std::getline(log, line);) {
      if (line.find("ERROR") != std::string::npos && line.find("/ffs/") != std::string::npos &&
          line.find(std::strerror(TheTrouble().error)) != std::string::npos) {
        return true;
      }
    }
    return false;
  }
  static void Add(Faults& faults, const Faults& more) { faults.insert(faults.end(), more.begin(), more.end()); }

  ScenarioTest m_test;
};

TEST_P(FailingFlash, KeepsEveryFileWholeAndIsToldAndTheNextChangeIsMade) {
  const std::string nothingFailed = "nothing failed";
  unsigned first = 1;
  for (; first < kMostCalls; ++first) {
    SCOPED_TRACE("from call " + std::to_string(first) + " on");
    LayOut(TheScenario());
    const auto faults = Live([&] {
      TroubledCalls calls(TheTrouble(), first);
      const Faults found = ChangeInTrouble(calls);
      return calls.HasFailed() ? TextOf(found) : nothingFailed;
    });
    if (faults == nothingFailed) break;
    ASSERT_EQ(faults, "") << Log();
    if (!TheScenario().IsMadeByStart()) continue;
    ASSERT_EQ(Live([] { return StartAndChange(TheScenario(), nullptr); }), "") << Log();
    ASSERT_EQ(TextOf(JudgeDone(ReadFlash())), "");
  }
  EXPECT_GT(first, 1u);
  EXPECT_LT(first, kMostCalls);
}

/// Files of earlier software are left out: the service removes them whether or not they could be copied.
std::vector<Scenario> Scenarios() {
  std::vector<Scenario> scenarios;
  std::copy_if(kScenarios, kScenarios + kNumberOfScenarios, std::back_inserter(scenarios),
               [](const Scenario& scenario) { return scenario.name != std::string("files_of_earlier_software"); });
  return scenarios;
}

INSTANTIATE_TEST_SUITE_P(During, FailingFlash,
                         ::testing::Combine(::testing::ValuesIn(Scenarios()), ::testing::ValuesIn(kTroubles)),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).name) + "_" + std::get<1>(test.param).name;
                         });

}  // namespace
}  // namespace flash
