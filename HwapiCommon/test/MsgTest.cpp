#include "Msg.h"

#include "fake/PlatformTest.h"

#include <gtest/gtest.h>

namespace ps::hwapi::common {
namespace {

struct Request {
  u32 first;
  u32 second;
  u32 third;
  u32 fourth;
};

struct Answer {
  u32 status;
  u8 text[8];
};

constexpr u32 kRequestId = 0x2B29;
constexpr u32 kAnswerId = 0x2B2A;
constexpr TAaSysComSicad kClient = 0x01020345;
constexpr TAaSysComSicad kService = 0x010104B6;

using RequestMsg = Msg<Request, kRequestId>;
using AnswerMsg = Msg<Answer, kAnswerId>;

class MsgTest : public fake::PlatformTest {
 protected:
  /// A request of the client as it arrives at the service.
  static fake::Message Arriving(const fake::Bytes& payload) {
    return {.id = kRequestId, .payload = payload, .sender = kClient, .receiver = kService};
  }
  static fake::Message ArrivingRequest() { return Arriving(fake::BytesOf(Request{1, 2, 3, 4})); }

  static void Destroy(RequestMsg& msg) { AaSysComMsgDestroy(&msg.msg); }

  static u32 SizeOf(const RequestMsg& msg) { return AaSysComMsgGetPayloadSize(msg.msg); }

  /// What a message created with that size was asked of the platform.
  static std::vector<fake::Call> CreationWithSize(int size) {
    RequestMsg msg(kService, size);
    Destroy(msg);
    return fake::Calls("AaSysComMsgCreate");
  }
};

TEST_F(MsgTest, TheMessageIdIsItsConstant) { EXPECT_EQ(RequestMsg::ID, 0x2B29u); }

TEST_F(MsgTest, IsTwoPointers) { EXPECT_EQ(sizeof(RequestMsg), 2 * sizeof(void*)); }

TEST_F(MsgTest, WrappingAReceivedMessageKeepsItsHandle) {
  const fake::ReceivedMessage received(ArrivingRequest());
  EXPECT_EQ(RequestMsg(received).msg, static_cast<void*>(received));
}

TEST_F(MsgTest, WrappingAReceivedMessageShowsItsPayload) {
  const fake::ReceivedMessage received(ArrivingRequest());
  const RequestMsg msg(received);
  EXPECT_EQ(static_cast<void*>(msg.payload), AaSysComMsgGetPayload(received));
}

TEST_F(MsgTest, WrappingAReceivedMessageChangesNothing) {
  const fake::ReceivedMessage received(ArrivingRequest());
  EXPECT_EQ(RequestMsg(received)->third, 3u);
}

TEST_F(MsgTest, WrappingNullHasNoMessage) { EXPECT_EQ(RequestMsg(nullptr).msg, nullptr); }

TEST_F(MsgTest, WrappingNullHasNoPayload) { EXPECT_EQ(RequestMsg(nullptr).payload, nullptr); }

TEST_F(MsgTest, WrappingNullAsksThePlatformNothing) {
  const RequestMsg msg(nullptr);
  EXPECT_TRUE(fake::Calls().empty());
}

TEST_F(MsgTest, WrappingAnEmptyMessageHasNoPayload) {
  const fake::ReceivedMessage received(Arriving(fake::Bytes()));
  EXPECT_EQ(RequestMsg(received).payload, nullptr);
}

TEST_F(MsgTest, CreatingAsksForIdSizeAndReceiver) {
  EXPECT_EQ(CreationWithSize(24), std::vector{fake::Call("AaSysComMsgCreate", 0x2B29, 24, 0x010104B6)});
}

TEST_F(MsgTest, CreatingWithSizeZeroTakesTheSizeOfTheRecord) {
  EXPECT_EQ(CreationWithSize(0), std::vector{fake::Call("AaSysComMsgCreate", 0x2B29, 16, 0x010104B6)});
}

TEST_F(MsgTest, CreatingTakesTheLowSixteenBitsOfTheSize) {
  EXPECT_EQ(CreationWithSize(65552), std::vector{fake::Call("AaSysComMsgCreate", 0x2B29, 16, 0x010104B6)});
}

TEST_F(MsgTest, CreatingWithTheLargestSixteenBitSizeTakesItAll) {
  EXPECT_EQ(CreationWithSize(65535), std::vector{fake::Call("AaSysComMsgCreate", 0x2B29, 65535, 0x010104B6)});
}

TEST_F(MsgTest, CreatingWithANegativeSizeTakesItsLowSixteenBits) {
  EXPECT_EQ(CreationWithSize(-8), std::vector{fake::Call("AaSysComMsgCreate", 0x2B29, 65528, 0x010104B6)});
}

TEST_F(MsgTest, CreatingWithAMultipleOfSixtyFourKibHasNoPayload) {
  RequestMsg msg(kService, 65536);
  EXPECT_NE(msg.msg, nullptr);
  EXPECT_EQ(msg.payload, nullptr);
  Destroy(msg);
}

TEST_F(MsgTest, ACreatedMessageHoldsTheRecord) {
  RequestMsg msg(kService, 0);
  EXPECT_EQ(SizeOf(msg), 16u);
  Destroy(msg);
}

TEST_F(MsgTest, ACreatedMessageIsZeroed) {
  RequestMsg msg(kService, 0);
  EXPECT_EQ(fake::BytesOf(*msg.payload), fake::Bytes(16, 0));
  Destroy(msg);
}

TEST_F(MsgTest, ACreatedMessageShorterThanTheRecordIsNotWrittenBehindItsEnd) {
  RequestMsg msg(kService, 6);
  EXPECT_EQ(SizeOf(msg), 6u);
  Destroy(msg);
  EXPECT_TRUE(fake::Violations().empty());
}

TEST_F(MsgTest, AFailedCreationHasNoMessage) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_EQ(RequestMsg(kService, 0).msg, nullptr);
}

TEST_F(MsgTest, AFailedCreationHasNoPayload) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_EQ(RequestMsg(kService, 0).payload, nullptr);
}

