#include "fake/PlatformTest.h"

#include <stdexcept>

namespace {

int g_rounds = 0;

void* CountRounds(void*) {
  while (true) {
    AaSysTimeSleep(900, EAaSysTimeScale_Millisec);
    ++g_rounds;
  }
}

void* KeepArgument(void* argument) {
  std::memcpy(&g_rounds, argument, sizeof g_rounds);
  return nullptr;
}

class Threads : public fake::PlatformTest {
 protected:
  Threads() { g_rounds = 0; }

  static TAaProEuId Start(const char* name, void* (*entry)(void*), int argument = 0) {
    TAaProEuId eu = 0;
    AaSysComEuCreateAndStart(&eu, name, entry, 1024, 5, &argument, sizeof argument);
    return eu;
  }
};

TEST_F(Threads, ANewThreadMayBeFasterThanTheOneThatStartsIt) {
  fake::OnThreadStarted([] { fake::RunThread("Keeper"); });
  Start("Keeper", KeepArgument, 7);
  EXPECT_EQ(g_rounds, 7);
}

TEST_F(Threads, NoActionRunsAfterAStartThatFailed) {
  unsigned runs = 0;
  fake::OnThreadStarted([&] { ++runs; });
  fake::FailCall("AaSysComEuCreateAndStart");
  Start("Keeper", KeepArgument);
  EXPECT_EQ(runs, 0u);
}

TEST_F(Threads, AreWrittenDownAndNotStarted) {
  const TAaProEuId eu = Start("Poller", CountRounds, 3);
  const fake::StartedThread thread = fake::StartedThreads().at(0);
  EXPECT_EQ(thread.eu, eu);
  EXPECT_EQ(thread.name, "Poller");
  EXPECT_EQ(thread.stackSize, 1024u);
  EXPECT_EQ(thread.priority, 5u);
  EXPECT_EQ(thread.argument, fake::BytesOf(3));
  EXPECT_FALSE(thread.hasRun);
}

TEST_F(Threads, RunUntilTheSleepBehindTheirLastOne) {
  Start("Poller", CountRounds);
  EXPECT_EQ(fake::RunThread("Poller", 3), fake::ThreadEnd::Sleeping);
  EXPECT_EQ(g_rounds, 3);
  EXPECT_EQ(fake::Now(), 2700000u);
}

TEST_F(Threads, ThatReturnSayIt) {
  Start("Once", KeepArgument, 12);
  EXPECT_EQ(fake::RunThread("Once"), fake::ThreadEnd::Returned);
  EXPECT_EQ(g_rounds, 12);
}

TEST_F(Threads, OfOneNameAreToldByTheirNumber) {
  Start("Data", CountRounds);
  Start("Data", KeepArgument, 7);
  EXPECT_EQ(fake::RunThread("Data", 0, 2), fake::ThreadEnd::Returned);
  EXPECT_EQ(g_rounds, 7);
}

TEST_F(Threads, ThatNobodyStartedCannotRun) { EXPECT_THROW(fake::RunThread("Poller"), std::invalid_argument); }

TEST_F(Threads, RunWhileTheTestReceives) {
  fake::ServeTask(5);
  Start("Once", KeepArgument, 4);
  EXPECT_EQ(AaSysComMsgReceive(0, nullptr), nullptr);
  EXPECT_EQ(g_rounds, 4);
}

}  // namespace
