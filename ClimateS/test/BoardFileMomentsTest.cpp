/// What two threads do to the reset history and the board file in the very same moment.
#include "ResetHistory.h"
#include "ResetTest.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

/// Lets @p other happen, once, right after the clock was read next.
void AfterTheClockIsRead(std::function<void()> other) {
  fake::OnUtcRead([other = std::move(other)] {
    fake::OnUtcRead({});
    other();
  });
}

/// A thread that begins to write the board file, and goes on when the one that made it sleeps.
class SlowWriter {
 public:
  explicit SlowWriter(BlackBoxData& blackBox) {
    AfterTheClockIsRead([this, maker = gettid()] {
      m_writes.count_down();
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
      while ((!m_mayEnd || !Sleeps(maker)) && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    });
    m_thread = std::thread([&blackBox] { blackBox.createBlackboxFile(); });
    m_writes.wait();
  }
  SlowWriter(const SlowWriter&) = delete;
  SlowWriter& operator=(const SlowWriter&) = delete;
  ~SlowWriter() { m_thread.join(); }

  /// From here on the next sleep counts.
  void MayEnd() { m_mayEnd = true; }

 private:
  std::latch m_writes{1};
  std::atomic<bool> m_mayEnd = false;
  std::thread m_thread;
};

class BoardFileMomentsTest : public ResetHistoryTest {
 protected:
  static std::string Entry(const std::string& reason) { return kNow + reason + BootState() + "\n"; }
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
  SlowWriter writer(m_blackBox);
  m_blackBox.addResetReasonWithTimestamp("Cold reset");
  writer.MayEnd();
  m_blackBox.settleBoardFile();
  EXPECT_EQ(Written(), 3u) << "twice by the other thread, as the history changed meanwhile, and then by this one";
  EXPECT_THAT(File(kBoardFile), HasSubstr(kHeader + Entry("Cold reset") + "SW VERSION: active:"));
}

using ResetMomentsTest = ResetTest;

TEST_F(ResetMomentsTest, AResetIsCopiedAndAnsweredAfterWhatAnotherThreadIsWriting) {
  StartService();
  fake::Clear();
  {
    SlowWriter writer(*BlackBoxData::getInstance());
    writer.MayEnd();
    Announce({});
  }
  const fake::Call open("AaFileOpen", kBoardFile, "w"), close("AaFileClose", kBoardFile);
  const fake::Call copy("AaFileCopy", kBoardFile, kStandbyFile);
  const std::vector<fake::Call> calls = fake::Calls({"AaFileOpen", "AaFileClose", "AaFileCopy"});
  const auto afterTheCopy = std::ranges::find(calls, copy);
  EXPECT_EQ(std::count(afterTheCopy, calls.end(), open) + std::count(afterTheCopy, calls.end(), close), 0);
  EXPECT_TRUE(fake::CalledInOrder({copy, {"AaSysComMsgSend", kResetResp}}));
  EXPECT_EQ(fake::FileContent(kStandbyFile), fake::FileContent(kBoardFile));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
