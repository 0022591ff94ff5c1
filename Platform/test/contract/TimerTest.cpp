#include "AaSysTime.h"
#include "Messaging.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace contract {
namespace {

using Ids = std::vector<u32>;

/// Starts a timer that sends a message to the own task.
TAaSysTimerId StartTimer(u32 msgId, TAaSysComSicad receiver, u32 firstUs, u32 periodUs) {
  TAaSysTimerId timer = 0;
  Held message = Create(msgId, "tick", receiver);
  EXPECT_EQ(AaSysTimermCreate(&timer, firstUs, periodUs, message.msg), 0);
  message.msg = nullptr;
  EXPECT_NE(timer, 0u);
  return timer;
}

TEST(Timer, SendsItsMessage) {
  const OwnTask task;
  StartTimer(1, task.Address(), 1000, 0);
  const Held message = Receive();
  EXPECT_EQ(message.Id(), 1u);
  EXPECT_EQ(message.Payload(), "tick");
}

TEST(Timer, SendsWithTheSenderOfItsMessage) {
  const OwnTask task;
  Held message = Create(1, "", task.Address());
  AaSysComMsgSetSender(message.msg, 0x02040567);
  TAaSysTimerId timer = 0;
  EXPECT_EQ(AaSysTimermCreate(&timer, 1000, 0, message.msg), 0);
  message.msg = nullptr;
  EXPECT_EQ(Receive().Sender(), 0x02040567u);
}

TEST(Timer, WithoutAPeriodExpiresOnce) {
  const OwnTask task;
  StartTimer(1, task.Address(), 1000, 0);
  EXPECT_EQ(Receive().Id(), 1u);
  EXPECT_EQ(Receive(rig::kMomentUs).msg, nullptr);
}

TEST(Timer, WithAPeriodExpiresAgainAndAgain) {
  const OwnTask task;
  const TAaSysTimerId timer = StartTimer(1, task.Address(), 1000, 2000);
  for (int expiry = 0; expiry < 5; ++expiry) EXPECT_EQ(Receive().Id(), 1u);
  EXPECT_EQ(AaSysTimerDelete(timer), 0);
}

TEST(Timer, ThatIsDueEarlierExpiresEarlier) {
  const OwnTask task;
  StartTimer(1, task.Address(), 400000, 0);
  StartTimer(2, task.Address(), 100000, 0);
  EXPECT_EQ(Receive().Id(), 2u);
  EXPECT_EQ(Receive().Id(), 1u);
}

TEST(Timer, ThatIsDueEarlierDoesNotWaitForTheOther) {
  const OwnTask task;
  const TAaSysTimerId late = StartTimer(1, task.Address(), 3'000'000'000, 0);
  AaSysTimeSleep(100, EAaSysTimeScale_Millisec);
  StartTimer(2, task.Address(), 1000, 0);
  EXPECT_EQ(Receive().Id(), 2u);
  AaSysTimerDelete(late);
}

TEST(Timer, ThatIsStartedWhenAllOthersHaveExpiredExpiresToo) {
  const OwnTask task;
  for (const u32 id : {1u, 2u, 3u}) {
    StartTimer(id, task.Address(), 1000, 0);
    EXPECT_EQ(Receive().Id(), id);
    AaSysTimeSleep(100, EAaSysTimeScale_Millisec);
  }
}

TEST(Timer, OfTimeZeroExpiresAtOnce) {
  const OwnTask task;
  StartTimer(1, task.Address(), 0, 0);
  EXPECT_EQ(Receive().Id(), 1u);
}

TEST(Timer, ThatIsDeletedDoesNotExpire) {
  const OwnTask task;
  const TAaSysTimerId timer = StartTimer(1, task.Address(), rig::kMomentUs, 0);
  EXPECT_EQ(AaSysTimerDelete(timer), 0);
  EXPECT_EQ(Receive(2 * rig::kMomentUs).msg, nullptr);
}

TEST(Timer, ThatIsDeletedKeepsWhatItHasSent) {
  const OwnTask task;
  const TAaSysTimerId timer = StartTimer(1, task.Address(), 1000, 0);
  StartTimer(2, task.Address(), 100000, 0);
  const u16 second[] = {1, 2};
  EXPECT_EQ(Held(AaSysComMsgReceive(rig::kPatienceUs, second)).Id(), 2u);
  EXPECT_EQ(AaSysTimerDelete(timer), 0);
  EXPECT_EQ(ReceiveIds(), Ids{1});
}

TEST(Timer, ThatDoesNotExistIsDeletedHarmlessly) {
  EXPECT_EQ(AaSysTimerDelete(0), 0);
  EXPECT_EQ(AaSysTimerDelete(0x7FFFFFFF), 0);
}

TEST(Timer, ThatExpiredIsDeletedHarmlessly) {
  const OwnTask task;
  const TAaSysTimerId timer = StartTimer(1, task.Address(), 1000, 0);
  EXPECT_EQ(Receive().Id(), 1u);
  EXPECT_EQ(AaSysTimerDelete(timer), 0);
  EXPECT_EQ(AaSysTimerDelete(timer), 0);
}

TEST(Timer, WithoutAMessageIsRefused) {
  TAaSysTimerId timer = 5;
  EXPECT_EQ(AaSysTimermCreate(&timer, 1000, 0, nullptr), EINVAL);
  EXPECT_EQ(timer, 5u);
}

TEST(Timer, ThatIsRefusedLeavesTheMessageToItsCaller) {
  const Held message = Create(1, "mine", 0x02040123);
  EXPECT_EQ(AaSysTimermCreate(nullptr, 1000, 0, message.msg), EINVAL);
  EXPECT_EQ(message.Payload(), "mine");
}

TEST(Sleep, LetsBoardTimePass) {
  SAaTime before{};
  SAaTime after{};
  AaUtcTimeGet(&before);
  EXPECT_EQ(AaSysTimeSleep(1100, EAaSysTimeScale_Millisec), 0);
  AaUtcTimeGet(&after);
  EXPECT_TRUE(before.second != after.second || before.minute != after.minute);
}

TEST(Sleep, KnowsItsThreeScales) {
  EXPECT_EQ(AaSysTimeSleep(1, EAaSysTimeScale_Microsec), 0);
  EXPECT_EQ(AaSysTimeSleep(1, EAaSysTimeScale_Millisec), 0);
  EXPECT_EQ(AaSysTimeSleep(0, EAaSysTimeScale_Sec), 0);
}

TEST(Sleep, RefusesAnotherScale) { EXPECT_EQ(AaSysTimeSleep(1, static_cast<EAaSysTimeScale>(3)), EINVAL); }

TEST(Sleep, LeavesTimersRunning) {
  const OwnTask task;
  StartTimer(1, task.Address(), 1000, 0);
  AaSysTimeSleep(100, EAaSysTimeScale_Millisec);
  EXPECT_EQ(Receive().Id(), 1u);
}

}  // namespace
}  // namespace contract
