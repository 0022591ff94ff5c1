#include "PsuSpiPoller.h"

#include "fake/PlatformTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;
constexpr EAaSysLogSeverityLevel kInfo = EAaSysLogSeverityLevel_Info;
constexpr EAaSysLogSeverityLevel kWarning = EAaSysLogSeverityLevel_Warning;
constexpr EAaSysLogSeverityLevel kError = EAaSysLogSeverityLevel_Error;

constexpr u32 kChannel = 458817;

class PsuSpiPollerTest : public fake::PlatformTest {
 protected:
  static fake::LogLine Line(EAaSysLogSeverityLevel level, const std::string& text) { return {level, 131143, text}; }

  /// Enables the poller and lets its thread sleep that many times.
  void Feed(unsigned times) {
    m_poller.enableSpiEvents();
    fake::ClearLog();
    EXPECT_EQ(fake::RunThread("PsuSpiPoller", times), fake::ThreadEnd::Sleeping);
  }

  PsuSpiPoller m_poller;
};

TEST_F(PsuSpiPollerTest, ConstructionIsLogged) {
  EXPECT_EQ(fake::LogLines(), std::vector{Line(kDebug, "PsuSpiPoller::PsuSpiPoller")});
}

TEST_F(PsuSpiPollerTest, StartsDisabled) { EXPECT_EQ(m_poller.isPsuSpiPollerEnabled(), GLO_FALSE); }

TEST_F(PsuSpiPollerTest, ConstructionStartsNoThread) { EXPECT_THAT(fake::StartedThreads(), IsEmpty()); }

TEST_F(PsuSpiPollerTest, DestructionIsLogged) {
  { const PsuSpiPoller other; }
  EXPECT_TRUE(fake::Logged(kDebug, "PsuSpiPoller::~PsuSpiPoller"));
}

TEST_F(PsuSpiPollerTest, EnablingSaysThatItWorked) { EXPECT_TRUE(m_poller.enableSpiEvents()); }

TEST_F(PsuSpiPollerTest, EnablingEnables) {
  m_poller.enableSpiEvents();
  EXPECT_EQ(m_poller.isPsuSpiPollerEnabled(), GLO_TRUE);
}

TEST_F(PsuSpiPollerTest, EnablingStartsTheThread) {
  m_poller.enableSpiEvents();
  const std::vector<fake::StartedThread> threads = fake::StartedThreads();
  ASSERT_EQ(threads.size(), 1u);
  EXPECT_EQ(threads[0].name, "PsuSpiPoller");
  EXPECT_EQ(threads[0].entry, &feedSpiStateMachine);
  EXPECT_EQ(threads[0].stackSize, 1024u);
  EXPECT_EQ(threads[0].priority, 5u);
}

TEST_F(PsuSpiPollerTest, TheThreadGetsFourBytesOfThePollersAddress) {
  m_poller.enableSpiEvents();
  fake::Bytes address = fake::BytesOf(&m_poller);
  address.resize(4);
  ASSERT_EQ(fake::StartedThreads().size(), 1u);
  EXPECT_EQ(fake::StartedThreads()[0].argument, address);
}

TEST_F(PsuSpiPollerTest, EnablingLogsThatItStartsThenThatItStarted) {
  fake::ClearLog();
  m_poller.enableSpiEvents();
  EXPECT_EQ(
      fake::LogLines(),
      (std::vector{
          Line(kDebug, "PsuSpiPoller::enableSpiEvents(): starting thread for PSU SPI poller"),
          Line(kInfo,
               "PsuSpiPoller::enableSpiEvents(): thread for PSU SPI poller started. Interval is 900 milliseconds.")}));
}

TEST_F(PsuSpiPollerTest, EnablingASecondTimeStartsNoSecondThread) {
  m_poller.enableSpiEvents();
  m_poller.enableSpiEvents();
  EXPECT_EQ(fake::StartedThreads().size(), 1u);
}

TEST_F(PsuSpiPollerTest, EnablingASecondTimeWorksWithAWarning) {
  m_poller.enableSpiEvents();
  fake::ClearLog();
  EXPECT_TRUE(m_poller.enableSpiEvents());
  EXPECT_EQ(fake::LogLines(),
            std::vector{Line(kWarning, "PsuSpiPoller::enableSpiEvents(): thread for PSU SPI poller already started")});
}

TEST_F(PsuSpiPollerTest, AThreadThatCannotBeStartedIsAnError) {
  fake::FailCall("AaSysComEuCreateAndStart", 1, 12);
  EXPECT_FALSE(m_poller.enableSpiEvents());
  EXPECT_TRUE(
      fake::Logged(kError, "PsuSpiPoller::enableSpiEvents(): failed to start thread for PSU SPI poller, ret = 12"));
}

TEST_F(PsuSpiPollerTest, TheResultOfAThreadThatCannotBeStartedIsLoggedSigned) {
  fake::FailCall("AaSysComEuCreateAndStart", 1, -5);
  m_poller.enableSpiEvents();
  EXPECT_TRUE(
      fake::Logged(kError, "PsuSpiPoller::enableSpiEvents(): failed to start thread for PSU SPI poller, ret = -5"));
}

