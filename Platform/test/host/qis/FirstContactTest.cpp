// First contact of a sender: who may send, what is no message, when the queue is passed.
#include "Access.h"
#include "Doorway.h"
#include "Support.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstring>
#include <fstream>
#include <string>

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

/// A sender's end of a connection to a doorway, with credentials made up.
class FirstContact : public ::testing::Test {
 protected:
  void Admit(uid_t user) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    m_sender.Reset(ends[0]);
    m_doorway->Admit(Fd(ends[1]), {.pid = 4711, .uid = user, .groups = {user}});
  }
  void Send(const void* bytes, std::size_t size) {
    ASSERT_EQ(::send(m_sender.Get(), bytes, size, 0), static_cast<ssize_t>(size));
  }
  /// Waits for the receipt of @p count messages. @return it, and whether a descriptor came with any receipt
  std::pair<qis::Receipt, bool> ReceiptOf(u32 count) {
    std::pair<qis::Receipt, bool> result{};
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
  void TearDown() override { m_doorway->Close(); }

  const Board m_board{"[access]\nsend = []\n"};
  std::shared_ptr<qis::Queue> m_queue = qis::Queue::Create();
  std::shared_ptr<qis::Doorway> m_doorway = std::make_shared<qis::Doorway>(-1, m_queue, 1);
  Fd m_sender;
  Fd m_passed;
  const qis::WireHeader m_message{
      .order = qis::kHostOrderMark, .id = 5, .sender = 0, .receiver = 0, .size = 0, .stamp = 0};
};

TEST_F(FirstContact, PassesTheQueueToASenderThatIsAllowed) {
  Admit(::geteuid());
  Send(&m_message, sizeof m_message);
  const auto [receipt, passed] = ReceiptOf(1);
  EXPECT_TRUE(passed);
  EXPECT_EQ(receipt.refused, 0u);
  std::size_t size = 0;
  EXPECT_EQ(m_queue->Receive(0, size), qis::Queue::Wait::Arrived);
}

TEST_F(FirstContact, PassesNeitherQueueNorMessagesOfASenderThatIsRefused) {
  Admit(54321);
  Send(&m_message, sizeof m_message);
  const auto [receipt, passed] = ReceiptOf(1);
  EXPECT_FALSE(passed);
  EXPECT_EQ(receipt.refused, 1u);
  std::size_t size = 0;
  EXPECT_EQ(m_queue->Receive(0, size), qis::Queue::Wait::Ended);
}

TEST_F(FirstContact, CountsEveryRefusedMessageAndTellsTheSenderOnce) {
  const ErrorOutput output;
  Admit(54321);
  for (int i = 0; i < 5; ++i) {
    Send(&m_message, sizeof m_message);
  }
  ReceiptOf(5);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Refused), 5u);
  EXPECT_EQ(Occurrences(output.Text(), "process 4711 of user 54321"), 1u);
}

TEST_F(FirstContact, CountsWhatIsNoMessage) {
  Admit(::geteuid());
  Send("garbage", 7);
  qis::WireHeader lying = m_message;
  lying.size = 1000;
  Send(&lying, sizeof lying);
  ReceiptOf(2);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Malformed), 2u);
}

TEST_F(FirstContact, LetsAPassedQueueSendDirectly) {
  Admit(::geteuid());
  Send(&m_message, sizeof m_message);
  ReceiptOf(1);
  ASSERT_TRUE(m_passed);
  ASSERT_EQ(qis::SendNow(m_passed.Get(), &m_message, sizeof m_message), 0);
  std::size_t size = 0;
  EXPECT_EQ(m_queue->Receive(0, size), qis::Queue::Wait::Arrived);
  EXPECT_EQ(m_queue->Receive(0, size), qis::Queue::Wait::Arrived);
}

TEST(Queue, IsMadeAnewWhenASenderShutsItDown) {
  const Board board;
  const auto queue = qis::Queue::Create();
  ASSERT_EQ(::shutdown(queue->Sender(), SHUT_RDWR), 0);
  std::size_t size = 0;
  EXPECT_EQ(queue->Receive(0, size), qis::Queue::Wait::Again);
  const qis::WireHeader message{
      .order = qis::kHostOrderMark, .id = 5, .sender = 0, .receiver = 0, .size = 0, .stamp = 0};
  EXPECT_EQ(qis::SendNow(queue->Sender(), &message, sizeof message), 0);
  EXPECT_EQ(queue->Receive(0, size), qis::Queue::Wait::Arrived);
}

}  // namespace
}  // namespace hwapi::test
