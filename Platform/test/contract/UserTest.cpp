#include "Messaging.h"

#include <gtest/gtest.h>

namespace contract {
namespace {

TEST(User, GetsTheTaskItAsksFor) { EXPECT_EQ(OwnTask(0x4AD).task, 0x4ADu); }

TEST(User, GetsTheHighestTask) { EXPECT_EQ(OwnTask(0xFFFF).task, 0xFFFFu); }

TEST(User, GetsAFreeTaskWhenItAsksForNone) {
  const OwnTask first;
  const OwnTask second;
  EXPECT_NE(first.task, 0u);
  EXPECT_NE(second.task, 0u);
  EXPECT_NE(first.task, second.task);
  EXPECT_LE(second.task, 0xFFFFu);
}

TEST(User, IsRefusedForATaskThatIsTaken) {
  const OwnTask task(0x4D9);
  EXPECT_EQ(AaSysComUserRegister(0x4D9, AaProEuCurrent()), 0u);
}

TEST(User, IsRefusedForATaskOutOfRange) { EXPECT_EQ(AaSysComUserRegister(0x10000, AaProEuCurrent()), 0u); }

TEST(User, IsRefusedForAnUnknownThread) { EXPECT_EQ(AaSysComUserRegister(0x4D9, 0x7FFFFFFF), 0u); }

TEST(User, IsRefusedForNoThread) { EXPECT_EQ(AaSysComUserRegister(0x4D9, 0), 0u); }

TEST(User, MayTakeATaskThatWasGivenBack) {
  { const OwnTask given(0x4D9); }
  EXPECT_EQ(OwnTask(0x4D9).task, 0x4D9u);
}

TEST(User, OfAnUnknownTaskIsDeregisteredHarmlessly) {
  EXPECT_EQ(AaSysComUserDeregister(0x321), 0);
  EXPECT_EQ(AaSysComUserDeregister(0), 0);
  EXPECT_EQ(AaSysComUserDeregister(0x10000), 0);
}

}  // namespace
}  // namespace contract
