// The daemon's life on a whole board: crashes, strangers, hostile messages, its end.
#include "TestBoard.h"

#include <csignal>
#include <random>

namespace boardtest {
namespace {

using DaemonLifeTest = BoardTest;

TEST_F(DaemonLifeTest, KilledDaemonComesBackAndItsClientGoesOn) {
  Up();
  auto watch = StartClmctl({"temp", "watch", "Kel"});
  ASSERT_TRUE(watch->WaitForText("KEL_MCU"));
  const pid_t before = DaemonPid();
  ASSERT_GT(before, 0);
  kill(before, SIGKILL);
  ASSERT_TRUE(watch->WaitForText("the measurement goes on")) << watch->SoFar().err;
  EXPECT_TRUE(watch->WaitForText("KEL_MCU", watch->Count("KEL_MCU") + 1));
  EXPECT_NE(DaemonPid(), before);
}

TEST_F(DaemonLifeTest, NeighboursServeTheDaemonThatCameBack) {
  Up();
  auto tag = StartClmctl({"tag", "watch", "app.hwapi.online.4d9"});
  ASSERT_TRUE(tag->WaitForText("4d9 6"));
  kill(DaemonPid(), SIGKILL);
  ASSERT_TRUE(tag->WaitForText("4d9 6", 2));
  EXPECT_EQ(Clmctl({"temp", "watch", "Kel", "--count", "1"}).status, 0);
  const std::string log = FileText(StateFolder() + "/boardsim.log");
  EXPECT_NE(log.find("daemon ended after"), std::string::npos) << log;
}

TEST_F(DaemonLifeTest, SecondDaemonIsRefusedAndTheFirstGoesOn) {
  Up();
  const pid_t first = DaemonPid();
  const Result second = Daemon();
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.err.find("0x4b6"), std::string::npos) << second.err;
  EXPECT_EQ(DaemonPid(), first);
  EXPECT_EQ(Clmctl({"tag", "get", "app.hwapi.online.4b6"}).out, "app.hwapi.online.4b6 6\n");
  EXPECT_EQ(Clmctl({"temp", "watch", "Kel", "--count", "1"}).status, 0);
}

TEST_F(DaemonLifeTest, TerminatedDaemonTakesItsEndpointsOffline) {
  Up();
  std::vector<std::unique_ptr<Program>> tags;
  for (const char* name : {"4b6", "4ad", "4d9"}) {
    tags.push_back(StartClmctl({"tag", "watch", std::string("app.hwapi.online.") + name}));
    ASSERT_TRUE(tags.back()->WaitForText(std::string(name) + " 6"));
  }
  kill(DaemonPid(), SIGTERM);
  EXPECT_TRUE(tags[0]->WaitForText("4b6 7"));
  EXPECT_TRUE(tags[1]->WaitForText("4ad 7"));
  EXPECT_TRUE(tags[2]->WaitForText("4d9 7"));
}

/// Sends hostile payloads under every message id the daemon serves.
class HostileMessageTest : public BoardTest {
 protected:
  void SendToAll(const std::string& hex, bool otherEndian = false) const {
    for (const char* id : {"0x2b29", "0x203f", "0x2c13", "0x2c15", "0x2cf1", "0x2c78", "0x2c62", "0x1134", "0x8e6",
                           "0x1177", "0x43a2", "0x1302", "0xbbd", "0xbbe", "0x1"}) {
      std::vector<std::string> arguments = {"send", "--to", "temperature", "--id", id, "--hex", hex, "--expect", "0"};
      if (otherEndian) arguments.emplace_back("--other-endian");
      ASSERT_EQ(Clmctl(arguments).status, 0) << id << " " << hex;
    }
  }
  void ExpectTheSameDaemonToAnswer(pid_t before) const {
    const Result stop = Clmctl({"temp", "stop", "Kel"});
    EXPECT_EQ(stop.status, 0) << stop.err;
    EXPECT_EQ(DaemonPid(), before);
  }
};

TEST_F(HostileMessageTest, EmptyMessagesLeaveTheDaemonAlive) {
  Up();
  const pid_t before = DaemonPid();
  SendToAll("");
  ExpectTheSameDaemonToAnswer(before);
}

TEST_F(HostileMessageTest, ShortMessagesLeaveTheDaemonAlive) {
  Up();
  const pid_t before = DaemonPid();
  for (const char* hex : {"ff", "00000000", "0000000006000000"}) SendToAll(hex);
  ExpectTheSameDaemonToAnswer(before);
}

TEST_F(HostileMessageTest, MessagesOfTheOtherByteOrderLeaveTheDaemonAlive) {
  Up();
  const pid_t before = DaemonPid();
  SendToAll("0000000000000006000003e80000000000000000", true);
  SendToAll("ffffffff", true);
  ExpectTheSameDaemonToAnswer(before);
}

TEST_F(HostileMessageTest, RandomMessagesLeaveTheDaemonAlive) {
  Up();
  const pid_t before = DaemonPid();
  std::minstd_rand random(1);
  for (const unsigned length : {3u, 40u, 333u}) {
    std::string hex;
    for (unsigned i = 0; i < 2 * length; ++i) hex += "0123456789abcdef"[random() % 16];
    SendToAll(hex);
  }
  ExpectTheSameDaemonToAnswer(before);
}

}  // namespace
}  // namespace boardtest
