#include "Messaging.h"

#include <gtest/gtest.h>

namespace contract {
namespace {

constexpr TAaSysComSicad kReceiver = 0x02040123;
constexpr TAaSysComSicad kSender = 0x02040567;

TEST(Message, HasWhatItWasCreatedWith) {
  const Held message(AaSysComMsgCreate(0x2B29, 12, kReceiver));
  EXPECT_EQ(AaSysComMsgGetId(message.msg), 0x2B29u);
  EXPECT_EQ(AaSysComMsgGetPayloadSize(message.msg), 12u);
  EXPECT_EQ(AaSysComMsgGetReceiver(message.msg), kReceiver);
}

TEST(Message, IsCreatedWithAZeroedPayload) {
  EXPECT_EQ(Held(AaSysComMsgCreate(1, 300, kReceiver)).Payload(), std::string(300, '\0'));
}

TEST(Message, IsCreatedWithoutASender) { EXPECT_EQ(Held(AaSysComMsgCreate(1, 0, kReceiver)).Sender(), 0u); }

TEST(Message, WithoutPayloadHasANullPayload) {
  const Held message(AaSysComMsgCreate(1, 0, kReceiver));
  ASSERT_NE(message.msg, nullptr);
  EXPECT_EQ(AaSysComMsgGetPayload(message.msg), nullptr);
  EXPECT_EQ(AaSysComMsgGetPayloadSize(message.msg), 0u);
}

TEST(Message, MayHaveTheLargestPayload) {
  const Held message(AaSysComMsgCreate(1, AASYSCOM_MAX_PAYLOAD, kReceiver));
  EXPECT_EQ(AaSysComMsgGetPayloadSize(message.msg), AASYSCOM_MAX_PAYLOAD);
  EXPECT_NE(AaSysComMsgGetPayload(message.msg), nullptr);
}

TEST(Message, WithALargerPayloadIsRefused) {
  EXPECT_EQ(AaSysComMsgCreate(1, AASYSCOM_MAX_PAYLOAD + 1, kReceiver), nullptr);
  EXPECT_EQ(AaSysComMsgCreate(1, 0xFFFFFFFFu, kReceiver), nullptr);
}

TEST(Message, ShowsTheSenderThatWasSet) {
  const Held message(AaSysComMsgCreate(1, 0, kReceiver));
  AaSysComMsgSetSender(message.msg, kSender);
  EXPECT_EQ(message.Sender(), kSender);
}

TEST(Message, AsAReplyGoesBackToTheSender) {
  const Held request(AaSysComMsgCreate(1, 0, kReceiver));
  AaSysComMsgSetSender(request.msg, kSender);
  const Held reply(AaSysComMsgCreateReply(2, 4, request.msg));
  EXPECT_EQ(AaSysComMsgGetReceiver(reply.msg), kSender);
  EXPECT_EQ(reply.Sender(), kReceiver);
  EXPECT_EQ(reply.Id(), 2u);
  EXPECT_EQ(reply.Payload(), std::string(4, '\0'));
}

TEST(Message, AsAReplyToNothingIsNull) { EXPECT_EQ(AaSysComMsgCreateReply(2, 4, nullptr), nullptr); }

TEST(Message, AsATooLargeReplyIsNull) {
  const Held request(AaSysComMsgCreate(1, 0, kReceiver));
  EXPECT_EQ(AaSysComMsgCreateReply(2, AASYSCOM_MAX_PAYLOAD + 1, request.msg), nullptr);
}

TEST(Message, ThatIsNullHasNothing) {
  EXPECT_EQ(AaSysComMsgGetPayload(nullptr), nullptr);
  EXPECT_EQ(AaSysComMsgGetPayloadSize(nullptr), 0u);
  EXPECT_EQ(AaSysComMsgGetId(nullptr), 0u);
  EXPECT_EQ(AaSysComMsgGetSender(nullptr), 0u);
  EXPECT_EQ(AaSysComMsgGetReceiver(nullptr), 0u);
  EXPECT_TRUE(AaSysComIsHostAndMsgEndianSame(nullptr));
}

TEST(Message, ThatIsNullIsSentAndDestroyedHarmlessly) {
  void* nothing = nullptr;
  AaSysComMsgSend(&nothing);
  AaSysComMsgSendS(&nothing, kSender);
  AaSysComMsgDestroy(&nothing);
  AaSysComMsgSend(nullptr);
  AaSysComMsgDestroy(nullptr);
  AaSysComMsgSetSender(nullptr, kSender);
  EXPECT_EQ(nothing, nullptr);
}

TEST(Message, LeavesANullHandleWhenItIsDestroyed) {
  void* message = AaSysComMsgCreate(1, 8, kReceiver);
  AaSysComMsgDestroy(&message);
  EXPECT_EQ(message, nullptr);
}

TEST(Message, LeavesANullHandleWhenItIsSent) {
  const OwnTask task;
  void* message = AaSysComMsgCreate(1, 8, task.Address());
  AaSysComMsgSend(&message);
  EXPECT_EQ(message, nullptr);
  EXPECT_EQ(ReceiveIds(), std::vector<u32>{1});
}

TEST(Message, IsInTheHostsByteOrderUnlessMarked) {
  const Held message(AaSysComMsgCreate(1, 0, kReceiver));
  EXPECT_TRUE(AaSysComIsHostAndMsgEndianSame(message.msg));
  AaSysComMsgSetEndianSame(message.msg, GLO_FALSE);
  EXPECT_FALSE(AaSysComIsHostAndMsgEndianSame(message.msg));
}

}  // namespace
}  // namespace contract
