// How many senders are connected, and who goes for whom.
#include "Acceptor.h"
#include "ConnectionBounds.h"
#include "LoopTask.h"
#include "SenderLimit.h"
#include "Support.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <memory>
#include <semaphore>
#include <utility>
#include <vector>

namespace hwapi::test {
namespace {

using qis::Fd;

TEST(ConnectionBounds, LeaveDescriptorsForEverythingElse) {
  for (const std::uint64_t descriptors : {256u, 1024u, 4096u, 8192u}) {
    EXPECT_LE(qis::BoundsOf(descriptors).all * 5 + 64, descriptors);
  }
}

TEST(ConnectionBounds, AThousandClientsOfOneUserFitWhereThereAreDescriptorsForThem) {
  EXPECT_GE(qis::BoundsOf(8192).perUser, 1000u);
}

TEST(ConnectionBounds, OneUserNeverHasAll) {
  for (const std::uint64_t descriptors : {0u, 64u, 256u, 1024u, 8192u}) {
    EXPECT_LT(qis::BoundsOf(descriptors).perUser, qis::BoundsOf(descriptors).all);
    EXPECT_GT(qis::BoundsOf(descriptors).perUser, 0u);
  }
}

class OneTask : public qis::Registrations {
 public:
  bool Expects(TAaProEuId, TAaSysComSicad, u32) override { return true; }
  bool HasTask(TAaProEuId) override { return true; }
};

class SenderLimitTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    // Bounds are those of the first look at them: of a process with few descriptors.
    const rlimit few{.rlim_cur = 256, .rlim_max = 256};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  void TearDown() override { m_acceptor->Close(); }

  /// @return the new sender's end of its connection
  Fd Connect(uid_t user, int messages = 0) {
    constexpr qis::WireHeader kMessage{.order = qis::kHostOrderMark,
                                       .id = 5,
                                       .sender = 0,
                                       .receiver = 0,
                                       .size = 0,
                                       .stamp = 0,
                                       .senderStamp = 0,
                                       .foreign = 0};
    int ends[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    for (int i = 0; i < messages; ++i) {
      EXPECT_EQ(::send(ends[0], &kMessage, sizeof kMessage, 0), ssize_t{sizeof kMessage});
    }
    m_acceptor->Admit(Fd(ends[1]), {.pid = 1, .uid = user, .groups = {}});
    return Fd(ends[0]);
  }
  /// @return messages that were acknowledged over the connection
  static u32 AcknowledgedOf(const Fd& sender) {
    qis::Acknowledgement acknowledged{};
    while (::recv(sender.Get(), &acknowledged, sizeof acknowledged, MSG_DONTWAIT) > 0) {
    }
    return acknowledged.handled;
  }
  /// @return whether the receiver has ended the connection
  static bool IsEnded(const Fd& sender) {
    char bytes[64];
    ssize_t size = 0;
    while ((size = ::recv(sender.Get(), bytes, sizeof bytes, MSG_DONTWAIT)) > 0) {
    }
    return size == 0;
  }

  const Board m_board{"[access]\nsend = [\"nobody\"]\n"};
  OneTask m_task;
  std::shared_ptr<qis::Inbox> m_inbox = qis::Inbox::Create(1, m_task);
  std::shared_ptr<qis::Acceptor> m_acceptor = std::make_shared<qis::Acceptor>(-1, m_inbox, 0, 1);
};

TEST_F(SenderLimitTest, AUserThatHasAllItsConnectionsDisplacesItsOwnOldest) {
  const Fd other = Connect(4711);
  std::vector<Fd> senders;
  for (std::size_t i = 0; i < qis::OwnBounds().perUser; ++i) senders.push_back(Connect(::geteuid()));
  EXPECT_FALSE(IsEnded(senders.front()));
  const Fd newest = Connect(::geteuid());
  EXPECT_TRUE(IsEnded(senders.front()));
  EXPECT_FALSE(IsEnded(senders.back()));
  EXPECT_FALSE(IsEnded(newest));
  EXPECT_FALSE(IsEnded(other));
}

TEST_F(SenderLimitTest, WhereAllConnectionsAreTakenTheUserWithMostGivesWay) {
  std::vector<Fd> senders;
  for (std::size_t i = 0; i < qis::OwnBounds().perUser; ++i) senders.push_back(Connect(::geteuid()));
  std::vector<Fd> others;
  for (std::size_t i = qis::OwnBounds().perUser; i < qis::OwnBounds().all; ++i) others.push_back(Connect(4711));
  const Fd newest = Connect(4712);
  EXPECT_TRUE(IsEnded(senders.front()));
  EXPECT_FALSE(IsEnded(others.front()));
  EXPECT_FALSE(IsEnded(newest));
}

TEST_F(SenderLimitTest, ManyMoreThanThereIsRoomForLeaveDescriptorsFree) {
  for (std::size_t i = 0; i < 20 * qis::OwnBounds().all; ++i) {
    const Fd sender = Connect(::geteuid());
    ASSERT_FALSE(IsEnded(sender)) << i;
    while (m_inbox->Receive(0, nullptr)) {
    }
  }
}

/// Nothing is served before its message is sent and others have come: the thread for connections would be late.
TEST_F(SenderLimitTest, WhatOneSentThatGoesForAnotherIsReceivedAndAcknowledged) {
  constexpr std::size_t kTooMany = 5;
  std::binary_semaphore isHeld(0);
  std::binary_semaphore go(0);
  const auto holder = LoopTask::Start([&] {
    isHeld.release();
    go.acquire();
  });
  isHeld.acquire();
  std::vector<Fd> senders;
  for (std::size_t i = 0; i < qis::OwnBounds().perUser + kTooMany; ++i) senders.push_back(Connect(::geteuid(), 2));
  EXPECT_EQ(AcknowledgedOf(senders.front()), 2u);
  EXPECT_TRUE(IsEnded(senders.front()));
  go.release();
  EXPECT_TRUE(holder->AwaitEnd());
  std::size_t received = 0;
  EXPECT_TRUE(Eventually([&] {
    while (m_inbox->Receive(0, nullptr)) ++received;
    return received == 2 * senders.size();
  })) << received;
}

}  // namespace
}  // namespace hwapi::test
