// Whose turn it is when several senders wait.
#include "FairOrder.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace hwapi::test {
namespace {

using qis::FairOrder;
using qis::Turn;

TEST(FairOrder, ServesEqualsAsTheyCame) {
  FairOrder order;
  std::array<Turn, 3> senders;
  for (const std::size_t i : {2u, 0u, 1u}) order.Add(senders[i]);
  for (const std::size_t i : {2u, 0u, 1u}) EXPECT_EQ(order.Take(), &senders[i]);
  EXPECT_EQ(order.Take(), nullptr);
}

TEST(FairOrder, ServesWhoUsedLessFirst) {
  FairOrder order;
  Turn busy;
  Turn quiet;
  order.Charge(busy, 1000);
  order.Charge(quiet, 10);
  order.Add(busy);
  order.Add(quiet);
  EXPECT_EQ(order.Take(), &quiet);
}

TEST(FairOrder, SendersThatAlwaysWaitGetTheSameTimeHoweverLongTheirMessagesTake) {
  FairOrder order;
  std::array<Turn, 2> senders;
  constexpr std::array<int, 2> kTakesNs{1, 10};
  std::array<int, 2> gotNs{};
  for (Turn& sender : senders) order.Add(sender);
  for (int i = 0; i < 1100; ++i) {
    Turn* const next = order.Take();
    const std::size_t index = next == &senders[0] ? 0 : 1;
    gotNs[index] += kTakesNs[index];
    order.Charge(*next, kTakesNs[index]);
    order.Add(*next);
  }
  EXPECT_NEAR(gotNs[0], gotNs[1], 10);
}

TEST(FairOrder, OneThatComesIntoAFloodIsServedNext) {
  FairOrder order;
  std::vector<Turn> flood(7);
  for (Turn& sender : flood) order.Add(sender);
  Turn* served = nullptr;
  for (int i = 0; i < 100; ++i) {
    served = order.Take();
    order.Charge(*served, 1000 + i);
    order.Add(*served);
  }
  served = order.Take();
  Turn honest;
  order.Add(honest);
  order.Charge(*served, 1000);
  order.Add(*served);
  EXPECT_EQ(order.Take(), &honest);
}

TEST(FairOrder, APauseIsNoCredit) {
  FairOrder order;
  Turn steady;
  Turn back;
  for (int i = 0; i < 100; ++i) {
    order.Add(steady);
    order.Charge(*order.Take(), 1000);
  }
  unsigned steadys = 0;
  for (int i = 0; i < 10; ++i) {
    order.Add(steady);
    order.Add(back);
    Turn* const next = order.Take();
    order.Charge(*next, 1000);
    steadys += next == &steady ? 1 : 0;
  }
  EXPECT_EQ(steadys, 5u);
}

TEST(FairOrder, ForgetsDebtsWhenNobodyWaits) {
  FairOrder order;
  Turn busy;
  Turn quiet;
  order.Charge(busy, 1000);
  ASSERT_TRUE(order.HasDebts());
  order.ForgetDebts();
  EXPECT_FALSE(order.HasDebts());
  order.Add(busy);
  order.Add(quiet);
  EXPECT_EQ(order.Take(), &busy) << "it came first";
}

TEST(FairOrder, DoesNotServeWhoWasRemoved) {
  FairOrder order;
  std::array<Turn, 3> senders;
  for (Turn& sender : senders) order.Add(sender);
  order.Remove(senders[0]);
  order.Remove(senders[2]);
  EXPECT_EQ(order.Take(), &senders[1]);
  EXPECT_TRUE(order.IsEmpty());
}

TEST(FairOrder, HoldsASenderOnce) {
  FairOrder order;
  Turn sender;
  order.Add(sender);
  order.Add(sender);
  EXPECT_EQ(order.Take(), &sender);
  EXPECT_EQ(order.Take(), nullptr);
}

}  // namespace
}  // namespace hwapi::test
