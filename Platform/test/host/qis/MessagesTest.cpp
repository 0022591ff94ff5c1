// Messages between processes.
#include "AaSysLog.h"
#include "AaSysTime.h"
#include "Support.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

namespace hwapi::test {
namespace {

constexpr u32 kStop = 99;

/// Answers every message with its number until one with kStop comes.
void Echo(const Event& ready) {
  Serve(kServer);
  ready.Happened();
  for (;;) {
    const Received request = ReceiveNumber();
    if (request.id == kStop || request.id == 0) {
      return;
    }
    SendNumber(request.sender, request.id, request.number);
  }
}

TEST(Messages, ReachAnotherProcessAndItsAnswerComesBack) {
  const Board board;
  const Event ready;
  Peer echo([&] { Echo(ready); });
  ASSERT_TRUE(ready.Await());
  Serve(0);
  SendNumber(AddressOf(kServer), 7, 4711);
  EXPECT_EQ(ReceiveNumber().number, 4711u);
  SendNumber(AddressOf(kServer), kStop, 0);
  EXPECT_TRUE(echo.Ended());
}

TEST(Messages, OfOneSenderStayInOrderWhileTheWayBecomesDirect) {
  constexpr u32 kMessages = 20'000;
  const Board board;
  const Event ready;
  Peer sender([&] {
    Serve(0);
    ready.Await();
    for (u32 i = 1; i <= kMessages; ++i) {
      SendNumber(AddressOf(kServer), 1, i);
      if (i % 100 == 0) {
        ReceiveNumber();  // the receiver kept up
      }
    }
  });
  Serve(kServer);
  ready.Happened();
  for (u32 i = 1; i <= kMessages; ++i) {
    const Received received = ReceiveNumber();
    ASSERT_EQ(received.number, i);
    if (i % 100 == 0) {
      SendNumber(received.sender, 2, i);
    }
  }
  EXPECT_TRUE(sender.Ended());
}

TEST(Messages, OfManySendersStayInOrderEach) {
  constexpr u32 kSenders = 6;
  constexpr u32 kMessages = 250;  // all fit into the queue
  const Board board;
  const Event go;
  std::vector<std::unique_ptr<Peer>> senders;
  for (u32 sender = 0; sender < kSenders; ++sender) {
    senders.push_back(std::make_unique<Peer>([&, sender] {
      go.Await();
      for (u32 i = 1; i <= kMessages; ++i) {
        SendNumber(AddressOf(kServer), 100 + sender, i);
      }
    }));
  }
  Serve(kServer);
  std::map<u32, u32> last;
  for (u32 i = 0; i < kSenders; ++i) {
    go.Happened();
  }
  for (u32 i = 0; i < kSenders * kMessages; ++i) {
    const Received received = ReceiveNumber();
    ASSERT_EQ(received.number, last[received.id] + 1) << "sender " << received.id;
    last[received.id] = received.number;
  }
}

TEST(Messages, OfASenderThatEndsAtOnceAreNotLost) {
  const Board board;
  const Event ready;
  Peer sender([&] {
    ready.Await();
    for (u32 i = 1; i <= 10; ++i) {
      SendNumber(AddressOf(kServer), 1, i);
    }
  });
  Serve(kServer);
  ready.Happened();
  for (u32 i = 1; i <= 10; ++i) {
    EXPECT_EQ(ReceiveNumber().number, i);
  }
}

TEST(Messages, FindAReceiverAgainThatWasKilledAndCameBack) {
  const Board board;
  const Event ready;
  const Event again;
  Peer first([&] { Echo(ready); });
  Peer second([&] {
    again.Await();
    Echo(ready);
  });
  ASSERT_TRUE(ready.Await());
  Serve(0);
  for (u32 i = 1; i <= 3; ++i) {  // the way is direct by now
    SendNumber(AddressOf(kServer), 1, i);
    ASSERT_EQ(ReceiveNumber().number, i);
  }
  first.Kill();
  again.Happened();
  ASSERT_TRUE(ready.Await());
  SendNumber(AddressOf(kServer), 1, 4);
  EXPECT_EQ(ReceiveNumber().number, 4u);
}

TEST(Messages, FollowATaskThatAnotherProcessTookOver) {
  const Board board;
  const Event ready;
  const Event again;
  Peer first([&] {
    Echo(ready);
    AaSysComUserDeregister(kServer);
    again.Happened();
    Serve(0x500);
    ReceiveNumber();  // lives on
  });
  Peer second([&] {
    again.Await();
    Echo(ready);
  });
  ASSERT_TRUE(ready.Await());
  Serve(0);
  SendNumber(AddressOf(kServer), 1, 1);
  ASSERT_EQ(ReceiveNumber().number, 1u);
  SendNumber(AddressOf(kServer), kStop, 0);
  ASSERT_TRUE(ready.Await());
  // The sender is told of the change by its connection; until then it may still send to the old place.
  EXPECT_TRUE(Eventually([] {
    SendNumber(AddressOf(kServer), 1, 2);
    return ReceiveNumber(1000).number == 2;
  }));
  SendNumber(AddressOf(0x500), 1, 0);
}

TEST(Messages, OfTheLargestSizeArriveWhole) {
  const Board board;
  const TAaSysComSicad self = Serve(kServer);
  void* message = AaSysComMsgCreate(1, AASYSCOM_MAX_PAYLOAD, self);
  std::memset(AaSysComMsgGetPayload(message), 0x5A, AASYSCOM_MAX_PAYLOAD);
  AaSysComMsgSend(&message);
  message = AaSysComMsgReceive(kLongUs, nullptr);
  ASSERT_EQ(AaSysComMsgGetPayloadSize(message), AASYSCOM_MAX_PAYLOAD);
  const auto* const bytes = static_cast<const u8*>(AaSysComMsgGetPayload(message));
  EXPECT_EQ(std::vector<u8>(bytes, bytes + AASYSCOM_MAX_PAYLOAD), std::vector<u8>(AASYSCOM_MAX_PAYLOAD, 0x5A));
  AaSysComMsgDestroy(&message);
}

TEST(Messages, OfAnotherProcessCauseALimitedNumberOfLinesAndOwnOnesDoNot) {
  constexpr unsigned kMoreThanAnyLimit = 300;
  const Board board;
  const Event ready;
  Peer sender([&] {
    ready.Await();
    SendNumber(AddressOf(kServer), 1, 0);
  });
  const ErrorOutput output;
  const TAaSysComSicad self = Serve(kServer);
  ready.Happened();
  const auto handle = [](const char* line) {
    void* const message = AaSysComMsgReceive(kLongUs, nullptr);
    ASSERT_NE(message, nullptr);
    for (unsigned i = 0; i < kMoreThanAnyLimit; ++i) AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 7, "%s", line);
    void* handled = message;
    AaSysComMsgDestroy(&handled);
  };
  handle("caused by another process");
  EXPECT_LT(Occurrences(output.Text(), "caused by another process"), kMoreThanAnyLimit);
  SendNumber(self, 1, 0);
  handle("caused by this process");
  EXPECT_EQ(Occurrences(output.Text(), "caused by this process"), kMoreThanAnyLimit);
}

TEST(Messages, AreFollowedByZeroedSlack) {
  const Board board;
  const TAaSysComSicad self = Serve(kServer);
  SendNumber(self, 1, 0xFFFFFFFF);
  void* message = AaSysComMsgReceive(kLongUs, nullptr);
  const auto* const bytes = static_cast<const u8*>(AaSysComMsgGetPayload(message));
  EXPECT_EQ(std::vector<u8>(bytes + 4, bytes + 68), std::vector<u8>(64, 0));
  AaSysComMsgDestroy(&message);
}

TEST(Messages, KeepTheByteOrderOfTheirSender) {
  const Board board;
  const Event ready;
  Peer sender([&] {
    ready.Await();
    void* message = AaSysComMsgCreate(1, 4, AddressOf(kServer));
    AaSysComMsgSetEndianSame(message, GLO_FALSE);
    AaSysComMsgSend(&message);
  });
  Serve(kServer);
  ready.Happened();
  void* message = AaSysComMsgReceive(kLongUs, nullptr);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(AaSysComIsHostAndMsgEndianSame(message), GLO_FALSE);
  AaSysComMsgDestroy(&message);
}

TEST(Messages, QueuedForATaskThatWasGivenBackAreDropped) {
  const Board board;
  const TAaSysComSicad self = Serve(kServer);
  Serve(0x500);
  SendNumber(self, 1, 1);
  AaSysComUserDeregister(kServer);
  Serve(kServer);
  SendNumber(self, 1, 2);
  EXPECT_EQ(ReceiveNumber().number, 2u);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_Unexpected), 1u);
}

