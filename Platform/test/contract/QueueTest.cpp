#include "HwapiUnit.h"
#include "Messaging.h"

#include <gtest/gtest.h>

namespace contract {
namespace {

using Ids = std::vector<u32>;

TEST(Queue, GivesAMessageAsItWasSent) {
  const OwnTask task;
  Held sent = Create(0x2C15, std::string("a\0b", 3), task.Address());
  sent.SendS(0x02040567);
  const Held message = Receive();
  EXPECT_EQ(message.Id(), 0x2C15u);
  EXPECT_EQ(message.Payload(), std::string("a\0b", 3));
  EXPECT_EQ(message.Sender(), 0x02040567u);
  EXPECT_EQ(AaSysComMsgGetReceiver(message.msg), task.Address());
}

TEST(Queue, GivesTheLargestPayloadWhole) {
  const OwnTask task;
  std::string payload(AASYSCOM_MAX_PAYLOAD, 'x');
  payload.back() = 'y';
  Send(1, task.Address(), payload);
  EXPECT_EQ(Receive().Payload(), payload);
}

TEST(Queue, GivesAMessageWithoutPayload) {
  const OwnTask task;
  Send(1, task.Address());
  const Held message = Receive();
  EXPECT_EQ(message.Id(), 1u);
  EXPECT_EQ(AaSysComMsgGetPayload(message.msg), nullptr);
}

TEST(Queue, NamesTheFirstTaskOfTheSenderWhenNoSenderIsSet) {
  const OwnTask first;
  const OwnTask second;
  Send(1, second.Address());
  EXPECT_EQ(Receive().Sender(), first.Address());
}

TEST(Queue, KeepsASenderThatWasSet) {
  const OwnTask task;
  Held message = Create(1, "", task.Address());
  AaSysComMsgSetSender(message.msg, 0x02040567);
  message.Send();
  EXPECT_EQ(Receive().Sender(), 0x02040567u);
}

TEST(Queue, KeepsTheOrderAcrossTheTasksOfAThread) {
  const OwnTask first;
  const OwnTask second;
  Send(1, first.Address());
  Send(2, second.Address());
  Send(3, first.Address());
  EXPECT_EQ(ReceiveIds(), (Ids{1, 2, 3}));
}

TEST(Queue, TellsTheOtherByteOrder) {
  const OwnTask task;
  Held message = Create(1, "", task.Address());
  AaSysComMsgSetEndianSame(message.msg, GLO_FALSE);
  message.Send();
  EXPECT_FALSE(AaSysComIsHostAndMsgEndianSame(Receive().msg));
}

TEST(Queue, ThatIsEmptyGivesNullAtALook) {
  const OwnTask task;
  EXPECT_EQ(AaSysComMsgReceive(0, nullptr), nullptr);
}

TEST(Queue, ThatStaysEmptyGivesNullAfterTheTimeOut) {
  const OwnTask task;
  EXPECT_EQ(AaSysComMsgReceive(1000, nullptr), nullptr);
}

TEST(Queue, OfAThreadWithoutTasksGivesNull) { EXPECT_EQ(AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr), nullptr); }

TEST(Queue, WaitsForEverForAMessageThatIsThere) {
  const OwnTask task;
  Send(1, task.Address());
  EXPECT_EQ(Receive(AASYSCOM_NO_TIMEOUT).Id(), 1u);
}

TEST(Queue, GivesTheFirstMessageOfTheFilterAndKeepsTheOthersInOrder) {
  const OwnTask task;
  for (const u32 id : {1u, 2u, 3u, 2u, 4u}) Send(id, task.Address());
  const u16 filter[] = {1, 2};
  EXPECT_EQ(Held(AaSysComMsgReceive(rig::kPatienceUs, filter)).Id(), 2u);
  EXPECT_EQ(ReceiveIds(), (Ids{1, 3, 2, 4}));
}

TEST(Queue, TakesAnyIdOfAFilterWithSeveral) {
  const OwnTask task;
  for (const u32 id : {1u, 2u, 3u}) Send(id, task.Address());
  const u16 filter[] = {2, 3, 2};
  EXPECT_EQ(Held(AaSysComMsgReceive(rig::kPatienceUs, filter)).Id(), 2u);
  EXPECT_EQ(Held(AaSysComMsgReceive(rig::kPatienceUs, filter)).Id(), 3u);
  EXPECT_EQ(ReceiveIds(), Ids{1});
}

TEST(Queue, GivesNullWhenNothingFitsTheFilterAndKeepsAll) {
  const OwnTask task;
  Send(1, task.Address());
  Send(2, task.Address());
  const u16 filter[] = {1, 9};
  EXPECT_EQ(AaSysComMsgReceive(1000, filter), nullptr);
  EXPECT_EQ(ReceiveIds(), (Ids{1, 2}));
}

TEST(Queue, GivesWhatWasPassedOverBeforeWhatCameLater) {
  const OwnTask task;
  Send(1, task.Address());
  Send(2, task.Address());
  const u16 filter[] = {1, 2};
  EXPECT_EQ(Held(AaSysComMsgReceive(rig::kPatienceUs, filter)).Id(), 2u);
  Send(3, task.Address());
  EXPECT_EQ(ReceiveIds(), (Ids{1, 3}));
}

TEST(Queue, IsReadSelectivelyByTheRuntimeToo) {
  const OwnTask task;
  for (const u32 id : {1u, 0x2BC6u, 3u}) Send(id, task.Address());
  const u16 filter[] = {1, 0x2BC6};
  EXPECT_EQ(Held(hwapiMsgQueueReceiveSelective(rig::kPatienceUs, filter)).Id(), 0x2BC6u);
  EXPECT_EQ(ReceiveIds(), (Ids{1, 3}));
}

TEST(Queue, GivesNullToTheRuntimeAfterTheTimeOut) {
  const OwnTask task;
  Send(1, task.Address());
  const u16 filter[] = {1, 0x2BC6};
  EXPECT_EQ(hwapiMsgQueueReceiveSelective(1000, filter), nullptr);
  EXPECT_EQ(ReceiveIds(), Ids{1});
}

TEST(Queue, LosesWhatIsQueuedForATaskThatIsGivenBack) {
  const OwnTask kept;
  {
    const OwnTask given;
    Send(1, given.Address());
    Send(2, kept.Address());
  }
  EXPECT_EQ(ReceiveIds(), Ids{2});
}

TEST(Queue, CountsMessagesToATaskThatNobodyServes) {
  const u32 before = AaSysComCounterGet(EAaSysComCounter_NoReceiver);
  Send(1, AaSysComSicadGet(0x123, AaSysComGetOwnNid()));
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_NoReceiver), before + 1);
}

TEST(Queue, CountsMessagesToAnotherNode) {
  const OwnTask task;
  const u32 before = AaSysComCounterGet(EAaSysComCounter_NoReceiver);
  Send(1, AaSysComSicadGet(task.task, rig::kOwnNid + 1));
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_NoReceiver), before + 1);
  EXPECT_EQ(ReceiveIds(), Ids{});
}

TEST(Queue, IsBoundedAndDropsTheNewest) {
  const OwnTask task;
  constexpr u32 kMoreThanAnyQueueHolds = 100000;
  const std::string payload(1000, 'x');
  u32 sent = 0;
  while (AaSysComCounterGet(EAaSysComCounter_QueueFull) == 0 && sent < kMoreThanAnyQueueHolds) {
    Send(++sent, task.Address(), payload);
  }
  const Ids received = ReceiveIds();
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_QueueFull), 1u);
  ASSERT_EQ(received.size(), sent - 1);
  EXPECT_EQ(received.front(), 1u);
  EXPECT_EQ(received.back(), sent - 1);
}

TEST(Queue, HasNoCounterOfAnUnknownNumber) { EXPECT_EQ(AaSysComCounterGet(static_cast<EAaSysComCounter>(77)), 0u); }

}  // namespace
}  // namespace contract