TEST_F(MsgTest, ACreatedMessageWithoutPayloadIsNotCleared) {
  fake::FailCall("AaSysComMsgGetPayload");
  RequestMsg msg(kService, 0);
  EXPECT_EQ(msg.payload, nullptr);
  Destroy(msg);
}

TEST_F(MsgTest, ClearPayloadZeroesTheRecord) {
  const fake::ReceivedMessage received(ArrivingRequest());
  RequestMsg msg(received);
  msg.ClearPayload();
  EXPECT_EQ(fake::BytesOf(*msg.payload), fake::Bytes(16, 0));
}

TEST_F(MsgTest, ClearPayloadLeavesWhatIsBehindTheRecord) {
  const fake::ReceivedMessage received(Arriving(fake::Bytes(18, 0xAB)));
  RequestMsg msg(received);
  msg.ClearPayload();
  const u8* bytes = reinterpret_cast<const u8*>(msg.payload);
  EXPECT_EQ(bytes[15], 0);
  EXPECT_EQ(bytes[16], 0xAB);
  EXPECT_EQ(bytes[17], 0xAB);
}

TEST_F(MsgTest, ClearPayloadStaysInsideAShorterPayload) {
  const fake::ReceivedMessage received(Arriving(fake::Bytes(5, 0xAB)));
  RequestMsg msg(received);
  msg.ClearPayload();
  const u8* bytes = reinterpret_cast<const u8*>(msg.payload);
  EXPECT_EQ(fake::Bytes(bytes, bytes + 5), fake::Bytes(5, 0));
}

TEST_F(MsgTest, AReplyAsksForItsOwnIdAndTheGivenSize) {
  const fake::ReceivedMessage received(ArrivingRequest());
  AnswerMsg reply = RequestMsg(received).CreateReply<AnswerMsg>(20);
  EXPECT_EQ(fake::Calls("AaSysComMsgCreateReply"),
            std::vector{fake::Call("AaSysComMsgCreateReply", 0x2B2A, 20, 0x2B29)});
  AaSysComMsgDestroy(&reply.msg);
}

TEST_F(MsgTest, AReplyWithSizeZeroTakesTheSizeOfItsRecord) {
  const fake::ReceivedMessage received(ArrivingRequest());
  AnswerMsg reply = RequestMsg(received).CreateReply<AnswerMsg>(0);
  EXPECT_EQ(AaSysComMsgGetPayloadSize(reply.msg), 12u);
  AaSysComMsgDestroy(&reply.msg);
}

TEST_F(MsgTest, AReplyTakesTheLowSixteenBitsOfTheSize) {
  const fake::ReceivedMessage received(ArrivingRequest());
  AnswerMsg reply = RequestMsg(received).CreateReply<AnswerMsg>(0x10014);
  EXPECT_EQ(AaSysComMsgGetPayloadSize(reply.msg), 0x14u);
  AaSysComMsgDestroy(&reply.msg);
}

