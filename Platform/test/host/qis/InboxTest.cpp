// What an execution unit receives, and from whom first.
#include "ConnectionBounds.h"
#include "Inbox.h"

#include "Support.h"

#include <gtest/gtest.h>
#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace hwapi::test {
namespace {

using qis::Channel;
using qis::Inbox;
using qis::MessagePtr;
using qis::WhenFull;
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr TAaSysComSicad kTask = 0x010204AD;
constexpr u32 kStamp = 7;
constexpr std::int64_t kForEver = -1;

/// An execution unit with one task.
class OneTask : public qis::Registrations {
 public:
  bool Expects(TAaProEuId, TAaSysComSicad receiver, u32 stamp) override { return receiver == kTask && stamp == kStamp; }
  bool HasTask(TAaProEuId) override { return hasTask; }

  std::atomic<bool> hasTask{true};
};

MessagePtr NewMessage(u32 id, u32 size = 0) {
  MessagePtr message = qis::CreateMessage(id, size, kTask);
  message->header.stamp = kStamp;
  return message;
}

class InboxTest : public ::testing::Test {
 protected:
  /// @return a channel of a process of its own
  std::shared_ptr<Channel> NewSender() { return NewChannel(++m_lastProcess); }
  std::shared_ptr<Channel> NewChannel(pid_t process) { return m_inbox->AddChannel(kTask, kStamp, process); }
  static int Send(Channel& sender, u32 id) {
    const MessagePtr message = NewMessage(id);
    return sender.Forward(message.get(), message->WireSize());
  }
  void SendAll(Channel& sender, const std::vector<u32>& ids) {
    for (const u32 id : ids) ASSERT_EQ(Send(sender, id), 0);
  }
  bool PostOwn(u32 id, WhenFull whenFull = WhenFull::Drop) { return m_inbox->Post(NewMessage(id), whenFull); }
  /// @return id of the next message; 0 when none came
  u32 Receive(std::int64_t waitNs = kForEver, const u16* filter = nullptr) {
    const MessagePtr message = m_inbox->Receive(waitNs, filter);
    return message ? message->header.id : 0;
  }
  std::vector<u32> ReceiveAll() {
    std::vector<u32> ids;
    while (const u32 id = Receive(0)) ids.push_back(id);
    return ids;
  }
  /// What the last message asked for takes a while, after which it is looked who has sent meanwhile.
  static void LetAHandlerRun() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }
  /// Lets the last message's handler run until a moment.
  static void WorkUntil(Clock::time_point end) {
    while (Clock::now() < end) {
    }
  }
  /// Makes @p sender the one that is waited for alone.
  void LetBeAlone(Channel& sender) {
    for (u32 i = 0; i < 20; ++i) {
      ASSERT_EQ(Send(sender, 1), 0);
      ASSERT_EQ(Receive(), 1u);
    }
  }

  const Board m_board;
  OneTask m_task;
  std::atomic<pid_t> m_lastProcess{0};
  std::shared_ptr<Inbox> m_inbox = Inbox::Create(1, m_task);
};