TEST_F(PsuSpiPollerTest, ThreeOfItsTextsHaveALineFeedAtTheirEnd) {
  fake::Clear();
  fake::FailCall("AaSysComEuCreateAndStart", 1, 12);
  for (int i = 0; i < 3; ++i) m_poller.enableSpiEvents();
  const auto line = [](EAaSysLogSeverityLevel level, const std::string& text) {
    return fake::Call("AaSysLogPrintE", level, 131143, "PsuSpiPoller::enableSpiEvents(): " + text);
  };
  const fake::Call starting = line(kDebug, "starting thread for PSU SPI poller");
  EXPECT_THAT(fake::Calls("AaSysLogPrintE"),
              ElementsAre(starting, line(kError, "failed to start thread for PSU SPI poller, ret = 12\n"), starting,
                          line(kInfo, "thread for PSU SPI poller started. Interval is 900 milliseconds.\n"),
                          line(kWarning, "thread for PSU SPI poller already started\n")));
}

TEST_F(PsuSpiPollerTest, AThreadThatCannotBeStartedIsNotLoggedAsStarted) {
  fake::FailCall("AaSysComEuCreateAndStart");
  m_poller.enableSpiEvents();
  EXPECT_THAT(fake::LogTexts(kInfo), IsEmpty());
}

TEST_F(PsuSpiPollerTest, AThreadThatCannotBeStartedLeavesThePollerDisabled) {
  fake::FailCall("AaSysComEuCreateAndStart");
  m_poller.enableSpiEvents();
  EXPECT_EQ(m_poller.isPsuSpiPollerEnabled(), GLO_FALSE);
}

TEST_F(PsuSpiPollerTest, AfterAFailureEnablingMayBeTriedAgain) {
  fake::FailCall("AaSysComEuCreateAndStart", 1);
  m_poller.enableSpiEvents();
  EXPECT_TRUE(m_poller.enableSpiEvents());
  EXPECT_EQ(m_poller.isPsuSpiPollerEnabled(), GLO_TRUE);
  EXPECT_EQ(fake::StartedThreads().size(), 1u);
}

TEST_F(PsuSpiPollerTest, TheThreadSleepsBeforeItFeeds) {
  Feed(0);
  EXPECT_THAT(fake::Calls("ddal_temp_get_curr"), IsEmpty());
}

TEST_F(PsuSpiPollerTest, TheThreadSleepsNineHundredMillisecondsThenReadsTheChannel) {
  fake::SetTemperature(kChannel, 41000);
  Feed(2);
  const fake::Call sleep("AaSysTimeSleep", 900, EAaSysTimeScale_Millisec);
  const fake::Call read("ddal_temp_get_curr", 0x70041);
  EXPECT_EQ(fake::Calls({"AaSysTimeSleep", "ddal_temp_get_curr"}), (std::vector{sleep, read, sleep, read, sleep}));
}

TEST_F(PsuSpiPollerTest, TheChannelIsReadEveryNineHundredMilliseconds) {
  fake::SetTemperature(kChannel, 41000);
  Feed(10);
  EXPECT_EQ(fake::Now(), 9'000'000u);
  EXPECT_EQ(fake::Calls("ddal_temp_get_curr").size(), 10u);
}

TEST_F(PsuSpiPollerTest, AGoodReadIsSilent) {
  fake::SetTemperature(kChannel, 41000);
  Feed(3);
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

TEST_F(PsuSpiPollerTest, AFailedReadIsAWarning) {
  fake::FailTemperature(kChannel, -2);
  Feed(1);
  EXPECT_EQ(fake::LogLines(),
            std::vector{Line(kWarning, "Failed to feed PSU SPI state machine. DDAL ecode -2, driver error -2")});
}

TEST_F(PsuSpiPollerTest, TheDriversTextIsAskedForWithSixtyCharacters) {
  fake::FailTemperature(kChannel, -2);
  Feed(1);
  EXPECT_EQ(fake::Calls("ddal_strerror"), std::vector{fake::Call("ddal_strerror", -2, 60)});
}

TEST_F(PsuSpiPollerTest, ADriverThatAlwaysFailsYieldsOneWarningARound) {
  fake::FailTemperature(kChannel, -2);
  Feed(25);
  EXPECT_EQ(fake::LogTexts(kWarning).size(), 25u);
  EXPECT_EQ(fake::LogLines().size(), 25u);
}

TEST_F(PsuSpiPollerTest, AfterAFailureTheChannelIsReadOn) {
  fake::QueueTemperatures(kChannel, {{.error = 5}, {.value = 41000}});
  Feed(2);
  EXPECT_EQ(fake::Calls("ddal_temp_get_curr").size(), 2u);
  EXPECT_EQ(fake::LogTexts(kWarning).size(), 1u);
}

TEST_F(PsuSpiPollerTest, TheThreadGoesOnWhenThePollerIsGone) {
  fake::SetTemperature(kChannel, 41000);
  { PsuSpiPoller().enableSpiEvents(); }
  EXPECT_EQ(fake::RunThread("PsuSpiPoller", 4), fake::ThreadEnd::Sleeping);
  EXPECT_EQ(fake::Calls("ddal_temp_get_curr").size(), 4u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
