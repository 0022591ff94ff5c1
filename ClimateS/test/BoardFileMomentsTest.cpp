/// What two threads do to the reset history and the board file in the very same moment.
#include "ResetHistory.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr u32 kWatchdog = 2;

/// Lets @p other happen, once, right after the clock was read next.
void AfterTheClockIsRead(std::function<void()> other) {
  fake::OnUtcRead([other = std::move(other)] {
    fake::OnUtcRead({});
    other();
  });
}

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
  EXPECT_EQ(Written(), 1u);
  EXPECT_THAT(File(kBoardFile), HasSubstr(kHeader + Entry("Cold reset") + "SW VERSION: active:"));
}

TEST_F(BoardFileMomentsTest, AnEntryThatIsChangedWhileTheFileIsWrittenIsThatOfTheFile) {
  m_blackBox.addResetReasonWithTimestamp("Hardware reset requested");
  AfterTheClockIsRead([this] { m_blackBox.updateLastResetResonIfRequested(); });
  EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);
  EXPECT_THAT(File(kBoardFile), HasSubstr(kHeader + Entry("Hardware reset") + "SW VERSION: active:"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
