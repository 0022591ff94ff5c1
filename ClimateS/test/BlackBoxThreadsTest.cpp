/// The beginning of recording, the two threads of the black box, and when the files are written.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr u32 kUpdateTimerRad = 0x200B5;

class BlackBoxThreadsTest : public BlackBoxTest {
 protected:
  using BlackBoxTest::BlackBoxTest;

  /// @return how many snapshot lines the trace file has; -1 without a file
  static long Snapshots() {
    const std::string file = File(kTraceFile);
    return file == "(no file)" ? -1 : std::count(file.begin(), file.end(), '\n') - 7;
  }
  static std::size_t Rewrites(const std::string& path) {
    const std::vector<fake::Call> opens = fake::Calls("AaFileOpen");
    return static_cast<std::size_t>(std::count(opens.begin(), opens.end(), fake::Call("AaFileOpen", path, "w")));
  }
};

TEST_F(BlackBoxThreadsTest, RecordingDoesNotBeginBeforeTheStart) {
  EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 1u);
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 0u);
  EXPECT_THAT(fake::StartedThreads(), IsEmpty());
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

TEST_F(BlackBoxThreadsTest, RecordingBeginsWithTwoThreads) {
  Init();
  EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 1u);
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 1u);
  const std::vector<fake::StartedThread> threads = fake::StartedThreads();
  ASSERT_EQ(threads.size(), 2u);
  EXPECT_EQ(threads[0].entry, &waitingForTheSnapshotTmo);
  EXPECT_EQ(threads[1].entry, &waitingForTheFileStoringTmo);
}

TEST_F(BlackBoxThreadsTest, BothThreadsHaveTheSameNameStackAndPriorityAndAnArgumentOfFourBytes) {
  Init();
  m_blackBox.enableTemperatureTrace();
  for (const fake::StartedThread& thread : fake::StartedThreads()) {
    EXPECT_EQ(thread.name, "BlackBoxData");
    EXPECT_EQ(thread.stackSize, 1024u);
    EXPECT_EQ(thread.priority, 5u);
    EXPECT_EQ(thread.argument.size(), 4u);
  }
}

TEST_F(BlackBoxThreadsTest, TheBeginningIsLoggedAroundTheThreads) {
  Init();
  m_blackBox.enableTemperatureTrace();
  const fake::Call thread("AaSysComEuCreateAndStart", "BlackBoxData", 1024, 5);
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", kDebug, 131143,
        "BlackBoxData::enableTemperatureTrace(): starting timer threads for BlackBox data storing\n"},
       thread,
       thread,
       {"AaSysLogPrintE", kDebug, 131143,
        "BlackBoxData::enableTemperatureTrace(): temperature and fan speed tracing enabled\n"}}));
  EXPECT_EQ(fake::Calls().size(), 4u);
}

TEST_F(BlackBoxThreadsTest, ASecondBeginningDoesNothing) {
  Init();
  EnableTrace();
  EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 1u);
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(BlackBoxThreadsTest, WithoutTheSnapshotThreadRecordingDoesNotBegin) {
  Init();
  fake::FailCall("AaSysComEuCreateAndStart", 1, 12);
  EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 0u);
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 0u);
  EXPECT_EQ(fake::Calls("AaSysComEuCreateAndStart").size(), 1u);
  EXPECT_THAT(fake::LogTexts(kError),
              ElementsAre("BlackBoxData::enableTemperatureTrace(): failed to start thread for snapshot timeout, "
                          "ret = 12"));
}

TEST_F(BlackBoxThreadsTest, TheFailuresOfItsThreadsHaveALineFeedAtTheirEnd) {
  Init();
  for (const u32 call : {1u, 3u})
    fake::FailCall("AaSysComEuCreateAndStart", call, 12);  // the second thread's is the third
  for (int i = 0; i < 2; ++i) m_blackBox.enableTemperatureTrace();
  const auto failed = [](const std::string& what) {
    return fake::Call("AaSysLogPrintE", kError, 131143,
                      "BlackBoxData::enableTemperatureTrace(): failed to start thread for " + what + ", ret = 12\n");
  };
  EXPECT_TRUE(fake::CalledInOrder({failed("snapshot timeout"), failed("file storing timeout")}));
}

