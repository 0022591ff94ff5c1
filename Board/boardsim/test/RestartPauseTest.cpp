#include "RestartPause.h"

#include <gtest/gtest.h>

namespace boardsim {
namespace {

using std::chrono::milliseconds;

TEST(RestartPause, DoublesWhileTheProgramEndsQuickly) {
  RestartPause pause;
  EXPECT_EQ(pause.Next(milliseconds(5)), milliseconds(100));
  EXPECT_EQ(pause.Next(milliseconds(5)), milliseconds(200));
  EXPECT_EQ(pause.Next(milliseconds(5)), milliseconds(400));
}

TEST(RestartPause, HasALimit) {
  RestartPause pause;
  for (int i = 0; i < 50; ++i) pause.Next(milliseconds(5));
  EXPECT_EQ(pause.Next(milliseconds(5)), milliseconds(30'000));
}

TEST(RestartPause, IsShortAgainAfterAGoodRun) {
  RestartPause pause;
  for (int i = 0; i < 5; ++i) pause.Next(milliseconds(5));
  EXPECT_EQ(pause.Next(milliseconds(60'000)), milliseconds(100));
}

}  // namespace
}  // namespace boardsim
