// Messages that cannot be delivered.
#include "Support.h"

#include <gtest/gtest.h>

namespace hwapi::test {
namespace {

/// Fills the queue of @p receiver. @return how many messages went in
u32 Fill(TAaSysComSicad receiver) {
  u32 sent = 0;
  while (AaSysComCounterGet(EAaSysComCounter_QueueFull) == 0) {
    SendNumber(receiver, 1, ++sent);
  }
  return sent - 1;
}

TEST(Loss, OfAFullQueueDropsTheNewestMessage) {
  const Board board;
  const TAaSysComSicad self = Serve(kServer);
  const u32 room = Fill(self);
  ASSERT_GE(room, 100u);
  for (u32 i = 1; i <= room; ++i) {
    ASSERT_EQ(ReceiveNumber().number, i);
  }
  EXPECT_EQ(ReceiveNumber(0).id, 0u);
}

TEST(Loss, IsToldAtGrowingCountsAndOnceMoreWhenItEnds) {
  const Board board;
  const ErrorOutput output;
  const TAaSysComSicad self = Serve(kServer);
  Fill(self);
  for (int i = 0; i < 99; ++i) {
    SendNumber(self, 1, 0);
  }
  ReceiveNumber();
  SendNumber(self, 1, 0);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_QueueFull), 100u);
  EXPECT_EQ(Occurrences(output.Text(), "its queue is full"), 3u) << "at 1, 10 and 100";
  EXPECT_EQ(Occurrences(output.Text(), "are delivered again; 100 were dropped"), 1u);
}

TEST(Loss, OfAFullQueueInAnotherProcessIsCountedBySender) {
  const Board board;
  const Event ready;
  const Event full;
  Peer receiver([&] {
    Serve(kServer);
    ready.Happened();
    full.Await();
  });
  ASSERT_TRUE(ready.Await());
  EXPECT_TRUE(Eventually([] {
    for (int i = 0; i < 100; ++i) {
      SendNumber(AddressOf(kServer), 1, 0);
    }
    return AaSysComCounterGet(EAaSysComCounter_QueueFull) != 0;
  }));
  full.Happened();
  EXPECT_TRUE(receiver.Ended());
}

TEST(Loss, WithoutAReceiverIsCountedAndNamesTheTask) {
  const Board board;
  const ErrorOutput output;
  SendNumber(AddressOf(0x123), 1, 0);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_NoReceiver), 1u);
  EXPECT_EQ(Occurrences(output.Text(), "Cannot deliver to task 0x0123 of board 1, cpu 2: no process serves it"), 1u);
}

TEST(Loss, WithoutAReceiverOnAnotherBoardIsCounted) {
  const Board board;
  Serve(kServer);
  SendNumber(AaSysComNmapGetSicad(9, 1, kServer), 1, 0);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_NoReceiver), 1u);
}

TEST(Loss, WhenTheReceiverWasKilledIsCounted) {
  const Board board;
  const Event ready;
  Peer receiver([&] {
    Serve(kServer);
    ready.Happened();
    ReceiveNumber();
    ready.Happened();
    ReceiveNumber();
  });
  ASSERT_TRUE(ready.Await());
  SendNumber(AddressOf(kServer), 1, 0);
  ASSERT_TRUE(ready.Await());
  receiver.Kill();
  SendNumber(AddressOf(kServer), 1, 0);
  EXPECT_GE(AaSysComCounterGet(EAaSysComCounter_NoReceiver), 1u);
}

TEST(Loss, OfManyUnknownReceiversNeedsNoLastingMemoryEach) {
  const Board board;
  const ErrorOutput output;
  for (u32 task = 1; task <= 2000; ++task) {
    SendNumber(AddressOf(task), 1, 0);
  }
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_NoReceiver), 2000u);
}

}  // namespace
}  // namespace hwapi::test
