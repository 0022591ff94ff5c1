// The order of the messages that an execution unit gets from its own process.
#include "OwnMessages.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

namespace hwapi::test {
namespace {

using qis::MessagePtr;
using qis::WhenFull;
using Ids = std::vector<u32>;

class OwnMessagesTest : public ::testing::Test {
 protected:
  bool Post(u32 id, WhenFull whenFull = WhenFull::Drop) { return m_own.Post(qis::CreateMessage(id, 0, 0), whenFull); }
  void PostAll(const Ids& ids) {
    for (const u32 id : ids) EXPECT_TRUE(Post(id));
  }
  void PostAllOnAnotherThread(const Ids& ids) {
    std::thread([&] { PostAll(ids); }).join();
  }
  Ids TakeAll(const u16* filter = nullptr) {
    Ids ids;
    while (const MessagePtr message = m_own.Take(filter)) ids.push_back(message->header.id);
    return ids;
  }

  qis::OwnMessages m_own;
};

TEST_F(OwnMessagesTest, OfTimersComeBeforeAllOthers) {
  PostAll({1, 2});
  EXPECT_TRUE(Post(3, WhenFull::Keep));
  EXPECT_TRUE(Post(4, WhenFull::Keep));
  EXPECT_EQ(TakeAll(), (Ids{3, 4, 1, 2}));
}

TEST_F(OwnMessagesTest, OfOneThreadComeInOrder) {
  PostAll({1, 2, 3, 4, 5});
  EXPECT_EQ(TakeAll(), (Ids{1, 2, 3, 4, 5}));
}

TEST_F(OwnMessagesTest, OfSeveralThreadsComeInTurn) {
  std::thread([this] {
    PostAll({1, 2, 3, 4});
    PostAllOnAnotherThread({11, 12});
  }).join();
  const Ids ids = TakeAll();
  const Ids inTurn{1, 11, 2, 12, 3, 4};
  const Ids otherFirst{11, 1, 12, 2, 3, 4};
  EXPECT_TRUE(ids == inTurn || ids == otherFirst);
}

TEST_F(OwnMessagesTest, OfOneThreadTakeNoRoomOfAnothersOrOfTimers) {
  while (Post(1)) {
  }
  PostAllOnAnotherThread({2});
  EXPECT_TRUE(Post(3, WhenFull::Keep));
  EXPECT_FALSE(Post(4));
}

TEST_F(OwnMessagesTest, HaveRoomAgainWhenSomeWereTaken) {
  while (Post(1)) {
  }
  TakeAll();
  EXPECT_TRUE(m_own.IsEmpty());
  EXPECT_TRUE(Post(1));
}

TEST_F(OwnMessagesTest, ThatPassAFilterAreFoundBehindOthersOfEveryThread) {
  PostAll({1, 2});
  EXPECT_TRUE(Post(3, WhenFull::Keep));
  PostAllOnAnotherThread({4, 5});
  constexpr std::array<u16, 3> kFilter{2, 2, 5};
  EXPECT_EQ(TakeAll(kFilter.data()).size(), 2u);
  EXPECT_EQ(TakeAll().size(), 3u) << "the others were left behind";
}

TEST_F(OwnMessagesTest, OfMoreThreadsThanHaveTurnsAreAllTaken) {
  std::vector<std::thread> threads;
  for (u32 i = 0; i < 30; ++i) {
    threads.emplace_back([this] { PostAll({1, 2}); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(TakeAll().size(), 60u);
}

}  // namespace
}  // namespace hwapi::test