TEST_F(BlackBoxThreadsTest, WithoutTheFileThreadRecordingDoesNotBegin) {
  Init();
  fake::FailCall("AaSysComEuCreateAndStart", 2, 11);
  EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 0u);
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 0u);
  EXPECT_EQ(fake::StartedThreads().size(), 1u);
  EXPECT_THAT(fake::LogTexts(kError),
              ElementsAre("BlackBoxData::enableTemperatureTrace(): failed to start thread for file storing timeout, "
                          "ret = 11"));
}

TEST_F(BlackBoxThreadsTest, AfterAFailureOfTheFileThreadTheNextBeginningStartsBothAnew) {
  Init();
  fake::FailCall("AaSysComEuCreateAndStart", 2);
  m_blackBox.enableTemperatureTrace();
  EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 1u);
  std::vector<void* (*)(void*)> entries;
  for (const fake::StartedThread& thread : fake::StartedThreads()) entries.push_back(thread.entry);
  EXPECT_THAT(entries, ElementsAre(&waitingForTheSnapshotTmo, &waitingForTheSnapshotTmo, &waitingForTheFileStoringTmo));
}

TEST_F(BlackBoxThreadsTest, AfterAFailureTheBeginningMayBeTriedAgain) {
  Init();
  fake::FailCall("AaSysComEuCreateAndStart");
  m_blackBox.enableTemperatureTrace();
  EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 1u);
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 1u);
}

