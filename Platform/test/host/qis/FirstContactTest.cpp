// First contact of a sender: who may send, what is not a message, when the channel is passed.
#include "Acceptor.h"
#include "Access.h"
#include "PassedFd.h"
#include "Support.h"
#include "TaskName.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace hwapi::test {
namespace {

using qis::AccessRules;
using qis::Fd;
using qis::MaySend;

constexpr uid_t kReceiver = 1000;

TEST(Access, IsGrantedToRootAndToTheOwnUser) {
  EXPECT_TRUE(MaySend({.pid = 1, .uid = 0, .groups = {}}, {}, kReceiver));
  EXPECT_TRUE(MaySend({.pid = 1, .uid = kReceiver, .groups = {}}, {}, kReceiver));
}

TEST(Access, IsRefusedToAStranger) {
  EXPECT_FALSE(MaySend({.pid = 1, .uid = 1001, .groups = {1001}}, {.users = {1002}, .groups = {1002}}, kReceiver));
}

TEST(Access, IsGrantedToANamedUser) {
  EXPECT_TRUE(MaySend({.pid = 1, .uid = 1001, .groups = {}}, {.users = {1001}, .groups = {}}, kReceiver));
}

TEST(Access, IsGrantedToAnyMemberOfANamedGroup) {
  EXPECT_TRUE(MaySend({.pid = 1, .uid = 1001, .groups = {5, 6}}, {.users = {}, .groups = {6}}, kReceiver));
}

TEST(Access, IsRefusedToAUserThatIsNotKnownWhateverTheRulesName) {
  const qis::Peer peer{.pid = 1, .uid = qis::kOverflowUser, .groups = {qis::kOverflowUser}, .isKnown = false};
  EXPECT_FALSE(MaySend(peer, {.users = {qis::kOverflowUser}, .groups = {qis::kOverflowUser}}, kReceiver));
}

TEST(Access, NotEveryUserIsKnownInANamespaceOfSome) {
  const Board board;
  const std::string map = board.Folder() + "/uid_map";
  for (const char* text : {"", "1234 1234 1\n", "65534 65534 1\n", "0 100000 65536\n", "0 0 10\n10 10 4294967284\n"}) {
    std::ofstream(map) << text;
    EXPECT_FALSE(qis::KnowsAllUsers(map.c_str())) << text;
  }
  EXPECT_FALSE(qis::KnowsAllUsers((map + "/in a file").c_str())) << "it cannot be read";
}

TEST(Access, EveryUserIsKnownWithoutANamespace) {
  const Board board;
  const std::string map = board.Folder() + "/uid_map";
  EXPECT_TRUE(qis::KnowsAllUsers(map.c_str())) << "the kernel has none";
  for (const char* text : {"         0          0 4294967295\n", "0 0 10\n10 10 4294967285\n"}) {
    std::ofstream(map) << text;
    EXPECT_TRUE(qis::KnowsAllUsers(map.c_str())) << text;
  }
}

TEST(Access, RulesTakeUserAndGroupNamesApart) {
  const Board board;
  const AccessRules rules = AccessRules::FromNames({"root", "group:root", "nobody-of-this-name"});
  EXPECT_EQ(rules.users, std::vector<uid_t>{0});
  EXPECT_EQ(rules.groups, std::vector<gid_t>{0});
}

TEST(Access, UnknownNamesAreToldAndAllowNobody) {
  const Board board;
  const ErrorOutput output;
  const AccessRules rules = AccessRules::FromNames({"group:no-such-group"});
  EXPECT_TRUE(rules.groups.empty());
  EXPECT_EQ(Occurrences(output.Text(), "\"group:no-such-group\""), 1u);
}

/// An execution unit that serves the address 0 under registration 1, and no task that could be given back.
class OneTask : public qis::Registrations {
 public:
  bool Expects(TAaProEuId, TAaSysComSicad receiver, u32 stamp) override { return receiver == 0 && stamp == 1; }
  bool HasTask(TAaProEuId) override { return true; }
};

/// A sender's end of a connection to an acceptor, with credentials made up.
class FirstContact : public ::testing::Test {
 protected:
  void Admit(uid_t user) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    m_earlier.push_back(std::exchange(m_sender, Fd(ends[0])));
    m_acceptor->Admit(Fd(ends[1]), {.pid = 4711, .uid = user, .groups = {user}});
  }
  void Send(const void* bytes, std::size_t size) {
    ASSERT_EQ(::send(m_sender.Get(), bytes, size, 0), static_cast<ssize_t>(size));
  }
  /// Waits until @p count messages are acknowledged. @return that, and whether a descriptor came with any of it
  std::pair<qis::Acknowledgement, bool> AcknowledgementOf(u32 count) {
    std::pair<qis::Acknowledgement, bool> result{};
    const auto isThere = [&] {
      iovec part{.iov_base = &result.first, .iov_len = sizeof result.first};
      alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof(int))> control{};
      msghdr packet{};
      packet.msg_iov = &part;
      packet.msg_iovlen = 1;
      packet.msg_control = control.data();
      packet.msg_controllen = control.size();
      if (::recvmsg(m_sender.Get(), &packet, MSG_DONTWAIT) > 0 && CMSG_FIRSTHDR(&packet) != nullptr) {
        int fd = -1;
        std::memcpy(&fd, CMSG_DATA(CMSG_FIRSTHDR(&packet)), sizeof fd);
        m_passed.Reset(fd);
        result.second = true;
      }
      return result.first.handled >= count;
    };
    EXPECT_TRUE(Eventually(isThere));
    return result;
  }
  /// Contacts the acceptor as a user that may send, until the channel was passed.
  void GetChannel() {
    Admit(::geteuid());
    Send(&m_message, sizeof m_message);
    AcknowledgementOf(1);
    ASSERT_TRUE(m_passed);
    ASSERT_TRUE(Receives());
  }
  /// @return whether a message is there
  bool Receives() { return m_inbox->Receive(0, nullptr) != nullptr; }
  void TearDown() override { m_acceptor->Close(); }

  const Board m_board{"[access]\nsend = []\n"};
  OneTask m_task;
  std::shared_ptr<qis::Inbox> m_inbox = qis::Inbox::Create(1, m_task);
  std::shared_ptr<qis::Acceptor> m_acceptor = std::make_shared<qis::Acceptor>(-1, m_inbox, 0, 1);
  Fd m_sender;
  std::vector<Fd> m_earlier;  ///< ends of the senders before, which are still connected
  Fd m_passed;
  const qis::WireHeader m_message{.order = qis::kHostOrderMark,
                                  .id = 5,
                                  .sender = 0,
                                  .receiver = 0,
                                  .size = 0,
                                  .stamp = 0,
                                  .senderStamp = 0,
                                  .foreign = 0};
};

