/// What two threads do to the reset history and the board file in the very same moment.
#include "ResetHistory.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <utility>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr u32 kWatchdog = 2;

/// Whether a thread of this process sleeps.
bool Sleeps(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string stat;
  std::getline(file, stat);
  return stat.compare(stat.rfind(')') + 2, 1, "S") == 0;
}

class BoardFileMomentsTest : public ResetHistoryTest {
 protected:
  static std::string Entry(const std::string& reason) { return kNow + reason + BootState() + "\n"; }

  /// Lets @p other happen, once, right after the clock was read next.
  static void AfterTheClockIsRead(std::function<void()> other) {
    fake::OnUtcRead([other = std::move(other)] {
      const std::function<void()> once = other;
      fake::OnUtcRead({});
      once();
    });
  }
  static std::size_t Written() { return fake::Calls("AaFileClose").size(); }
};

TEST_F(BoardFileMomentsTest, AReasonOfTheStartThatARequestJustStoredIsNotStoredTwice) {
  Start(kWatchdog);
  AfterTheClockIsRead([this] { m_blackBox.addResetReasonWithTimestamp("Cold reset"); });
  m_blackBox.writeResetReasonToBlackbox();
  EXPECT_EQ(Written(), 0u);
  EXPECT_THAT(History(), ElementsAre(Entry("Watchdog reset"), Entry("Cold reset")));
}

TEST_F(BoardFileMomentsTest, AReasonOfTheStartThatWasJustStoredIsNotStoredTwiceByARequest) {
  Start(kWatchdog);
  AfterTheClockIsRead([this] { m_blackBox.writeResetReasonToBlackbox(); });
  m_blackBox.addResetReasonWithTimestamp("Cold reset");
  EXPECT_THAT(History(), ElementsAre(Entry("Watchdog reset"), Entry("Cold reset")));
}

TEST_F(BoardFileMomentsTest, AResetThatIsAddedWhileTheFileIsWrittenComesIntoIt) {
  AfterTheClockIsRead([this] { m_blackBox.addResetReasonWithTimestamp("Cold reset"); });
  EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);
  EXPECT_EQ(Written(), 2u);
  EXPECT_THAT(File(kBoardFile), HasSubstr(kHeader + Entry("Cold reset") + "SW VERSION: active:"));
}

TEST_F(BoardFileMomentsTest, SettlingWritesTheFileAfterWhatAnotherThreadIsWriting) {
  std::latch writes(1);
  std::atomic<bool> waits = false;
  AfterTheClockIsRead([&, waiting = gettid()] {
    writes.count_down();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while ((!waits || !Sleeps(waiting)) && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  });
  std::thread writer([this] { m_blackBox.createBlackboxFile(); });
  writes.wait();
  m_blackBox.addResetReasonWithTimestamp("Cold reset");
  waits = true;
  m_blackBox.settleBoardFile();
  EXPECT_EQ(Written(), 3u) << "twice by the other thread, as the history changed meanwhile, and then by this one";
  EXPECT_THAT(File(kBoardFile), HasSubstr(kHeader + Entry("Cold reset") + "SW VERSION: active:"));
  writer.join();
}

}  // namespace
}  // namespace ps::hwapi::common::climate
