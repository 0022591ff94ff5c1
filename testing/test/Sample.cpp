// Tests of every outcome, for the tests of the entry: no test run has this program's suites.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

int g_leftBehind = 0;

TEST(Neighbours, FirstFindsNothing) { EXPECT_EQ(++g_leftBehind, 1); }
TEST(Neighbours, SecondFindsNothing) { EXPECT_EQ(++g_leftBehind, 1); }

TEST(Outcome, Passes) {}
TEST(Outcome, Fails) { FAIL() << "as it has to"; }
TEST(Outcome, Skips) { GTEST_SKIP() << "a part is missing"; }
TEST(Outcome, IsKilled) { raise(SIGKILL); }
TEST(Outcome, Exits) { std::exit(3); }
TEST(Outcome, Hangs) {
  for (;;) pause();
}
TEST(Outcome, DISABLED_Fails) { FAIL(); }

TEST(Death, InAForkedProcess) {
  GTEST_FLAG_SET(death_test_style, "fast");
  EXPECT_DEATH(std::abort(), "");
}
TEST(Death, InAProgramStartedForIt) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(std::abort(), "");
}

class Parameter : public testing::TestWithParam<int> {};
TEST_P(Parameter, IsRun) { EXPECT_LT(GetParam(), 3); }
INSTANTIATE_TEST_SUITE_P(Each, Parameter, testing::Values(1, 2));

}  // namespace