TEST_F(FirstContact, PassesAChannelToASenderThatIsAllowed) {
  Admit(::geteuid());
  Send(&m_message, sizeof m_message);
  const auto [acknowledged, passed] = AcknowledgementOf(1);
  EXPECT_TRUE(passed);
  EXPECT_EQ(acknowledged.refused, 0u);
  EXPECT_TRUE(Receives());
}

TEST_F(FirstContact, PassesNeitherChannelNorMessagesOfASenderThatIsRefused) {
  Admit(54321);
  Send(&m_message, sizeof m_message);
  const auto [acknowledged, passed] = AcknowledgementOf(1);
  EXPECT_FALSE(passed);
  EXPECT_EQ(acknowledged.refused, 1u);
  EXPECT_FALSE(Receives());
}

TEST_F(FirstContact, CountsEveryRefusedMessageAndReportsTheSenderOnce) {
  const ErrorOutput output;
  Admit(54321);
  for (int i = 0; i < 5; ++i) {
    Send(&m_message, sizeof m_message);
  }
  AcknowledgementOf(5);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Refused), 5u);
  EXPECT_EQ(Occurrences(output.Text(), "process 4711 of user 54321"), 1u);
}

TEST_F(FirstContact, StopsListeningToASenderThatGoesOnThoughItIsRefused) {
  Admit(54321);
  u32 sent = 0;
  EXPECT_TRUE(Eventually([&] {
    while (::send(m_sender.Get(), &m_message, sizeof m_message, MSG_DONTWAIT) > 0) ++sent;
    return sent > AaSysComCounterGet(EAaSysComCounter_Refused) + 100 &&
           AaSysComCounterGet(EAaSysComCounter_Refused) > 999;
  }));
}

TEST_F(FirstContact, CountsWhatIsNotAMessage) {
  Admit(::geteuid());
  Send("garbage", 7);
  qis::WireHeader lying = m_message;
  lying.size = 1000;
  Send(&lying, sizeof lying);
  AcknowledgementOf(2);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Malformed), 2u);
}

TEST_F(FirstContact, LetsAPassedChannelSendDirectly) {
  GetChannel();
  ASSERT_EQ(qis::SendNow(m_passed.Get(), &m_message, sizeof m_message), 0);
  EXPECT_TRUE(Receives());
}

TEST_F(FirstContact, CountsWhatIsNotAMessageInTheChannel) {
  GetChannel();
  ASSERT_EQ(qis::SendNow(m_passed.Get(), "garbage", 7), 0);
  ASSERT_EQ(qis::SendNow(m_passed.Get(), "", 0), 0);
  EXPECT_FALSE(Receives());
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Malformed), 2u);
}

