// Which threads are watched, and when one of them hangs.
#include "ThreadWatch.h"

#include <gtest/gtest.h>

#include <functional>
#include <semaphore>
#include <string>
#include <thread>

namespace hwapi::qis {
namespace {

/// Looks. @return the name of a thread that hangs then, "" when there is none
std::string Look(int times = 1) {
  char name[16] = "";
  for (int i = 0; i < times; ++i) WatchedThread::AllAlive(name, sizeof name);
  return name;
}

/// A watched thread that takes one step after the other, as the test says.
class Worker {
 public:
  explicit Worker(const char* name) : m_thread([this, name] { Work(name); }) { m_done.acquire(); }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() {
    Do({});
    m_thread.join();
  }
  /// Lets the thread do something, and waits until it has; nothing to do ends it.
  void Do(std::function<void()> step) {
    m_step = std::move(step);
    m_next.release();
    m_done.acquire();
  }

 private:
  void Work(const char* name) {
    {
      const WatchedThread watched(name);
      m_done.release();
      for (m_next.acquire(); m_step; m_next.acquire()) {
        m_step();
        m_done.release();
      }
    }
    m_done.release();
  }

  std::function<void()> m_step;
  std::binary_semaphore m_next{0};
  std::binary_semaphore m_done{0};
  std::thread m_thread;
};

TEST(ThreadWatch, TakesAThreadToHangThatIsAtWorkAtThreeLooks) {
  const Worker worker("worker");
  EXPECT_EQ(Look(), "");
  EXPECT_EQ(Look(), "");
  EXPECT_EQ(Look(), "worker");
  EXPECT_EQ(Look(5), "worker");
}

TEST(ThreadWatch, LetsAThreadRestForEver) {
  Worker worker("worker");
  worker.Do([] { Rest::Begin(); });
  EXPECT_EQ(Look(100), "");
}

TEST(ThreadWatch, BeginsToCountAgainAfterARest) {
  Worker worker("worker");
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(Look(2), "") << i;
    worker.Do([] { const Rest rest; });
  }
}

TEST(ThreadWatch, LetsABusyThreadGoOnWithoutARest) {
  Worker worker("worker");
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(Look(2), "") << i;
    worker.Do([] { Rest::Skip(); });
  }
}

TEST(ThreadWatch, SeesThatAHangingThreadGoesOn) {
  Worker worker("worker");
  ASSERT_EQ(Look(10), "worker");
  worker.Do([] { const Rest rest; });
  EXPECT_EQ(Look(2), "");
  EXPECT_EQ(Look(), "worker");
}

TEST(ThreadWatch, EndsARestWithTheOutermostOne) {
  Worker worker("worker");
  worker.Do([] {
    Rest::Begin();
    const Rest inner;
  });
  EXPECT_EQ(Look(10), "");
  worker.Do([] { Rest::End(); });
  EXPECT_EQ(Look(3), "worker");
}

TEST(ThreadWatch, DoesNotMindAnEndThatNothingBegan) {
  Worker worker("worker");
  worker.Do([] {
    Rest::End();
    Rest::Begin();
  });
  EXPECT_EQ(Look(10), "");
}

TEST(ThreadWatch, ForgetsAThreadThatEnds) {
  const Worker stays("stays");
  {
    const Worker ends("ends");
    const Worker endsFirst("endsFirst");
  }
  EXPECT_EQ(Look(3), "stays");
}

TEST(ThreadWatch, NamesOneOfSeveral) {
  Worker resting("resting");
  const Worker hanging("hanging");
  Worker restingToo("restingToo");
  resting.Do([] { Rest::Begin(); });
  restingToo.Do([] { Rest::Begin(); });
  EXPECT_EQ(Look(3), "hanging");
}

TEST(ThreadWatch, LeavesOtherThreadsAlone) {
  std::thread([] { Rest::End(); }).join();
  Rest::Begin();
  EXPECT_EQ(Look(10), "");
}

TEST(ThreadWatch, CutsANameToWhatThereIsRoomFor) {
  const Worker worker("0123456789abcdefgh");
  EXPECT_EQ(Look(3), "0123456789abcde");
  char name[4];
  EXPECT_FALSE(WatchedThread::AllAlive(name, sizeof name));
  EXPECT_STREQ(name, "012");
  EXPECT_FALSE(WatchedThread::AllAlive(nullptr, 0));
}

TEST(ThreadWatch, ReturnsWhatAWaitReturns) {
  EXPECT_EQ(AtRest([] { return 3; }), 3);
}

}  // namespace
}  // namespace hwapi::qis
