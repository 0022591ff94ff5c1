#include "AaSem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace contract {
namespace {

TEST(Semaphore, LetsAsManyPassAsItCounts) {
  TAaSem* semaphore = AaSemCreateC(3);
  ASSERT_NE(semaphore, nullptr);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(AaSemWait(semaphore), 0);
  EXPECT_EQ(AaSemDestroy(semaphore), 0);
}

TEST(Semaphore, LetsOneMorePassForEachPost) {
  TAaSem* semaphore = AaSemCreateC(0);
  EXPECT_EQ(AaSemPost(semaphore), 0);
  EXPECT_EQ(AaSemPost(semaphore), 0);
  EXPECT_EQ(AaSemWait(semaphore), 0);
  EXPECT_EQ(AaSemWait(semaphore), 0);
  EXPECT_EQ(AaSemDestroy(semaphore), 0);
}

TEST(Semaphore, HoldsAThreadUntilAPost) {
  TAaSem* semaphore = AaSemCreateC(0);
  std::atomic<bool> posted = false;
  bool postedWhenPassed = false;
  std::thread waiter([&] {
    AaSemWait(semaphore);
    postedWhenPassed = posted;
  });
  posted = true;
  AaSemPost(semaphore);
  waiter.join();
  EXPECT_TRUE(postedWhenPassed);
  EXPECT_EQ(AaSemDestroy(semaphore), 0);
}

TEST(Semaphore, LetsOneThreadAtATimePassWhenItIsBinary) {
  TAaSem* semaphore = AaSemCreateC(1);
  int guarded = 0;
  const auto count = [&] {
    for (int i = 0; i < 1000; ++i) {
      AaSemWait(semaphore);
      ++guarded;
      AaSemPost(semaphore);
    }
  };
  std::thread other(count);
  count();
  other.join();
  EXPECT_EQ(guarded, 2000);
  EXPECT_EQ(AaSemDestroy(semaphore), 0);
}

TEST(Semaphore, ThatIsNullIsRefused) {
  EXPECT_EQ(AaSemWait(nullptr), EINVAL);
  EXPECT_EQ(AaSemPost(nullptr), EINVAL);
  EXPECT_EQ(AaSemDestroy(nullptr), EINVAL);
}

}  // namespace
}  // namespace contract
