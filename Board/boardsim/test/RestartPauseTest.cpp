#include "RestartPause.h"

#include <gtest/gtest.h>

namespace boardsim {
namespace {

using std::chrono::milliseconds;

/// A run that is not a good one.
constexpr milliseconds kQuick{5};

void LetItEndQuickly(RestartPause& pause, int times) {
  for (int i = 0; i < times; ++i) pause.Next(kQuick);
}

TEST(RestartPause, DoublesAtFirst) {
  RestartPause pause;
  EXPECT_EQ(pause.Next(kQuick), milliseconds(100));
  EXPECT_EQ(pause.Next(kQuick), milliseconds(200));
  EXPECT_EQ(pause.Next(kQuick), milliseconds(400));
  EXPECT_EQ(pause.Next(kQuick), milliseconds(800));
}

TEST(RestartPause, IsAtMostASecondForTheFirstTenStarts) {
  RestartPause pause;
  for (int start = 1; start <= 10; ++start) EXPECT_LE(pause.Next(kQuick), milliseconds(1'000)) << start;
}

TEST(RestartPause, IsTenSecondsForEachFurtherStart) {
  RestartPause pause;
  LetItEndQuickly(pause, 10);
  for (int start = 11; start <= 1'000; ++start) ASSERT_EQ(pause.Next(kQuick), milliseconds(10'000)) << start;
}

TEST(RestartPause, IsShortAgainAfterAGoodRun) {
  RestartPause pause;
  LetItEndQuickly(pause, 20);
  EXPECT_EQ(pause.Next(milliseconds(60'000)), milliseconds(100));
  EXPECT_EQ(pause.Next(kQuick), milliseconds(200));
}

TEST(RestartPause, IsAtMostASecondForTenStartsAfterAGoodRun) {
  RestartPause pause;
  LetItEndQuickly(pause, 20);
  EXPECT_LE(pause.Next(milliseconds(60'000)), milliseconds(1'000));
  for (int start = 2; start <= 10; ++start) EXPECT_LE(pause.Next(kQuick), milliseconds(1'000)) << start;
  EXPECT_EQ(pause.Next(kQuick), milliseconds(10'000));
}

}  // namespace
}  // namespace boardsim