TEST_F(MsgTest, AReplyGoesToTheSenderOfTheRequest) {
  const fake::ReceivedMessage received(ArrivingRequest());
  AnswerMsg reply = RequestMsg(received).CreateReply<AnswerMsg>(0);
  reply.Send();
  ASSERT_EQ(fake::SentMessages(kAnswerId).size(), 1u);
  EXPECT_EQ(fake::SentMessages(kAnswerId)[0].receiver, kClient);
}

TEST_F(MsgTest, AReplyShowsItsPayload) {
  const fake::ReceivedMessage received(ArrivingRequest());
  AnswerMsg reply = RequestMsg(received).CreateReply<AnswerMsg>(0);
  EXPECT_EQ(static_cast<void*>(reply.payload), AaSysComMsgGetPayload(reply.msg));
  EXPECT_NE(reply.payload, nullptr);
  AaSysComMsgDestroy(&reply.msg);
}

TEST_F(MsgTest, AFailedReplyHasNoPayload) {
  const fake::ReceivedMessage received(ArrivingRequest());
  fake::FailCall("AaSysComMsgCreateReply");
  const AnswerMsg reply = RequestMsg(received).CreateReply<AnswerMsg>(0);
  EXPECT_EQ(reply.msg, nullptr);
  EXPECT_EQ(reply.payload, nullptr);
}

TEST_F(MsgTest, TheArrowReachesThePayload) {
  const fake::ReceivedMessage received(ArrivingRequest());
  const RequestMsg msg(received);
  msg->second = 77;
  EXPECT_EQ(msg.payload->second, 77u);
}

TEST_F(MsgTest, GetSenderTellsTheSenderOfTheMessage) {
  const fake::ReceivedMessage received(ArrivingRequest());
  EXPECT_EQ(RequestMsg(received).GetSender(), kClient);
}

TEST_F(MsgTest, SetSenderChangesWhatTheReceiverSees) {
  RequestMsg msg(kService, 0);
  msg.SetSender(0x01030333);
  msg.Send();
  ASSERT_EQ(fake::SentMessages(kRequestId).size(), 1u);
  EXPECT_EQ(fake::SentMessages(kRequestId)[0].sender, 0x01030333u);
}

TEST_F(MsgTest, SendHandsIdPayloadAndReceiverToThePlatform) {
  RequestMsg msg(kService, 0);
  *msg.payload = {.first = 9, .second = 8, .third = 7, .fourth = 6};
  msg.Send();
  const fake::Message expected = {
      .id = 0x2B29, .payload = fake::BytesOf(Request{9, 8, 7, 6}), .sender = 0, .receiver = 0x010104B6};
  EXPECT_EQ(fake::SentMessages(), std::vector{expected});
}

TEST_F(MsgTest, SendLetsThePlatformClearTheHandleOrLeaveIt) {
  for (const bool leave : {false, true}) {
    fake::LeaveSentHandles(leave);
    RequestMsg msg(kService, 0);
    void* const handle = msg.msg;
    msg.Send();
    EXPECT_EQ(msg.msg, leave ? handle : nullptr);
  }
}

TEST_F(MsgTest, IsNoOwner) {
  void* handle = nullptr;
  {
    const RequestMsg msg(kService, 0);
    handle = msg.msg;
  }
  EXPECT_EQ(fake::LiveMessages(), 1u);
  AaSysComMsgDestroy(&handle);
}

TEST_F(MsgTest, RecordCopiesThePayload) {
  const fake::ReceivedMessage received(ArrivingRequest());
  EXPECT_EQ(fake::BytesOf(RequestMsg(received).Record()), fake::BytesOf(Request{1, 2, 3, 4}));
}

TEST_F(MsgTest, FieldsOfTheRecordBehindAShortPayloadAreZero) {
  const fake::ReceivedMessage received(Arriving(fake::Bytes(9, 0xFF)));
  EXPECT_EQ(fake::BytesOf(RequestMsg(received).Record()),
            (fake::Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(MsgTest, TheRecordOfALongPayloadIsItsBeginning) {
  fake::Bytes payload = fake::BytesOf(Request{1, 2, 3, 4});
  payload.resize(40, 0xEE);
  const fake::ReceivedMessage received(Arriving(payload));
  EXPECT_EQ(fake::BytesOf(RequestMsg(received).Record()), fake::BytesOf(Request{1, 2, 3, 4}));
}

TEST_F(MsgTest, TheRecordOfAnEmptyMessageIsZero) {
  const fake::ReceivedMessage received(Arriving(fake::Bytes()));
  EXPECT_EQ(fake::BytesOf(RequestMsg(received).Record()), fake::Bytes(16, 0));
}

}  // namespace
}  // namespace ps::hwapi::common
