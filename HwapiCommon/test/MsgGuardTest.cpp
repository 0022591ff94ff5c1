#include "MsgGuard.h"

#include "fake/PlatformTest.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ps::hwapi::common {
namespace {

class MsgGuardTest : public fake::PlatformTest {
 protected:
  void* m_msg = AaSysComMsgCreate(0x2B2A, 12, 0x01010345);
};

TEST_F(MsgGuardTest, AMessageThatIsNotSentIsDestroyed) {
  { const MsgGuard guard(m_msg); }
  EXPECT_EQ(fake::Calls("AaSysComMsgDestroy"), std::vector{fake::Call("AaSysComMsgDestroy", 0x2B2A)});
}

TEST_F(MsgGuardTest, TheHandleOfADestroyedMessageIsNull) {
  { const MsgGuard guard(m_msg); }
  EXPECT_EQ(m_msg, nullptr);
}

TEST_F(MsgGuardTest, AMessageIsDestroyedWhenAnExceptionLeavesTheScope) {
  EXPECT_THROW(
      {
        const MsgGuard guard(m_msg);
        throw std::runtime_error("handler failed");
      },
      std::runtime_error);
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_F(MsgGuardTest, ASentMessageIsLeftAlone) {
  {
    const MsgGuard guard(m_msg);
    AaSysComMsgSend(&m_msg);
  }
  EXPECT_TRUE(fake::Calls("AaSysComMsgDestroy").empty());
}

TEST_F(MsgGuardTest, ANullHandleIsLeftAlone) {
  AaSysComMsgDestroy(&m_msg);
  fake::Clear();
  { const MsgGuard guard(m_msg); }
  EXPECT_TRUE(fake::Calls().empty());
}

}  // namespace
}  // namespace ps::hwapi::common
