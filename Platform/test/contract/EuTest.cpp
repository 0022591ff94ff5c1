#include "AaSysTime.h"
#include "Messaging.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

namespace contract {
namespace {

constexpr u32 kDoneMsg = 7;
constexpr u32 kStackSize = 1024;
constexpr u32 kPriority = 5;

/// What a thread is told, and where it answers.
struct Order {
  TAaSysComSicad answerTo;
  u32 number;
};

void Answer(TAaSysComSicad to, u32 number) {
  Send(kDoneMsg, to, std::string(reinterpret_cast<const char*>(&number), sizeof number));
}

u32 NumberOf(const Held& message) {
  u32 number = 0;
  const std::string payload = message.Payload();
  if (payload.size() == sizeof number) std::memcpy(&number, payload.data(), sizeof number);
  return number;
}

void* AnswerNumber(void* argument) {
  const auto* order = static_cast<const Order*>(argument);
  Answer(order->answerTo, order->number);
  return nullptr;
}

void* AnswerOwnEu(void* argument) {
  Answer(static_cast<const Order*>(argument)->answerTo, AaProEuCurrent());
  return nullptr;
}

/// Receives one message for its own task, which another thread registers.
void* AnswerReceivedId(void* argument) {
  const TAaSysComSicad answerTo = static_cast<const Order*>(argument)->answerTo;
  for (int attempt = 0; attempt < 1000; ++attempt) {
    const Held message(AaSysComMsgReceive(1000, nullptr));
    if (message.msg != nullptr) {
      Answer(answerTo, message.Id());
      break;
    }
    AaSysTimeSleep(10, EAaSysTimeScale_Millisec);
  }
  return nullptr;
}

TAaProEuId Start(void* (*entry)(void*), const Order& order) {
  TAaProEuId eu = 0;
  EXPECT_EQ(
      AaSysComEuCreateAndStart(&eu, "ContractThreadWithALongName", entry, kStackSize, kPriority, &order, sizeof order),
      0);
  return eu;
}

TEST(ExecutionUnit, RunsWithACopyOfItsArgument) {
  const OwnTask task;
  {
    Order order{task.Address(), 41};
    Start(AnswerNumber, order);
    order.number = 42;
  }
  EXPECT_EQ(NumberOf(Receive()), 41u);
}

TEST(ExecutionUnit, GetsItsArgumentItselfWhenTheSizeIsZero) {
  const OwnTask task;
  static Order order;
  order = {task.Address(), 41};
  TAaProEuId eu = 0;
  EXPECT_EQ(AaSysComEuCreateAndStart(&eu, "Contract", AnswerNumber, kStackSize, kPriority, &order, 0), 0);
  EXPECT_EQ(NumberOf(Receive()), 41u);
}

TEST(ExecutionUnit, HasTheNumberThatItsStarterWasTold) {
  const OwnTask task;
  const TAaProEuId eu = Start(AnswerOwnEu, {task.Address(), 0});
  EXPECT_NE(eu, 0u);
  EXPECT_NE(eu, AaProEuCurrent());
  EXPECT_EQ(NumberOf(Receive()), eu);
}

TEST(ExecutionUnit, ReceivesWhatIsSentToItsTask) {
  const OwnTask own;
  const TAaProEuId eu = Start(AnswerReceivedId, {own.Address(), 0});
  const OwnTask theirs(0, eu);
  Send(0x99, theirs.Address());
  EXPECT_EQ(NumberOf(Receive()), 0x99u);
}

TEST(ExecutionUnit, OfAThreadStaysTheSame) {
  const TAaProEuId eu = AaProEuCurrent();
  EXPECT_NE(eu, 0u);
  EXPECT_EQ(AaProEuCurrent(), eu);
}

TEST(ExecutionUnit, OfAThreadThatThePlatformDidNotStartIsItsOwn) {
  TAaProEuId other = 0;
  std::thread([&] { other = AaProEuCurrent(); }).join();
  EXPECT_NE(other, 0u);
  EXPECT_NE(other, AaProEuCurrent());
}

}  // namespace
}  // namespace contract
