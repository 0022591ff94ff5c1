// Once a way is warm, a message costs no memory that was not there before.
#include "AaSysTime.h"
#include "Support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <vector>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

namespace {

constinit std::atomic<unsigned> g_allocations{0};

}  // namespace

// The allocator of this program counts. What it counts is freed by the C library as ever.
extern "C" void* malloc(std::size_t size) {
  ++g_allocations;
  return __libc_malloc(size);
}
extern "C" void* calloc(std::size_t count, std::size_t size) {
  ++g_allocations;
  return __libc_calloc(count, size);
}
extern "C" void* realloc(void* block, std::size_t size) {
  ++g_allocations;
  return __libc_realloc(block, size);
}

namespace hwapi::test {
namespace {

constexpr u32 kWarm = 200;
constexpr u32 kCounted = 1000;
constexpr u32 kEcho = 1;
constexpr u32 kHowManyAllocations = 2;

/// Answers numbers with themselves, as an answer, and the question after its allocations with their number.
void Serve() {
  hwapi::test::Serve(kServer);
  unsigned before = 0;
  for (u32 i = 0;; ++i) {
    void* request = AaSysComMsgReceive(kLongUs, nullptr);
    const u32 id = AaSysComMsgGetId(request);
    void* reply = AaSysComMsgCreateReply(id, sizeof(u32), request);
    *static_cast<u32*>(AaSysComMsgGetPayload(reply)) = g_allocations - before;
    AaSysComMsgSend(&reply);
    AaSysComMsgDestroy(&request);
    if (id != kEcho) return;
    if (i == kWarm) before = g_allocations;
  }
}

TEST(Allocation, NeitherTheAskingNorTheAnsweringProcessNeedsAnyPerMessage) {
  const Board board;
  const Event ready;
  Peer server([&] {
    ready.Await();
    Serve();
  });
  const TAaSysComSicad self = hwapi::test::Serve(0);
  ASSERT_NE(self, 0u);
  ready.Happened();
  ASSERT_TRUE(Eventually([] {
    SendNumber(AddressOf(kServer), kEcho, 0);
    return ReceiveNumber(100'000).id == kEcho;
  }));
  for (u32 i = 0; i < kWarm; ++i) {
    SendNumber(AddressOf(kServer), kEcho, 0);
    ASSERT_EQ(ReceiveNumber().id, kEcho);
  }
  const unsigned before = g_allocations;
  for (u32 i = 0; i < kCounted; ++i) {
    SendNumber(AddressOf(kServer), kEcho, 0);
    ASSERT_EQ(ReceiveNumber().id, kEcho);
  }
  EXPECT_EQ(g_allocations - before, 0u);
  SendNumber(AddressOf(kServer), kHowManyAllocations, 0);
  EXPECT_EQ(ReceiveNumber().number, 0u);
}

/// As many messages at a time as may wait below: a receiver that is slow today is not what is counted.
void WarmUp(u32 messages) {
  std::vector<void*> held;
  for (u32 i = 0; i < messages; ++i) held.push_back(AaSysComMsgCreate(1, 8, 0));
  for (void*& message : held) AaSysComMsgDestroy(&message);
}

TEST(Allocation, ATimersMessageNeedsNone) {
  constexpr u32 kExpiries = 50;
  const Board board;
  WarmUp(kExpiries + 10);
  const TAaSysComSicad self = hwapi::test::Serve(kServer);
  void* message = AaSysComMsgCreate(1, 8, self);
  TAaSysTimerId timer = 0;
  ASSERT_EQ(AaSysTimermCreate(&timer, 1000, 1000, message), 0);
  for (int i = 0; i < 5; ++i) ASSERT_EQ(ReceiveNumber().id, 1u);
  const unsigned before = g_allocations;
  for (u32 i = 0; i < kExpiries; ++i) ASSERT_EQ(ReceiveNumber().id, 1u);
  EXPECT_EQ(g_allocations - before, 0u);
  AaSysTimerDelete(timer);
}

TEST(Allocation, AreCountedHere) {
  const unsigned before = g_allocations;
  delete new volatile int(7);
  EXPECT_EQ(g_allocations - before, 1u);
}

}  // namespace
}  // namespace hwapi::test
