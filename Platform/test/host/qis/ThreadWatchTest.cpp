// Which threads are watched, and when one of them hangs.
#include "ThreadWatch.h"

#include "MissedLooks.h"
#include "Support.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>

namespace hwapi::qis {
namespace {

using test::ErrorOutput;
using test::Occurrences;

/// Looks. @return the name of a thread that hangs then, "" when there is none
std::string Look(int times = 1) {
  char name[16] = "";
  for (int i = 0; i < times; ++i) WatchedThread::AllAlive(name, sizeof name);
  return name;
}

/// @return the name of a thread that stands still and that looks depend on, "" when there is none
std::string LookForLooks() {
  char name[16] = "";
  WatchedThread::AllLetLook(name, sizeof name);
  return name;
}

/// A watched thread that takes one step after the other, as the test says.
class Worker {
 public:
  explicit Worker(const char* name, WatchedThread::Part part = WatchedThread::Part::Other)
      : m_thread([this, name, part] { Work(name, part); }) {
    m_done.acquire();
  }
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
  void Work(const char* name, WatchedThread::Part part) {
    {
      const WatchedThread watched(name, part);
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

TEST(ThreadWatch, NamesAThreadThatLooksDependOnAndThatStandsStillAtWork) {
  Worker timer("timer", WatchedThread::Part::Looks);
  const Worker other("other");
  EXPECT_EQ(LookForLooks(), "");
  EXPECT_EQ(LookForLooks(), "timer");
  timer.Do([] { Rest::Skip(); });
  EXPECT_EQ(LookForLooks(), "");
  EXPECT_EQ(LookForLooks(), "timer");
  timer.Do([] { Rest::Begin(); });
  EXPECT_EQ(LookForLooks(), "");
  EXPECT_EQ(LookForLooks(), "");
}

TEST(ThreadWatch, WatchesTheThreadThatLooksUntilItEnds) {
  std::binary_semaphore lookedOn{0};
  std::binary_semaphore end{0};
  std::thread looker([&] {
    WatchedThread::WatchCaller();
    EXPECT_EQ(Look(10), "") << "it goes on: it looks";
    lookedOn.release();
    end.acquire();
  });
  lookedOn.acquire();
  EXPECT_EQ(LookForLooks(), "");
  EXPECT_NE(LookForLooks(), "");
  end.release();
  looker.join();
  EXPECT_EQ(LookForLooks(), "");
}

/// Looks that are late: two in a row show a thread that stands still.
void MissTwoLooks(MissedLooks& looks) {
  looks.Missed();
  looks.Missed();
}

TEST(ThreadWatch, ReportsOnceThatLooksAreMissedBecauseTheirThreadHangs) {
  const test::Board board;
  const ErrorOutput log;
  const auto reports = [&log] { return Occurrences(log.Text(), " hangs: nobody looks at the threads"); };
  std::thread([&] {
    const auto own = std::make_shared<MissedLooks>();
    MissedLooks& looks = *own;
    looks.Looked();
    looks.Missed();
    EXPECT_EQ(reports(), 0u);
    MissTwoLooks(looks);
    MissTwoLooks(looks);
    EXPECT_EQ(reports(), 1u);
    looks.Looked();
    MissTwoLooks(looks);
    EXPECT_EQ(reports(), 2u) << "it went on, and hangs again";
    const Rest rest;
    looks.Looked();
    MissTwoLooks(looks);
    EXPECT_EQ(reports(), 2u) << "it rests";
  }).join();
}

TEST(ThreadWatch, ReturnsWhatAWaitReturns) {
  EXPECT_EQ(AtRest([] { return 3; }), 3);
}

}  // namespace
}  // namespace hwapi::qis