TEST_F(BlackBoxThreadsTest, NothingIsWrittenBeforeTheStart) {
  m_blackBox.createDataFiles();
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(BlackBoxThreadsTest, BeforeRecordingBeginsTheOtherFilesAreWritten) {
  fake::SetFile(kOamAlarmsFile, "alarms");
  fake::SetFile(kOamSfpFile, "sfp");
  Init();
  m_blackBox.createDataFiles();
  EXPECT_NE(File(kBoardFile), "(no file)");
  EXPECT_EQ(File(kAlarmsFile), "alarms");
  EXPECT_EQ(File(kSfpFile), "sfp");
  EXPECT_EQ(File(kTraceFile), "(no file)");
}

TEST_F(BlackBoxThreadsTest, TheFilesAreWrittenInOrder) {
  fake::SetFile(kOamAlarmsFile, "alarms");
  fake::SetFile(kOamSfpFile, "sfp");
  Init();
  EnableTrace();
  m_blackBox.createDataFiles();
  EXPECT_TRUE(fake::CalledInOrder({{"AaFileClose", kBoardFile},
                                   {"AaFileCopy", kOamAlarmsFile, kAlarmsFile},
                                   {"AaFileCopy", kOamSfpFile, kSfpFile},
                                   {"AaSemWait"},
                                   {"AaFileOpen", kTraceFile, "w"},
                                   {"AaFileClose", kTraceFile}}));
}

TEST_F(BlackBoxThreadsTest, EachFileIsTriedWhateverFailedBefore) {
  Init();
  EnableTrace();
  fake::FailCall("AaFileOpen", 1);  // the board file
  m_blackBox.createDataFiles();
  EXPECT_EQ(fake::LogTexts(kWarning).size(), 2u);  // there is no log to copy
  EXPECT_EQ(Snapshots(), 1);
}

TEST_F(BlackBoxThreadsTest, TheFirstTraceFileHasASnapshot) {
  Init();
  EnableTrace();
  m_blackBox.createDataFiles();
  EXPECT_EQ(Snapshots(), 1);
}

TEST_F(BlackBoxThreadsTest, LaterTraceFilesHaveTheSnapshotsThatWereTaken) {
  Init();
  EnableTrace();
  m_blackBox.takeSnapshot();
  m_blackBox.createDataFiles();
  m_blackBox.createDataFiles();
  EXPECT_EQ(Snapshots(), 1);
}

TEST_F(BlackBoxThreadsTest, ASnapshotIsTakenAlsoWhenOldLinesWereRestored) {
  fake::SetFile(kTraceFile, "#TEMPANDSPEED\n#\nold\n");
  Init();
  EnableTrace();
  m_blackBox.createDataFiles();
  EXPECT_EQ(Snapshots(), 2);
}

/// The value of the update timer, and how many hours it stands for.
struct Hours {
  u32 rad;
  u32 limit;
  bool usesDefault;

  friend std::ostream& operator<<(std::ostream& out, const Hours& hours) { return out << hours.rad; }
};

class UpdateTimerTest : public BlackBoxThreadsTest, public testing::WithParamInterface<Hours> {
 protected:
  UpdateTimerTest() {
    Init();
    EnableTrace();
    fake::SetRad(kUpdateTimerRad, GetParam().rad);
  }
  void PassHours(u32 hours) {
    for (u32 i = 0; i < hours; ++i) m_blackBox.handleDataWritingTimeout();
  }
};

TEST_P(UpdateTimerTest, FilesAreWrittenWhenTheHoursHavePassed) {
  PassHours(GetParam().limit - 1);
  EXPECT_EQ(Rewrites(kTraceFile), 0u);
  EXPECT_EQ(Rewrites(kBoardFile), 0u);
  PassHours(1);
  EXPECT_EQ(Rewrites(kTraceFile), 1u);
  EXPECT_EQ(Rewrites(kBoardFile), 1u);
}

TEST_P(UpdateTimerTest, FilesAreWrittenAgainAfterAsManyHours) {
  PassHours(2 * GetParam().limit - 1);
  EXPECT_EQ(Rewrites(kTraceFile), 1u);
  PassHours(1);
  EXPECT_EQ(Rewrites(kTraceFile), 2u);
}

TEST_P(UpdateTimerTest, EachHourIsLogged) {
  std::vector<std::string> expected;
  const std::string limit = std::to_string(GetParam().limit);
  if (GetParam().usesDefault) {
    expected.emplace_back(
        "BlackBoxData::handleDataWritingTimeout(): BlackBoxUpdateTimer updated to default value (24h)");
  }
  expected.push_back("BlackBoxData::handleDataWritingTimeout(): timeout 1/" + limit + " hours");
  PassHours(1);
  std::vector<std::string> lines = fake::LogTexts(kDebug);
  lines.resize(expected.size());
  EXPECT_EQ(lines, expected);
}

TEST_P(UpdateTimerTest, TheDefaultIsLoggedEveryHour) {
  PassHours(3);
  const std::vector<std::string> lines = fake::LogTexts(kDebug);
  const auto defaults = std::count(lines.begin(), lines.end(),
                                   "BlackBoxData::handleDataWritingTimeout(): BlackBoxUpdateTimer updated to default "
                                   "value (24h)");
  EXPECT_EQ(defaults, GetParam().usesDefault ? 3 : 0);
}

INSTANTIATE_TEST_SUITE_P(Hours, UpdateTimerTest,
                         testing::Values(Hours{0, 24, true}, Hours{1, 1, false}, Hours{2, 2, false},
                                         Hours{23, 23, false}, Hours{24, 24, false}, Hours{25, 24, true},
                                         Hours{0xFFFFFFFF, 24, true}),
                         testing::PrintToStringParamName());

TEST_F(BlackBoxThreadsTest, TheHoursCountOnWhenTheLimitChanges) {
  Init();
  EnableTrace();
  for (int hour = 0; hour < 5; ++hour) m_blackBox.handleDataWritingTimeout();
  fake::SetRad(kUpdateTimerRad, 3);
  m_blackBox.handleDataWritingTimeout();
  EXPECT_TRUE(fake::Logged(kDebug, "BlackBoxData::handleDataWritingTimeout(): timeout 6/3 hours"));
  EXPECT_EQ(Rewrites(kTraceFile), 1u);
}

TEST_F(BlackBoxThreadsTest, TheHoursBeginWithRecording) {
  Init();
  for (int hour = 0; hour < 5; ++hour) m_blackBox.handleDataWritingTimeout();
  EnableTrace();
  m_blackBox.handleDataWritingTimeout();
  EXPECT_TRUE(fake::Logged(kDebug, "BlackBoxData::handleDataWritingTimeout(): timeout 1/24 hours"));
}

/// The threads, which use the process's black box.
class RunningThreadsTest : public BlackBoxThreadsTest {
 protected:
  RunningThreadsTest() : BlackBoxThreadsTest(BlackBoxData::getInstance()) {
    Init();
    EnableTrace();
  }

  static constexpr unsigned kSnapshotThread = 1;
  static constexpr unsigned kFileThread = 2;
  static void Run(unsigned thread, unsigned sleeps) {
    EXPECT_EQ(fake::RunThread("BlackBoxData", sleeps, thread), fake::ThreadEnd::Sleeping);
  }
};

TEST_F(RunningThreadsTest, TheFirstSnapshotComesAfterSixtySeconds) {
  Run(kSnapshotThread, 0);
  EXPECT_THAT(fake::Calls("AaUtcTimeGet"), IsEmpty());
  EXPECT_THAT(fake::Calls("AaSysTimeSleep"), ElementsAre(fake::Call("AaSysTimeSleep", 60, EAaSysTimeScale_Sec)));
}

TEST_F(RunningThreadsTest, SnapshotsComeEverySixtySeconds) {
  Run(kSnapshotThread, 3);
  m_blackBox.writeTempAndSpeedDataToFile();
  const std::string file = File(kTraceFile);
  EXPECT_EQ(file.substr(file.find("2024")),
            "2024-06-15T12:01:00.000Z\t\n2024-06-15T12:02:00.000Z\t\n2024-06-15T12:03:00.000Z\t\n");
}

TEST_F(RunningThreadsTest, SnapshotsAreOfTheOneBlackBoxOfTheProcess) {
  BlackBoxData other;
  for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
  EXPECT_EQ(other.init(EUnitType_Kel), 1u);
  EXPECT_EQ(other.enableTemperatureTrace(), 1u);
  constexpr unsigned kSnapshotThreadOfTheOther = 3;
  Run(kSnapshotThreadOfTheOther, 2);
  other.writeTempAndSpeedDataToFile();
  EXPECT_EQ(Snapshots(), 0);
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_EQ(Snapshots(), 2);
}

TEST_F(RunningThreadsTest, TheRingSpansThreeHours) {
  Run(kSnapshotThread, 200);
  m_blackBox.writeTempAndSpeedDataToFile();
  const std::string file = File(kTraceFile);
  EXPECT_EQ(Snapshots(), 180);
  EXPECT_EQ(file.substr(file.find("2024"), 24), "2024-06-15T12:21:00.000Z");
  EXPECT_NE(file.find("2024-06-15T15:20:00.000Z"), std::string::npos);
}

TEST_F(RunningThreadsTest, SnapshotsTouchNoFile) {
  Run(kSnapshotThread, 10);
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaFileWrite", "AaFileCopy"}), IsEmpty());
}

TEST_F(RunningThreadsTest, TheFileThreadLooksEveryHour) {
  Run(kFileThread, 2);
  const fake::Call sleep("AaSysTimeSleep", 3600, EAaSysTimeScale_Sec);
  const fake::Call look("AaConfigRadGetValue", kUpdateTimerRad);
  EXPECT_THAT(fake::Calls({"AaSysTimeSleep", "AaConfigRadGetValue"}), ElementsAre(sleep, look, sleep, look, sleep));
}

TEST_F(RunningThreadsTest, TheFileThreadWritesTheFilesOnceADay) {
  Run(kFileThread, 23);
  EXPECT_EQ(Snapshots(), -1);
  Run(kFileThread, 1);
  EXPECT_EQ(Rewrites(kTraceFile), 1u);
  EXPECT_EQ(Snapshots(), 1);
}

/// The snapshot thread of a recording that could not begin.
class LoneSnapshotThreadTest : public BlackBoxThreadsTest {
 protected:
  LoneSnapshotThreadTest() : BlackBoxThreadsTest(BlackBoxData::getInstance()) {
    Init();
    fake::FailCall("AaSysComEuCreateAndStart", 2);
    EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 0u);
  }
};

TEST_F(LoneSnapshotThreadTest, TakesSnapshotsWithoutRecording) {
  EXPECT_EQ(fake::RunThread("BlackBoxData", 3), fake::ThreadEnd::Sleeping);
  EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 0u);
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_EQ(Snapshots(), 3);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
