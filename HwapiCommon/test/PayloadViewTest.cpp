#include "PayloadView.h"

#include "fake/PlatformTest.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <optional>

namespace ps::hwapi::common {
namespace {

class PayloadViewTest : public fake::PlatformTest {
 protected:
  using Four = std::array<u8, 4>;

  static fake::Message Holding(const fake::Bytes& payload) { return {.id = 1, .payload = payload}; }

  static fake::Bytes PayloadOf(const fake::ReceivedMessage& msg) {
    const auto* bytes = static_cast<const u8*>(AaSysComMsgGetPayload(msg));
    return {bytes, bytes + AaSysComMsgGetPayloadSize(msg)};
  }

  void TearDown() override {
    m_msg.reset();
    PlatformTest::TearDown();
  }

  std::optional<fake::ReceivedMessage> m_msg{Holding({1, 2, 3, 4, 5, 6})};
  PayloadView m_view{*m_msg};
};

TEST_F(PayloadViewTest, SizeIsThatOfThePayload) { EXPECT_EQ(m_view.Size(), 6u); }

TEST_F(PayloadViewTest, GetReadsAtItsOffset) { EXPECT_EQ(m_view.Get<Four>(1), (Four{2, 3, 4, 5})); }

TEST_F(PayloadViewTest, GetReadsUpToTheEnd) { EXPECT_EQ(m_view.Get<Four>(2), (Four{3, 4, 5, 6})); }

TEST_F(PayloadViewTest, BytesBehindTheEndReadAsZero) { EXPECT_EQ(m_view.Get<Four>(4), (Four{5, 6, 0, 0})); }

TEST_F(PayloadViewTest, AValueAtTheEndReadsAsZero) { EXPECT_EQ(m_view.Get<Four>(6), (Four{0, 0, 0, 0})); }

TEST_F(PayloadViewTest, AValueBehindTheEndReadsAsZero) { EXPECT_EQ(m_view.Get<Four>(7), (Four{0, 0, 0, 0})); }

TEST_F(PayloadViewTest, AnOffsetThatWouldWrapReadsAsZero) {
  EXPECT_EQ(m_view.Get<Four>(std::numeric_limits<std::size_t>::max() - 1), (Four{0, 0, 0, 0}));
}

TEST_F(PayloadViewTest, PutWritesAtItsOffset) {
  m_view.Put(1, Four{9, 9, 9, 9});
  EXPECT_EQ(PayloadOf(*m_msg), (fake::Bytes{1, 9, 9, 9, 9, 6}));
}

TEST_F(PayloadViewTest, PutWritesNothingBehindTheEnd) {
  m_view.Put(4, Four{9, 9, 9, 9});
  EXPECT_EQ(PayloadOf(*m_msg), (fake::Bytes{1, 2, 3, 4, 9, 9}));
}

TEST_F(PayloadViewTest, PutAtTheEndWritesNothing) {
  m_view.Put(6, Four{9, 9, 9, 9});
  EXPECT_EQ(PayloadOf(*m_msg), (fake::Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(PayloadViewTest, PutBehindTheEndWritesNothing) {
  m_view.Put(7, Four{9, 9, 9, 9});
  m_msg.reset();
  EXPECT_TRUE(fake::Violations().empty());
}

TEST_F(PayloadViewTest, PutAtAnOffsetThatWouldWrapWritesNothing) {
  m_view.Put(std::numeric_limits<std::size_t>::max() - 1, Four{9, 9, 9, 9});
  EXPECT_EQ(PayloadOf(*m_msg), (fake::Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(PayloadViewTest, ASwapConvertsAFieldInPlace) {
  m_view.Swap32(0);
  m_view.Swap16(4);
  EXPECT_EQ(PayloadOf(*m_msg), (fake::Bytes{4, 3, 2, 1, 6, 5}));
}

TEST_F(PayloadViewTest, ASwapAcrossTheEndWritesNothingBehindIt) {
  m_view.Swap32(4);
  m_view.Swap16(6);
  EXPECT_EQ(PayloadOf(*m_msg), (fake::Bytes{1, 2, 3, 4, 0, 0}));
}

TEST_F(PayloadViewTest, APayloadWhoseSizeIsKnownIsNotAskedForIt) {
  void* const payload = AaSysComMsgGetPayload(*m_msg);
  fake::Clear();
  EXPECT_EQ(PayloadView(payload, 3).Get<Four>(0), (Four{1, 2, 3, 0}));
  EXPECT_TRUE(fake::Calls().empty());
}

TEST_F(PayloadViewTest, NoPayloadHasSizeZeroWhateverItIsSaidToHave) { EXPECT_EQ(PayloadView(nullptr, 6).Size(), 0u); }

TEST_F(PayloadViewTest, AnEmptyMessageHasSizeZero) {
  const fake::ReceivedMessage empty(Holding({}));
  EXPECT_EQ(PayloadView(empty).Size(), 0u);
}

TEST_F(PayloadViewTest, AnEmptyMessageReadsAsZero) {
  const fake::ReceivedMessage empty(Holding({}));
  EXPECT_EQ(PayloadView(empty).Get<Four>(0), (Four{0, 0, 0, 0}));
}

TEST_F(PayloadViewTest, NoMessageReadsAsZero) { EXPECT_EQ(PayloadView(nullptr).Get<Four>(0), (Four{0, 0, 0, 0})); }

}  // namespace
}  // namespace ps::hwapi::common
