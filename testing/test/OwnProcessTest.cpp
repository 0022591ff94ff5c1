/// The entry of every test program: which tests it runs, and what it makes of each outcome.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace {

struct Ended {
  int status = -1;
  std::string output;
};

Ended Sample(const std::string& filter, const std::string& environment = "") {
  const std::string command = environment + " " SAMPLE_PROGRAM " '--gtest_filter=" + filter + "' 2>&1";
  std::FILE* const program = popen(command.c_str(), "r");
  if (program == nullptr) throw std::runtime_error("popen: " + command);
  Ended run;
  std::array<char, 4096> part{};
  while (std::fgets(part.data(), part.size(), program) != nullptr) run.output += part.data();
  const int status = pclose(program);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

bool Has(const Ended& run, const std::string& text) { return run.output.find(text) != std::string::npos; }

TEST(OwnProcessTest, NoTestFindsWhatAnotherLeftBehind) {
  const Ended run = Sample("Neighbours.*");
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_TRUE(Has(run, "2 tests: 2 passed, 0 skipped, 0 failed")) << run.output;
}

TEST(OwnProcessTest, PassedTestIsOneLine) {
  const Ended run = Sample("Outcome.Passes");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output.find("passed  Outcome.Passes ("), 0U) << run.output;
  EXPECT_FALSE(Has(run, "[ RUN")) << run.output;
}

TEST(OwnProcessTest, FailedTestShowsItsOutputAndFailsTheProgram) {
  const Ended run = Sample("Outcome.Fails:Outcome.Passes");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Has(run, "FAILED  Outcome.Fails")) << run.output;
  EXPECT_TRUE(Has(run, "as it has to")) << run.output;
  EXPECT_TRUE(Has(run, "2 tests: 1 passed, 0 skipped, 1 failed")) << run.output;
}

TEST(OwnProcessTest, ProcessThatASignalEndsKeepsNoOtherTestFromRunning) {
  const Ended run = Sample("Outcome.IsKilled:Death.*");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Has(run, "Outcome.IsKilled: ended by signal 9")) << run.output;
  EXPECT_TRUE(Has(run, "3 tests: 2 passed, 0 skipped, 1 failed")) << run.output;
}

TEST(OwnProcessTest, ProcessThatExitsInTheMiddleOfATestFailed) {
  const Ended run = Sample("Outcome.Exits");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Has(run, "Outcome.Exits: exit status 3")) << run.output;
}

TEST(OwnProcessTest, HangingTestIsKilledAndNamed) {
  const Ended run = Sample("Outcome.Hangs", "CLM_TEST_SECONDS=1");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Has(run, "TIMEOUT Outcome.Hangs")) << run.output;
  EXPECT_TRUE(Has(run, "killed: not finished after 1 s")) << run.output;
}

TEST(OwnProcessTest, SkippedTestIsNamedWithItsReason) {
  const Ended run = Sample("Outcome.Skips:Outcome.Passes");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(Has(run, "SKIPPED Outcome.Skips")) << run.output;
  EXPECT_TRUE(Has(run, "a part is missing")) << run.output;
}

TEST(OwnProcessTest, ProgramOfWhichEachTestIsSkippedIsSkipped) { EXPECT_EQ(Sample("Outcome.Skips").status, 77); }

TEST(OwnProcessTest, SelectingNoTestFails) { EXPECT_EQ(Sample("Outcome.NoSuchTest").status, 1); }

TEST(OwnProcessTest, DisabledTestIsLeftOutUnlessAskedFor) {
  EXPECT_EQ(Sample("Outcome.DISABLED_*").status, 1);
  EXPECT_TRUE(Has(Sample("Outcome.DISABLED_*", "GTEST_ALSO_RUN_DISABLED_TESTS=1"), "FAILED  Outcome.DISABLED_Fails"));
}

TEST(OwnProcessTest, DeathTestsWorkInBothStyles) { EXPECT_EQ(Sample("Death.*").status, 0); }

TEST(OwnProcessTest, EachParameterIsATest) {
  EXPECT_TRUE(Has(Sample("Each/Parameter.*"), "2 tests: 2 passed, 0 skipped, 0 failed"));
}

TEST(OwnProcessTest, RepeatedTestGetsAProcessEachTime) {
  const Ended run = Sample("Neighbours.FirstFindsNothing", "GTEST_REPEAT=3");
  EXPECT_TRUE(Has(run, "3 tests: 3 passed, 0 skipped, 0 failed")) << run.output;
}

}  // namespace