TEST_F(InboxTest, KeepsTheOrderOfEachSender) {
  const auto sender = NewSender();
  SendAll(*sender, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  EXPECT_EQ(ReceiveAll(), (std::vector<u32>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(InboxTest, ServesSendersAsTheyCameAsLongAsNobodyFloods) {
  const auto first = NewSender();
  const auto second = NewSender();
  const auto third = NewSender();
  SendAll(*second, {2});
  SendAll(*first, {1});
  SendAll(*third, {3});
  EXPECT_EQ(ReceiveAll(), (std::vector<u32>{2, 1, 3}));
}

TEST_F(InboxTest, ServesAnHonestSenderNextInAFlood) {
  const auto flood = NewSender();
  const auto honest = NewSender();
  while (Send(*flood, 1) == 0) {
  }
  for (int i = 0; i < 5; ++i) ASSERT_EQ(Receive(), 1u);
  SendAll(*honest, {2});
  LetAHandlerRun();
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, SeveralMessagesOfASenderShareATurnWhenTheyAreHandledAtOnce) {
  constexpr u32 kSenders = 5;
  bool haveShared = false;
  for (int i = 0; i < 1000 && !haveShared; ++i) {  // unless something else runs in between
    std::vector<std::shared_ptr<Channel>> senders;
    for (u32 id = 1; id <= kSenders; ++id) {
      senders.push_back(NewSender());
      SendAll(*senders.back(), {id, id});
    }
    haveShared = Receive() == Receive();
    for (const auto& sender : senders) sender->Close();
    ASSERT_EQ(ReceiveAll().size(), 2 * kSenders - 2);
  }
  EXPECT_TRUE(haveShared);
}

TEST_F(InboxTest, ATurnLastsForAMomentHoweverShortEachOfItsMessagesIs) {
  const auto first = NewSender();
  const auto second = NewSender();
  SendAll(*first, std::vector<u32>(20, 1));
  SendAll(*second, {2});
  unsigned before = 0;
  for (; Receive() == 1; ++before) WorkUntil(Clock::now() + microseconds(20));
  EXPECT_LE(before, 3u);
}

TEST_F(InboxTest, ATurnEndsWhenItIsTimeToLookForOthers) {
  constexpr microseconds kTurn(50);
  constexpr microseconds kLookPeriod(100);
  bool isShown = false;
  for (int i = 0; i < 10000 && !isShown; ++i) {  // unless something else runs in between
    const auto first = NewSender();
    const auto second = NewSender();
    SendAll(*first, {1, 1});
    SendAll(*second, {2, 2});
    const auto beforeLook = Clock::now();
    ASSERT_EQ(Receive(), 1u);
    const auto afterLook = Clock::now();
    WorkUntil(afterLook + kTurn + microseconds(10));
    ASSERT_EQ(Receive(), 2u);
    isShown = Clock::now() < beforeLook + kLookPeriod;
    const auto third = NewSender();
    SendAll(*third, {3});
    WorkUntil(afterLook + kLookPeriod);
    ASSERT_TRUE(Receive() == 3u || !isShown);
    for (const auto& sender : {first, second, third}) sender->Close();
    ReceiveAll();
  }
  if (!isShown) GTEST_SKIP() << "the machine is too slow";
}

TEST_F(InboxTest, ATurnEndsWithItsChannel) {
  for (int i = 0; i < 100; ++i) {
    auto sender = NewSender();
    const auto other = NewSender();
    SendAll(*sender, {1, 1});
    SendAll(*other, {2});
    ASSERT_EQ(Receive(), 1u);
    i % 2 == 0 ? sender->Close() : sender->Discard();
    sender.reset();
    EXPECT_EQ(std::ranges::count(ReceiveAll(), 2u), 1);
    other->Close();
  }
}

TEST_F(InboxTest, ASelectiveReceiveInATurnKeepsTheOrderOfTheSender) {
  const auto sender = NewSender();
  SendAll(*sender, {1, 2, 3, 4, 5, 6});
  ASSERT_EQ(Receive(), 1u);
  ASSERT_EQ(Receive(kForEver, std::array<u16, 2>{1, 4}.data()), 4u);
  EXPECT_EQ(ReceiveAll(), (std::vector<u32>{2, 3, 5, 6}));
}

TEST_F(InboxTest, ServesItsOwnMessagesNextInAFlood) {
  const auto flood = NewSender();
  while (Send(*flood, 1) == 0) {
  }
  for (int i = 0; i < 5; ++i) ASSERT_EQ(Receive(), 1u);
  ASSERT_TRUE(PostOwn(2));
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, OwnMessagesDoNotKeepOthersFromBeingServed) {
  const auto sender = NewSender();
  for (int i = 0; i < 50; ++i) ASSERT_TRUE(PostOwn(1));
  SendAll(*sender, {2});
  u32 before = 0;
  while (Receive() != 2u) ++before;
  EXPECT_LE(before, 2u);
}

TEST_F(InboxTest, AProcessGetsNoMoreByConnectingMoreOften) {
  constexpr pid_t kCrowd = 1000;
  std::vector<std::shared_ptr<Channel>> crowd;
  for (int i = 0; i < 50; ++i) {
    crowd.push_back(NewChannel(kCrowd));
    SendAll(*crowd.back(), {1, 1});
  }
  const auto honest = NewSender();
  for (int i = 0; i < 5; ++i) ASSERT_EQ(Receive(), 1u);
  SendAll(*honest, {2});
  LetAHandlerRun();
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, ServesTheChannelsOfAProcessInTurn) {
  constexpr pid_t kProcess = 1000;
  const auto first = NewChannel(kProcess);
  const auto second = NewChannel(kProcess);
  const auto third = NewChannel(kProcess);
  SendAll(*first, {1, 4});
  SendAll(*second, {2});
  SendAll(*third, {3});
  EXPECT_EQ(ReceiveAll(), (std::vector<u32>{1, 2, 3, 4}));
}

TEST_F(InboxTest, OwnMessagesWaitForOneMessageOfOthersAtMost) {
  std::vector<std::shared_ptr<Channel>> crowd;
  for (int i = 0; i < 50; ++i) {
    crowd.push_back(NewSender());
    SendAll(*crowd.back(), {1, 1});
  }
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(PostOwn(2));
    EXPECT_EQ(Receive(), 2u);
    EXPECT_EQ(Receive(), 1u);
  }
}

TEST_F(InboxTest, GarbageIsCharged) {
  const auto garbage = NewSender();
  const auto honest = NewSender();
  auto began = Clock::now();
  do {  // until nothing else ran in between
    SendAll(*honest, {2});
    began = Clock::now();
    ASSERT_EQ(Receive(), 2u);
    ASSERT_EQ(Receive(0), 0u);
  } while (Clock::now() > began + microseconds(300));
  while (garbage->Forward("xx", 2) == 0) {
  }
  ASSERT_EQ(Receive(0, std::array<u16, 2>{1, 9}.data()), 0u);
  SendAll(*garbage, {1});
  SendAll(*honest, {2});
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, WhoComesSendsAndGoesFasterThanItIsReadLosesItsOldestMessages) {
  constexpr pid_t kCrowd = 1000;
  const auto honest = NewSender();
  SendAll(*honest, {2});
  for (std::size_t i = 0; i < 3 * qis::OwnBounds().all; ++i) {
    const auto sender = NewChannel(kCrowd);
    ASSERT_NE(sender, nullptr) << "strangers would be turned away, too";
    SendAll(*sender, {1});
    sender->Close();
    if (i % 50 == 0) {
      ASSERT_NE(Receive(), 0u);
    }
  }
  EXPECT_GT(AaSysComCounterGet(EAaSysComCounter_Unexpected), 0u);
  while (const u32 id = Receive(0)) {
    ASSERT_LE(id, 2u);
  }
  EXPECT_NE(NewSender(), nullptr);
}

TEST_F(InboxTest, AFloodTakesNoRoomOfOthers) {
  const auto flood = NewSender();
  const auto honest = NewSender();
  while (Send(*flood, 1) == 0) {
  }
  EXPECT_EQ(Send(*flood, 1), EAGAIN);
  EXPECT_EQ(Send(*honest, 2), 0);
  EXPECT_TRUE(PostOwn(3));
}

TEST_F(InboxTest, AChannelHoldsABoundedNumberOfMessages) {
  const auto sender = NewSender();
  u32 sent = 0;
  while (Send(*sender, 1) == 0) ++sent;
  EXPECT_GE(sent, 250u);
  EXPECT_LE(sent, 400u);
}

TEST_F(InboxTest, KeepsATimersMessageHoweverFullTheRoomIsAndGivesItFirst) {
  while (PostOwn(1)) {
  }
  EXPECT_TRUE(PostOwn(2, WhenFull::Keep));
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, HasRoomAgainForEachOwnMessageThatWasReceived) {
  while (PostOwn(1)) {
  }
  ASSERT_EQ(Receive(), 1u);
  EXPECT_TRUE(PostOwn(1));
  EXPECT_FALSE(PostOwn(1));
}

TEST_F(InboxTest, WaitsForOneSenderAndIsWokenByAnother) {
  const auto alone = NewSender();
  const auto other = NewSender();
  LetBeAlone(*alone);
  const std::jthread sender([&] { EXPECT_EQ(Send(*other, 2), 0); });
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, WaitsForOneSenderAndIsWokenByANewOne) {
  const auto alone = NewSender();
  LetBeAlone(*alone);
  const std::jthread sender([&] {
    const auto newcomer = NewSender();
    EXPECT_EQ(Send(*newcomer, 2), 0);
  });
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, WaitsForOneSenderAndIsWokenByAnOwnMessage) {
  const auto alone = NewSender();
  LetBeAlone(*alone);
  const std::jthread poster([&] { EXPECT_TRUE(PostOwn(2)); });
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, WaitsForAllAgainWhenTheOneSenderIsGone) {
  const auto alone = NewSender();
  const auto other = NewSender();
  LetBeAlone(*alone);
  const std::jthread sender([&] {
    alone->Close();
    EXPECT_EQ(Send(*other, 2), 0);
  });
  EXPECT_EQ(Receive(), 2u);
}

/// @return the process's only epoll descriptor: the inbox's, as long as the thread for connections does not run
int Epoll() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry, gone) == "anon_inode:[eventpoll]") {
      return std::stoi(entry.path().filename());
    }
  }
  return -1;
}