TEST(Messages, LeftByAFilterComeFirstAndInOrder) {
  const Board board;
  const TAaSysComSicad self = Serve(kServer);
  for (u32 i = 1; i <= 4; ++i) {
    SendNumber(self, i, i);
  }
  const u16 onlyThree[] = {1, 3};
  EXPECT_EQ(ReceiveNumber(kLongUs, onlyThree).id, 3u);
  EXPECT_EQ(ReceiveNumber().id, 1u);
  EXPECT_EQ(ReceiveNumber().id, 2u);
  EXPECT_EQ(ReceiveNumber().id, 4u);
}

TEST(Messages, EndAReceiveWhenTheLastTaskIsGivenBackElsewhere) {
  const Board board;
  Serve(kServer);
  TAaProEuId helper = 0;
  const auto giveBack = [](void*) -> void* {
    AaSysComUserDeregister(kServer);
    return nullptr;
  };
  ASSERT_EQ(AaSysComEuCreateAndStart(&helper, "helper", giveBack, 0, 0, nullptr, 0), 0);
  EXPECT_EQ(AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr), nullptr);
}

TEST(Messages, EndAnEndlessReceiveWhenASignalComes) {
  const Board board;
  static std::atomic<bool> ended = false;
  struct sigaction action {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGUSR1, &action, nullptr);
  Serve(kServer);
  pthread_t self = ::pthread_self();
  TAaProEuId helper = 0;
  const auto signalUntilEnded = [](void* thread) -> void* {
    while (!ended) {  // a signal before the receive ends nothing
      ::pthread_kill(*static_cast<pthread_t*>(thread), SIGUSR1);
      AaSysTimeSleep(10, EAaSysTimeScale_Millisec);
    }
    return nullptr;
  };
  ASSERT_EQ(AaSysComEuCreateAndStart(&helper, "signals", signalUntilEnded, 0, 0, &self, sizeof self), 0);
  EXPECT_EQ(AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr), nullptr);
  ended = true;
}

}  // namespace
}  // namespace hwapi::test