TEST_F(FirstContact, TakesAMessageOfTheLargestSizeAndNoneThatIsAByteLonger) {
  GetChannel();
  std::vector<u8> bytes(qis::kMaxWireSize + 1);
  qis::WireHeader header = m_message;
  header.size = AASYSCOM_MAX_PAYLOAD;
  std::memcpy(bytes.data(), &header, sizeof header);
  ASSERT_EQ(qis::SendNow(m_passed.Get(), bytes.data(), bytes.size() - 1), 0);
  EXPECT_TRUE(Receives());
  ++header.size;
  std::memcpy(bytes.data(), &header, sizeof header);
  ASSERT_EQ(qis::SendNow(m_passed.Get(), bytes.data(), bytes.size()), 0);
  EXPECT_FALSE(Receives());
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Malformed), 1u);
}

TEST_F(FirstContact, DropsAMessageForATaskThatTheChannelIsNotFor) {
  GetChannel();
  qis::WireHeader message = m_message;
  message.receiver = 7;
  ASSERT_EQ(qis::SendNow(m_passed.Get(), &message, sizeof message), 0);
  EXPECT_FALSE(Receives());
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Unexpected), 1u);
}

TEST_F(FirstContact, DropsAnAnswerToARegistrationThatEnded) {
  GetChannel();
  qis::WireHeader message = m_message;
  message.stamp = 77;
  ASSERT_EQ(qis::SendNow(m_passed.Get(), &message, sizeof message), 0);
  EXPECT_FALSE(Receives());
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Unexpected), 1u);
}

TEST_F(FirstContact, AChannelThatItsSenderShutsDownIsNoChannelOfOthers) {
  GetChannel();
  const Fd first = std::move(m_passed);
  GetChannel();
  ASSERT_EQ(::shutdown(first.Get(), SHUT_RDWR), 0);
  ASSERT_EQ(qis::SendNow(m_passed.Get(), &m_message, sizeof m_message), 0);
  EXPECT_TRUE(Receives());
  EXPECT_FALSE(Receives());
}

TEST_F(FirstContact, AChannelThatItsSenderShrinksIsNotSmallerForOthers) {
  GetChannel();
  const Fd first = std::move(m_passed);
  GetChannel();
  const int smallest = 1;
  ASSERT_EQ(::setsockopt(first.Get(), SOL_SOCKET, SO_SNDBUF, &smallest, sizeof smallest), 0);
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(qis::SendNow(m_passed.Get(), &m_message, sizeof m_message), 0);
  }
}

TEST_F(FirstContact, WhatASenderSentBeforeItEndedIsReceived) {
  GetChannel();
  ASSERT_EQ(qis::SendNow(m_passed.Get(), &m_message, sizeof m_message), 0);
  m_passed.Reset();
  m_sender.Reset();
  EXPECT_TRUE(Eventually([this] { return Receives(); }));
}

TEST_F(FirstContact, NothingIsReceivedOnceTheTaskIsGivenBack) {
  GetChannel();
  ASSERT_EQ(qis::SendNow(m_passed.Get(), &m_message, sizeof m_message), 0);
  m_acceptor->Close();
  EXPECT_EQ(qis::SendNow(m_passed.Get(), &m_message, sizeof m_message), EPIPE);
  EXPECT_FALSE(Receives());
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Unexpected), 1u);
}

TEST_F(FirstContact, NobodyIsLetInOnceTheTaskIsGivenBack) {
  m_acceptor->Close();
  Admit(::geteuid());
  qis::Acknowledgement acknowledged{};
  EXPECT_EQ(::recv(m_sender.Get(), &acknowledged, sizeof acknowledged, MSG_DONTWAIT), 0) << "it is not connected";
}

/// @return whether the kernel lets a receiver refuse descriptors
bool CanRefuseFds() {
  const Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  return qis::RefuseFds(socket.Get());
}

TEST_F(FirstContact, TakesNoDescriptorFromASender) {
  if (!CanRefuseFds()) GTEST_SKIP() << "the kernel cannot refuse them";
  qis::TaskName name;
  ASSERT_EQ(name.Claim(AddressOf(kServer)), 0);
  const Fd sender = qis::ConnectToTask(AddressOf(kServer));
  EXPECT_EQ(qis::SendWithFd(sender.Get(), &m_message, sizeof m_message, STDERR_FILENO), -1);
  EXPECT_EQ(qis::SendWithFd(sender.Get(), &m_message, sizeof m_message, -1), ssize_t{sizeof m_message});
}

TEST_F(FirstContact, TakesNoDescriptorInAChannel) {
  if (!CanRefuseFds()) GTEST_SKIP() << "the kernel cannot refuse them";
  GetChannel();
  EXPECT_EQ(qis::SendWithFd(m_passed.Get(), &m_message, sizeof m_message, STDERR_FILENO), -1);
  EXPECT_EQ(qis::SendWithFd(m_passed.Get(), &m_message, sizeof m_message, -1), ssize_t{sizeof m_message});
}

}  // namespace
}  // namespace hwapi::test