/// That its channel is not used any more is for the sanitizer to see.
TEST_F(InboxTest, TheOneSenderIsGoneAndCannotBeWaitedForWithAllOthers) {
  const int epoll = Epoll();
  auto sender = NewSender();
  LetBeAlone(*sender);
  // Once more it cannot be added. This one reports nothing, as the sending end stays open.
  epoll_event event{.events = 0, .data = {.ptr = sender.get()}};
  ASSERT_EQ(::epoll_ctl(epoll, EPOLL_CTL_ADD, sender->Receiver(), &event), 0) << "it is not waited for alone";
  qis::Fd sendingEnd;
  sender->PassSender([&](int fd) { return bool(sendingEnd = qis::Fd(::dup(fd))); });
  sender->Close();
  const std::weak_ptr<Channel> channel = std::exchange(sender, nullptr);
  EXPECT_EQ(Receive(1'000'000), 0u);
  EXPECT_TRUE(channel.expired());
  EXPECT_EQ(Send(*NewSender(), 2), 0);
  EXPECT_EQ(Receive(), 2u);
}

TEST_F(InboxTest, ALookSeesOtherSendersWhileOneIsWaitedForAlone) {
  const auto alone = NewSender();
  const auto other = NewSender();
  LetBeAlone(*alone);
  SendAll(*other, {2});
  EXPECT_EQ(Receive(0), 2u);
}

