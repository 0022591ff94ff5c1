// Tasks that come and go, and answers that are late.
#include "Support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace hwapi::test {
namespace {

constexpr u32 kClient = 0x9000;  ///< a number that clients get

/// Takes a request, and answers it when it is told to.
void AnswerLate(const Event& ready, const Event& received, const Event& go, bool asReply) {
  Serve(kServer);
  ready.Happened();
  for (int i = 0; i < 2; ++i) {
    void* request = AaSysComMsgReceive(kLongUs, nullptr);
    received.Happened();
    go.Await();
    void* answer = asReply ? AaSysComMsgCreateReply(AaSysComMsgGetId(request), 0, request)
                           : AaSysComMsgCreate(AaSysComMsgGetId(request), 0, AaSysComMsgGetSender(request));
    AaSysComMsgSend(&answer);
    AaSysComMsgDestroy(&request);
  }
}

void ExpectLateAnswerToBeCounted(bool asReply) {
  const Board board;
  const Event ready;
  const Event received;
  const Event go;
  Peer server([&] { AnswerLate(ready, received, go, asReply); });
  ASSERT_TRUE(ready.Await());
  Serve(kClient);
  SendNumber(AddressOf(kServer), 1, 0);
  ASSERT_TRUE(received.Await());
  AaSysComUserDeregister(kClient);
  Serve(kClient);
  go.Happened();
  EXPECT_TRUE(Eventually([] {
    ReceiveNumber(1000);
    return AaSysComCounterGet(EAaSysComCounter_Unexpected) == 1;
  }));
  SendNumber(AddressOf(kServer), 2, 0);
  go.Happened();
  EXPECT_EQ(ReceiveNumber().id, 2u) << "the new registration gets what it asked for";
}

TEST(Registration, AnAnswerToOneThatEndedIsCountedAndNotGivenToItsSuccessor) { ExpectLateAnswerToBeCounted(true); }

TEST(Registration, AMessageToTheSenderOfTheOneJustHandledIsAnAnswerToo) { ExpectLateAnswerToBeCounted(false); }

TEST(Registration, AFreeNumberRestsBeforeItIsTakenAgain) {
  const Board board;
  std::set<u32> numbers;
  for (int i = 0; i < 1000; ++i) {
    const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
    EXPECT_TRUE(numbers.insert(task).second) << task;
    AaSysComUserDeregister(task);
  }
}

TEST(Registration, AnAnswerToAProcessThatEndedIsNotGivenToTheNextOneOfItsNumber) {
  const Board board;
  const Event ready;
  const Event received;
  const Event go;
  const Event begin;
  Peer server([&] { AnswerLate(ready, received, go, true); });
  Peer first([&] {
    begin.Await();
    Serve(kClient);
    SendNumber(AddressOf(kServer), 1, 0);
    received.Await();
  });
  ASSERT_TRUE(ready.Await());
  begin.Happened();
  ASSERT_TRUE(first.Ended());
  ASSERT_NE(Serve(kClient), 0u);
  go.Happened();
  EXPECT_TRUE(Eventually([] {
    ReceiveNumber(1000);
    return AaSysComCounterGet(EAaSysComCounter_Unexpected) == 1;
  }));
}

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

TEST(Registration, AThreadThatThePlatformDidNotStartGivesItsTasksBackWhenItEnds) {
  const Board board;
  std::thread([] { EXPECT_NE(Serve(kClient), 0u); }).join();
  EXPECT_NE(Serve(kClient), 0u);
}

TEST(Registration, AThreadThatThePlatformDidNotStartKeepsNoDescriptorAfterItsEnd) {
  const Board board;
  const auto registerOnce = [] { AaSysComUserDeregister(AaSysComUserRegister(0, AaProEuCurrent())); };
  std::thread(registerOnce).join();
  const std::ptrdiff_t before = OpenDescriptors();
  for (int i = 0; i < 10; ++i) std::thread(registerOnce).join();
  EXPECT_TRUE(Eventually([before] { return OpenDescriptors() <= before; })) << OpenDescriptors() << " of " << before;
}

TEST(Registration, AThreadMayUseItsTaskInTheLastOfItsDestructors) {
  const Board board;
  struct Client {
    ~Client() {
      SendNumber(AddressOf(kClient), 7, 0);
      EXPECT_EQ(ReceiveNumber().id, 7u);
    }
  };
  std::thread([] {
    thread_local const Client client;
    static_cast<void>(client);
    EXPECT_NE(Serve(kClient), 0u);
  }).join();
}

TEST(Registration, ThreadsThatComeAndGoEachGetTheirAnswers) {
  constexpr int kThreads = 32;
  constexpr int kRounds = 4;
  constexpr u32 kRequests = 78;
  const Board board;
  const Event ready;
  Peer server([&] {
    Serve(kServer);
    ready.Happened();
    for (;;) {
      void* request = AaSysComMsgReceive(kLongUs, nullptr);
      if (request == nullptr) return;
      void* reply = AaSysComMsgCreateReply(AaSysComMsgGetId(request), 0, request);
      AaSysComMsgSend(&reply);
      AaSysComMsgDestroy(&request);
    }
  });
  ASSERT_TRUE(ready.Await());
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([thread] {
      for (int round = 0; round < kRounds; ++round) {
        const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
        for (u32 i = 0; i < kRequests; ++i) {
          const u32 id = static_cast<u32>(thread) << 16 | i;
          SendNumber(AddressOf(kServer), id, 0);
          ASSERT_EQ(ReceiveNumber().id, id);
        }
        AaSysComUserDeregister(task);
      }
    });
  }
}

}  // namespace
}  // namespace hwapi::test
