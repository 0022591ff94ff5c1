#include "OwnedMsg.h"

#include "Msg.h"
#include "fake/PlatformTest.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ps::hwapi::common {
namespace {

struct Answer {
  u32 first;
  u32 second;
};
constexpr u32 kAnswerId = 0x2B2A;
using AnswerMsg = Msg<Answer, kAnswerId>;

constexpr TAaSysComSicad kClient = 0x01010345;
constexpr TAaSysComSicad kService = 0x010104B6;

/// On a platform that clears the handles of sent messages, and on one that leaves them.
class OwnedMsgTest : public fake::PlatformTest, public testing::WithParamInterface<bool> {
 protected:
  OwnedMsgTest() { fake::LeaveSentHandles(GetParam()); }

  static AnswerMsg Created() { return AnswerMsg(kClient, 0); }
};

TEST_P(OwnedMsgTest, AMessageThatIsNotSentIsDestroyed) {
  { const OwnedMsg message(Created()); }
  EXPECT_EQ(fake::Calls("AaSysComMsgDestroy"), std::vector{fake::Call("AaSysComMsgDestroy", kAnswerId)});
}

TEST_P(OwnedMsgTest, AMessageIsDestroyedWhenAnExceptionLeavesTheScope) {
  EXPECT_THROW(
      {
        const OwnedMsg message(Created());
        throw std::runtime_error("handler failed");
      },
      std::runtime_error);
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_P(OwnedMsgTest, ASentMessageIsLeftAlone) {
  {
    OwnedMsg message(Created());
    message->second = 7;
    message.Send();
  }
  const fake::Message expected = {.id = kAnswerId, .payload = fake::BytesOf(Answer{0, 7}), .receiver = kClient};
  EXPECT_EQ(fake::SentMessages(), std::vector{expected});
  EXPECT_TRUE(fake::Calls("AaSysComMsgDestroy").empty());
}

TEST_P(OwnedMsgTest, AMessageThatIsSentWithASenderIsLeftAlone) {
  {
    OwnedMsg message(Created());
    message.SendS(kService);
  }
  EXPECT_EQ(fake::Calls("AaSysComMsgSendS"), std::vector{fake::Call("AaSysComMsgSendS", kAnswerId, kClient, kService)});
  EXPECT_TRUE(fake::Calls("AaSysComMsgDestroy").empty());
}

TEST_P(OwnedMsgTest, ASentMessageCanNoLongerBeReached) {
  OwnedMsg message(Created());
  message.Send();
  EXPECT_EQ(message.msg, nullptr);
  EXPECT_EQ(message.payload, nullptr);
}

TEST_P(OwnedMsgTest, AMessageThatATimerTookIsLeftAlone) {
  TAaSysTimerId timer = 0;
  {
    OwnedMsg message(Created());
    ASSERT_EQ(AaSysTimermCreate(&timer, 1000, 0, message.msg), 0);
    message.Release();
  }
  EXPECT_TRUE(fake::Calls("AaSysComMsgDestroy").empty());
}

TEST_P(OwnedMsgTest, WithoutAMessageNothingHappens) {
  { const OwnedMsg message(AnswerMsg(nullptr)); }
  EXPECT_TRUE(fake::Calls().empty());
}

INSTANTIATE_TEST_SUITE_P(SentHandles, OwnedMsgTest, testing::Bool(),
                         [](const auto& test) { return test.param ? "AreLeft" : "AreCleared"; });

}  // namespace
}  // namespace ps::hwapi::common