TEST_F(InboxTest, ATimedWaitForOneSenderAloneIsWokenByAnother) {
  const auto alone = NewSender();
  const auto other = NewSender();
  LetBeAlone(*alone);
  const std::jthread sender([&] { EXPECT_EQ(Send(*other, 2), 0); });
  EXPECT_EQ(Receive(20'000'000'000), 2u);
}

TEST_F(InboxTest, EndsAWaitForOneSenderWhenThereIsNoTaskAnyMore) {
  const auto alone = NewSender();
  LetBeAlone(*alone);
  const std::jthread deregistration([&] {
    m_task.hasTask = false;
    m_inbox->Wake();
  });
  EXPECT_EQ(Receive(), 0u);
}

TEST_F(InboxTest, LosesNothingWhileSendersTakeTurnsAtBeingAlone) {
  constexpr u32 kMessages = 5000;
  const auto first = NewSender();
  const auto second = NewSender();
  const auto sendAll = [](Channel& sender, u32 id) {
    for (u32 i = 0; i < kMessages;) {
      i += Send(sender, id) == 0 ? 1U : 0U;
      if (i % 50 == 0) std::this_thread::yield();
    }
  };
  const std::jthread one([&] { sendAll(*first, 1); });
  const std::jthread two([&] { sendAll(*second, 2); });
  const std::jthread own([&] {
    for (u32 i = 0; i < kMessages; ++i) PostOwn(3);
  });
  std::vector<u32> received(4);
  for (u32 i = 0; i < 3 * kMessages; ++i) ++received[Receive()];
  EXPECT_EQ(received, (std::vector<u32>{0, kMessages, kMessages, kMessages}));
}

TEST_F(InboxTest, ASelectiveReceiveFindsItsMessageBehindAFloodOfOthers) {
  const auto flood = NewSender();
  const auto sender = NewSender();
  const u16 filter[] = {1, 2};
  for (int round = 0; round < 5; ++round) {
    while (Send(*flood, 1) == 0) {
    }
    EXPECT_EQ(Receive(0, filter), 0u);
  }
  SendAll(*sender, {2});
  EXPECT_EQ(Receive(kForEver, filter), 2u);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_QueueFull), 0u) << "what has no room waits in the channel";
}

TEST_F(InboxTest, WhatAFloodHasBehindASelectiveReceiveIsReceivedInOrder) {
  const auto flood = NewSender();
  u32 sent = 0;
  while (Send(*flood, sent + 10) == 0) ++sent;
  const u16 filter[] = {1, 2};
  ASSERT_EQ(Receive(0, filter), 0u);
  while (Send(*flood, sent + 10) == 0) ++sent;
  for (u32 i = 0; i < sent; ++i) ASSERT_EQ(Receive(), i + 10);
}

TEST_F(InboxTest, EndsChannelsThatAreClosedAndRead) {
  for (int i = 0; i < 5000; ++i) {
    const auto sender = NewSender();
    ASSERT_NE(sender, nullptr) << "channels are left over";
    SendAll(*sender, {1});
    sender->Close();
    ASSERT_EQ(Receive(), 1u);
    ASSERT_EQ(Receive(0), 0u);
  }
}

}  // namespace
}  // namespace hwapi::test
