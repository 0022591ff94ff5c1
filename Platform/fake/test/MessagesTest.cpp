#include "fake/AddressSanitizer.h"
#include "fake/PlatformTest.h"

namespace {

using fake::Message;
using Messages = fake::PlatformTest;

constexpr u32 kId = 0x2B29;
constexpr TAaSysComSicad kClient = 0x02030444;

u8* PayloadOf(void* msg) { return static_cast<u8*>(AaSysComMsgGetPayload(msg)); }

TEST_F(Messages, SentOnesAreRecordedAsCopies) {
  void* msg = AaSysComMsgCreate(kId, 2, kClient);
  PayloadOf(msg)[1] = 9;
  AaSysComMsgSendS(&msg, 0x01010001);
  EXPECT_EQ(fake::SentMessages(),
            (std::vector<Message>{{.id = kId, .payload = {0, 9}, .sender = 0x01010001, .receiver = kClient}}));
}

TEST_F(Messages, PayloadsCanBeSeenAsARecord) {
  const Message message{.payload = {1, 0, 0, 0, 2}};
  struct Two {
    u32 first;
    u32 second;
  };
  EXPECT_EQ(message.As<Two>().first, 1u);
  EXPECT_EQ(message.As<Two>().second, 2u);
}

TEST_F(Messages, OnesThatSomebodyHoldsAreCounted) {
  void* msg = AaSysComMsgCreate(kId, 2, kClient);
  EXPECT_EQ(fake::LiveMessages(), 1u);
  AaSysComMsgDestroy(&msg);
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

#if !defined(FAKE_ADDRESS_SANITIZER)
TEST_F(Messages, WritingBehindThePayloadIsAViolation) {
  void* msg = AaSysComMsgCreate(kId, 4, kClient);
  volatile u8* payload = PayloadOf(msg);
  payload[5] = 1;
  AaSysComMsgSend(&msg);
  EXPECT_EQ(fake::Violations(),
            std::vector<std::string>{"message 0x2b29: byte 1 behind its payload of 4 bytes was written"});
  fake::ClearViolations();
}
#endif

TEST_F(Messages, UseOfASentOneIsAViolation) {
  void* msg = AaSysComMsgCreate(kId, 4, kClient);
  void* stale = msg;
  AaSysComMsgSend(&msg);
  EXPECT_EQ(AaSysComMsgGetPayload(stale), nullptr);
  EXPECT_EQ(fake::Violations(),
            std::vector<std::string>{"AaSysComMsgGetPayload with message 0x2b29 after it was sent or destroyed"});
  fake::ClearViolations();
}

TEST_F(Messages, HandlesOfSentOnesAreClearedOrLeft) {
  for (const bool leave : {false, true}) {
    fake::LeaveSentHandles(leave);
    void* msg = AaSysComMsgCreate(kId, 4, kClient);
    void* const handle = msg;
    AaSysComMsgSend(&msg);
    EXPECT_EQ(msg, leave ? handle : nullptr);
    EXPECT_EQ(fake::LiveMessages(), 0u);
  }
}

TEST_F(Messages, DestructionOfASentOneWhoseHandleWasLeftIsAViolation) {
  fake::LeaveSentHandles(true);
  void* msg = AaSysComMsgCreate(kId, 4, kClient);
  AaSysComMsgSend(&msg);
  AaSysComMsgDestroy(&msg);
  EXPECT_EQ(fake::Violations(),
            std::vector<std::string>{"AaSysComMsgDestroy with message 0x2b29 after it was sent or destroyed"});
  fake::ClearViolations();
}

TEST_F(Messages, SendingASentOneWhoseHandleWasLeftIsAViolation) {
  fake::LeaveSentHandles(true);
  void* msg = AaSysComMsgCreate(kId, 4, kClient);
  AaSysComMsgSend(&msg);
  AaSysComMsgSendS(&msg, 0x01010001);
  EXPECT_EQ(fake::SentMessages().size(), 1u);
  EXPECT_EQ(fake::Violations(),
            std::vector<std::string>{"AaSysComMsgSendS with message 0x2b29 after it was sent or destroyed"});
  fake::ClearViolations();
}

#if !defined(FAKE_ADDRESS_SANITIZER)
TEST_F(Messages, WritingThePayloadOfASentOneIsAViolation) {
  void* msg = AaSysComMsgCreate(kId, 4, kClient);
  volatile u8* payload = PayloadOf(msg);
  AaSysComMsgSend(&msg);
  payload[3] = 0;
  EXPECT_EQ(fake::Violations(),
            std::vector<std::string>{"message 0x2b29: its payload was written after it was sent or destroyed"});
  fake::ClearViolations();
}
#endif

TEST_F(Messages, UseOfWhatIsNoMessageIsAViolation) {
  int nothing = 0;
  EXPECT_EQ(AaSysComMsgGetId(&nothing), 0u);
  EXPECT_EQ(fake::Violations(), std::vector<std::string>{"AaSysComMsgGetId with a handle that is no message"});
  fake::ClearViolations();
}

TEST_F(Messages, DeliveredOnesAreReceivedAsTheyAre) {
  fake::ServeTask(0x4B6);
  fake::Deliver({.id = kId, .payload = {7}, .sender = kClient, .receiver = 0x010104B6, .otherEndian = true});
  void* msg = AaSysComMsgReceive(0, nullptr);
  ASSERT_NE(msg, nullptr);
  EXPECT_EQ(PayloadOf(msg)[0], 7);
  EXPECT_EQ(AaSysComMsgGetSender(msg), kClient);
  EXPECT_FALSE(AaSysComIsHostAndMsgEndianSame(msg));
  AaSysComMsgDestroy(&msg);
}

TEST_F(Messages, ANeighbourCanAnswer) {
  fake::OnSent(kId, [](const Message& request) { fake::Deliver({.id = 0x2B2A, .receiver = request.sender}); });
  fake::ServeTask(5);
  void* request = AaSysComMsgCreate(kId, 0, kClient);
  AaSysComMsgSend(&request);
  void* answer = AaSysComMsgReceive(0, nullptr);
  EXPECT_EQ(AaSysComMsgGetId(answer), 0x2B2Au);
  AaSysComMsgDestroy(&answer);
}

TEST_F(Messages, ReceivedOnesGoWithTheirObject) {
  {
    const fake::ReceivedMessage received({.id = kId, .payload = {1, 2}});
    EXPECT_EQ(AaSysComMsgGetPayloadSize(received), 2u);
  }
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_F(Messages, AWaitWithoutEndIsAViolation) {
  fake::ServeTask(5);
  EXPECT_EQ(AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr), nullptr);
  EXPECT_EQ(fake::Violations().size(), 1u);
  fake::ClearViolations();
}

}  // namespace
