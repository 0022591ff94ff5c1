#include "SensorModel.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace boardsim {
namespace {

constexpr hwapi::board::SimTemperature kQuiet{
    .base = 40, .load = 10, .cooling = 5, .noise = 0, .inertia = 10, .seed = {}};

int After(SensorModel model, int steps, double activity, double fanLevel) {
  int shown = 0;
  for (int i = 0; i < steps; ++i) shown = model.Step(0.2, activity, fanLevel);
  return shown;
}

std::vector<int> Course(u32 seed) {
  SensorModel model({.base = 40, .load = 10, .cooling = 0, .noise = 0.5, .inertia = 10, .seed = {}}, seed);
  std::vector<int> course;
  for (int i = 0; i < 100; ++i) course.push_back(model.Step(0.2, ActivityAt(i * 0.2), 0));
  return course;
}

TEST(SensorModel, StaysAtItsBaseWhileTheBoardIdles) { EXPECT_EQ(After(SensorModel(kQuiet, 1), 500, 0, 0), 40'000); }

TEST(SensorModel, ReachesBaseAndLoadUnderFullActivity) {
  EXPECT_NEAR(After(SensorModel(kQuiet, 1), 5000, 1, 0), 50'000, 1);
}

TEST(SensorModel, IsCooledByTheFans) { EXPECT_NEAR(After(SensorModel(kQuiet, 1), 5000, 1, 1), 45'000, 1); }

TEST(SensorModel, CoversTwoThirdsOfAStepWithinItsInertia) {
  EXPECT_NEAR(After(SensorModel(kQuiet, 1), 50, 1, 0), 46'321, 5);
}

TEST(SensorModel, WithoutInertiaFollowsAtOnce) {
  auto quick = kQuiet;
  quick.inertia = 0;
  EXPECT_EQ(After(SensorModel(quick, 1), 1, 1, 0), 50'000);
}

TEST(SensorModel, GivesTheSameCourseForTheSameSeed) { EXPECT_EQ(Course(7), Course(7)); }

TEST(SensorModel, GivesAnotherCourseForAnotherSeed) { EXPECT_NE(Course(7), Course(8)); }

TEST(SensorModel, PrefersTheSeedOfTheDescription) {
  auto seeded = kQuiet;
  seeded.noise = 1;
  seeded.seed = 5;
  EXPECT_EQ(After(SensorModel(seeded, 1), 10, 0, 0), After(SensorModel(seeded, 2), 10, 0, 0));
}

TEST(SensorModel, NoiseStaysWithinItsBound) {
  SensorModel model({.base = 40, .load = 0, .cooling = 0, .noise = 0.5, .inertia = 10, .seed = {}}, 3);
  for (int i = 0; i < 10'000; ++i) ASSERT_LE(std::abs(model.Step(0.2, 0, 0) - 40'000), 500);
}

TEST(Activity, StaysBetweenIdleAndFull) {
  for (int i = 0; i < 10'000; ++i) {
    ASSERT_GE(ActivityAt(i * 0.2), 0);
    ASSERT_LE(ActivityAt(i * 0.2), 1);
  }
}

TEST(FanModel, ReachesTheSpeedOfItsControlValue) {
  FanModel fan({.maxRpm = 6000, .inertia = 2});
  int rpm = 0;
  for (int i = 0; i < 500; ++i) rpm = fan.Step(0.2, 50);
  EXPECT_NEAR(rpm, 3000, 1);
  EXPECT_NEAR(fan.Level(), 0.5, 0.001);
}

TEST(FanModel, NeedsTimeToSpeedUp) {
  FanModel fan({.maxRpm = 6000, .inertia = 2});
  EXPECT_LT(fan.Step(0.2, 100), 1000);
}

TEST(FanModel, ApproachesAStepOfItsControlValueMonotonically) {
  FanModel fan({.maxRpm = 6000, .inertia = 2});
  int before = 0;
  for (const int control : {0, 100, 40}) {
    const int target = 60 * control;
    const bool rises = target >= before;
    for (int i = 0; i < 200; ++i) {
      const int rpm = fan.Step(0.2, control);
      ASSERT_TRUE(rises ? rpm >= before && rpm <= target : rpm <= before && rpm >= target) << rpm << " of " << target;
      before = rpm;
    }
    EXPECT_NEAR(before, target, 1);
  }
}

TEST(FanModel, ThatIsStuckKeepsItsSpeedWhateverIsAsked) {
  FanModel fan({.maxRpm = 6000, .inertia = 2});
  fan.Stick(1500);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(fan.Step(0.2, 100), 1500);
  EXPECT_DOUBLE_EQ(fan.Level(), 0.25);
}

TEST(FanModel, FollowsAgainFromWhereItWasStuck) {
  FanModel fan({.maxRpm = 6000, .inertia = 2});
  fan.Stick(3000);
  fan.Stick(std::nullopt);
  const int next = fan.Step(0.2, 100);
  EXPECT_GT(next, 3000);
  EXPECT_LT(next, 4000);
}

TEST(FanModel, NeverCoolsMoreThanAtFullSpeed) {
  FanModel fan({.maxRpm = 6000, .inertia = 2});
  fan.Stick(100'000);
  EXPECT_EQ(fan.Level(), 1);
}

TEST(FanModel, OfNoSpeedHasNoLevel) {
  FanModel fan({.maxRpm = 0, .inertia = 2});
  EXPECT_EQ(fan.Step(0.2, 100), 0);
  EXPECT_EQ(fan.Level(), 0);
}

}  // namespace
}  // namespace boardsim
