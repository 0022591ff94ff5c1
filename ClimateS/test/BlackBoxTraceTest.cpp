/// The ring of snapshots and the trace file: how lines are taken, written and read back.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kEmptyHead =
    "#MINMAX: Minimum and maximum measured temperatures\n"
    "#\t\n"
    "MIN:\t\n"
    "MAX:\t\n"
    "\n"
    "#TEMPANDSPEED: temperatures and fan speeds\n"
    "#                  \t\n";

class BlackBoxTraceTest : public BlackBoxTest {
 protected:
  /// Writes the trace file.
  /// @return what is in it behind its seven first lines
  std::string Ring() {
    EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 1u);
    std::string text = File(kTraceFile);
    for (int line = 0; line < 7; ++line) text.erase(0, text.find('\n') + 1);
    return text;
  }

  /// Lets the trace file hold these lines behind its head, and starts the black box with it.
  void StartWithLines(const std::string& lines) { StartWithFile(kEmptyHead + lines); }
  void StartWithFile(const std::string& content) {
    fake::SetFile(kTraceFile, content);
    m_blackBox.init(EUnitType_Kel);
  }

  /// @return lines "line <first>" to "line <last>"
  static std::string Lines(int first, int last) {
    std::string lines;
    for (int i = first; i <= last; ++i) lines += "line " + std::to_string(i) + "\n";
    return lines;
  }

  static std::string LinesRead(int count) {
    return "BlackBoxData::readDataFromFile(): " + std::to_string(count) +
           " lines of temperature and fan speed data read from " + kTraceFile;
  }
  static testing::AssertionResult RestoredNothing() {
    for (const fake::LogLine& line : fake::LogLines()) {
      if (line.text.find("lines of temperature") != std::string::npos) return testing::AssertionFailure() << line;
    }
    return testing::AssertionSuccess();
  }
};

TEST_F(BlackBoxTraceTest, ASnapshotIsTheTimeAndItsTabWithoutSensorsAndFans) {
  Init();
  fake::SetUtc({.year = 2016, .month = 3, .day = 7, .hour = 14, .minute = 5, .second = 9, .millisec = 42});
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), "2016-03-07T14:05:09.042Z\t\n");
}

TEST_F(BlackBoxTraceTest, ASnapshotIsOfUtcAndNotOfLocalTime) {
  Init();
  fake::SetLocalOffset(120);
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), "2024-06-15T12:00:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, ASnapshotHasAColumnForEachSensorThenEachFan) {
  Init();
  m_blackBox.addFan("F");
  for (const char* name : {"B", "A", "C"}) m_blackBox.addSensor(name);
  EnableTrace();
  m_blackBox.addTemperature("A", -1500);
  m_blackBox.addTemperatureError("B");
  m_blackBox.addFanSpeed("F", 3000);
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), "2024-06-15T12:00:00.000Z\t-1500\terror\t0\t3000\t\n");
}

TEST_F(BlackBoxTraceTest, ASnapshotIsLogged) {
  Init();
  m_blackBox.addSensor("A");
  Forget();
  m_blackBox.takeSnapshot();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackBoxData::takeSnapshot: 2024-06-15T12:00:00.000Z\t0\t")));
}

TEST_F(BlackBoxTraceTest, ASnapshotReadsTheClockOnceThenHoldsTheSemaphore) {
  Init();
  m_blackBox.takeSnapshot();
  std::vector<std::string> functions;
  for (const fake::Call& call : fake::Calls()) functions.push_back(call.function);
  EXPECT_THAT(functions, ElementsAre("AaUtcTimeGet", "AaSysLogPrintE", "AaSemWait", "AaSemPost"));
}

TEST_F(BlackBoxTraceTest, ASnapshotEntersTheRingWhileTheSemaphoreIsHeld) {
  StartWithLines(Lines(1, 180));
  std::string taken, given;
  fake::OnSemaphoreTaken([&] { taken = Ring(); });
  fake::OnSemaphorePost([&] { given = Ring(); });
  m_blackBox.takeSnapshot();
  EXPECT_EQ(taken, Lines(1, 180));
  EXPECT_EQ(given, Lines(2, 180) + "2024-06-15T12:00:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, TheRingIsReadWhileTheSemaphoreIsHeld) {
  Init();
  fake::OnSemaphoreTaken([&] { m_blackBox.takeSnapshot(); });
  EXPECT_EQ(Ring(), "2024-06-15T12:00:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, ASnapshotDoesNotNeedRecording) {
  Init();
  m_blackBox.takeSnapshot();
  EXPECT_NE(Ring(), "");
}

TEST_F(BlackBoxTraceTest, SnapshotsStandOldestFirst) {
  Init();
  m_blackBox.takeSnapshot();
  fake::AdvanceTime(60'000'000);
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), "2024-06-15T12:00:00.000Z\t\n2024-06-15T12:01:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, ALineKeepsTheColumnsWithWhichItWasTaken) {
  Init();
  m_blackBox.addSensor("A");
  m_blackBox.takeSnapshot();
  m_blackBox.removeSensor("A");
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), "2024-06-15T12:00:00.000Z\t0\t\n2024-06-15T12:00:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, ThereIsRoomFor180Lines) {
  StartWithLines(Lines(1, 179));
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), Lines(1, 179) + "2024-06-15T12:00:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, TheLine181RemovesTheOldestOne) {
  StartWithLines(Lines(1, 180));
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), Lines(2, 180) + "2024-06-15T12:00:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, SnapshotsAreTakenAtTheTimeoutWhileReadingsAreRecorded) {
  Init();
  m_blackBox.handleSnapshotTimeout();
  EXPECT_EQ(Ring(), "");
  EnableTrace();
  m_blackBox.handleSnapshotTimeout();
  EXPECT_EQ(Ring(), "2024-06-15T12:00:00.000Z\t\n");
}

TEST_F(BlackBoxTraceTest, WithoutSensorsAndFansTheFileHasItsSevenLines) {
  Init();
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 1u);
  EXPECT_EQ(File(kTraceFile), kEmptyHead);
}

TEST_F(BlackBoxTraceTest, TheWholeFileIsAsDocumented) {
  Init();
  for (const char* name : {"KEL_MCU", "KEL", "NEVER"}) m_blackBox.addSensor(name);
  m_blackBox.addFan("GAR_FAN1");
  EnableTrace();
  m_blackBox.addTemperature("KEL", 30500);
  m_blackBox.addTemperature("KEL", 29000);
  m_blackBox.addTemperature("KEL_MCU", -5);
  m_blackBox.addFanSpeed("GAR_FAN1", 2900);
  m_blackBox.takeSnapshot();
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_EQ(File(kTraceFile),
            "#MINMAX: Minimum and maximum measured temperatures\n"
            "#\tKEL\tKEL_MCU\tNEVER\t\n"
            "MIN:\t29000\t-5\t-\t\n"
            "MAX:\t30500\t-5\t-\t\n"
            "\n"
            "#TEMPANDSPEED: temperatures and fan speeds\n"
            "#                  \tKEL\tKEL_MCU\tNEVER\tGAR_FAN1\t\n"
            "2024-06-15T12:00:00.000Z\t29000\t-5\t0\t2900\t\n");
}

TEST_F(BlackBoxTraceTest, TheFileIsWrittenAnewEachTime) {
  Init();
  fake::SetFile(kTraceFile, "old");
  m_blackBox.writeTempAndSpeedDataToFile();
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_EQ(File(kTraceFile), kEmptyHead);
}

TEST_F(BlackBoxTraceTest, TheHeadIsWrittenAtOnceAndEachLineForItselfUnderTheSemaphore) {
  StartWithLines("one\ntwo\n");
  fake::Clear();
  m_blackBox.writeTempAndSpeedDataToFile();
  std::vector<fake::Call> calls = fake::Calls();
  std::erase_if(calls, [](const fake::Call& call) { return call.function == "AaSysLogPrintE"; });
  ASSERT_EQ(calls.size(), 7u);
  EXPECT_EQ(calls[2].function, "AaSemWait");
  EXPECT_EQ(calls[5].function, "AaSemPost");
  calls.erase(calls.begin() + 5);
  calls.erase(calls.begin() + 2);
  EXPECT_THAT(calls, ElementsAre(fake::Call("AaFileOpen", kTraceFile, "w"), Written(kEmptyHead, kTraceFile),
                                 Written("one\n", kTraceFile), Written("two\n", kTraceFile),
                                 fake::Call("AaFileClose", kTraceFile)));
}

TEST_F(BlackBoxTraceTest, WritingIsLoggedBeforeTheFileIsOpened) {
  Init();
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_EQ(fake::Calls().front(),
            fake::Call("AaSysLogPrintE", kInfo, 131143,
                       "BlackBoxData::writeTempAndSpeedDataToFile(): writing temperature and fan speed data to file " +
                           kTraceFile));
  EXPECT_EQ(fake::LogLines().size(), 1u);
}

TEST_F(BlackBoxTraceTest, WithoutAPathNothingIsWritten) {
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 0u);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kError,
                               "BlackBoxData::writeTempAndSpeedDataToFile(): tag app.hwapi.blackbox.temperature.file "
                               "was not found, don't know where to store the data")));
  EXPECT_THAT(fake::Calls("AaFileOpen"), IsEmpty());
}

TEST_F(BlackBoxTraceTest, AFileThatCannotBeOpenedIsAnErrorAndKeepsTheRing) {
  StartWithLines("one\n");
  Forget();
  fake::FailCall("AaFileOpen");
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 0u);
  EXPECT_EQ(fake::LogLines().back(), Line(kError, "BlackBoxData::writeTempAndSpeedDataToFile(): failed to open file " +
                                                      kTraceFile + " for writing"));
  EXPECT_THAT(fake::Calls({"AaFileWrite", "AaFileClose", "AaSemWait"}), IsEmpty());
  EXPECT_EQ(Ring(), "one\n");
}

TEST_F(BlackBoxTraceTest, FailedWritesAreNotLookedAt) {
  StartWithLines("one\n");
  Forget();
  fake::FailEvery("AaFileWrite");
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 1u);
  EXPECT_EQ(fake::Calls("AaFileWrite").size(), 2u);
  EXPECT_EQ(fake::Calls("AaFileClose").size(), 1u);
  EXPECT_EQ(File(kTraceFile), kEmptyHead + "one\n");  // the platform keeps the old file
}

TEST_F(BlackBoxTraceTest, AFailedCloseIsNotLookedAt) {
  Init();
  fake::FailCall("AaFileClose");
  EXPECT_EQ(m_blackBox.writeTempAndSpeedDataToFile(), 1u);
  EXPECT_THAT(fake::LogTexts(kError), IsEmpty());
}

TEST_F(BlackBoxTraceTest, OldLinesAreThereAgainAfterAStart) {
  StartWithLines(Lines(1, 3));
  EXPECT_TRUE(fake::Logged(kDebug, LinesRead(3)));
  EXPECT_EQ(Ring(), Lines(1, 3));
}

TEST_F(BlackBoxTraceTest, ReadingBackIsLogged) {
  StartWithLines("one\n");
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", kDebug, 131143,
        "BlackBoxData::readDataFromFile(): reading old temperature and fan speed data from " + kTraceFile},
       {"AaFileOpen", kTraceFile, "r"},
       {"AaFileReadLine", 1024, kTraceFile},
       {"AaSysLogPrintE", kDebug, 131143, LinesRead(1)}}));
}

TEST_F(BlackBoxTraceTest, AMissingFileIsNormal) {
  Init();
  m_blackBox.readTempDataFromFile();
  EXPECT_THAT(
      fake::LogLines(),
      ElementsAre(
          Line(kDebug,
               "BlackBoxData::readDataFromFile(): reading old temperature and fan speed data from " + kTraceFile),
          Line(kDebug, "BlackBoxData::readDataFromFile(): old temperature and fan speed data does not exists")));
}

TEST_F(BlackBoxTraceTest, AFileThatWasReadStaysOpen) {
  StartWithLines("one\n");
  EXPECT_THAT(fake::Calls("AaFileClose"), testing::Not(testing::Contains(fake::Call("AaFileClose", kTraceFile))));
  EXPECT_EQ(fake::OpenFiles(), 1u);
}

TEST_F(BlackBoxTraceTest, OfALongFileTheNewest180LinesSurvive) {
  StartWithLines(Lines(1, 500));
  EXPECT_TRUE(fake::Logged(kDebug, LinesRead(180)));
  EXPECT_EQ(Ring(), Lines(321, 500));
}

TEST_F(BlackBoxTraceTest, AFileOf180LinesSurvivesWhole) {
  StartWithLines(Lines(1, 180));
  EXPECT_EQ(Ring(), Lines(1, 180));
}

TEST_F(BlackBoxTraceTest, AFileWithoutTheMarkRestoresNothingSilently) {
  StartWithFile("#MINMAX: x\n#\t\nMIN:\t\none\n TEMPANDSPEED\n #TEMPANDSPEED\n#TEMPANDSPEE\n");
  EXPECT_TRUE(RestoredNothing());
  EXPECT_EQ(Ring(), "");
}

TEST_F(BlackBoxTraceTest, TheMarkIsComparedOverItsThirteenCharacters) {
  StartWithFile("#TEMPANDSPEEDandmore\n#\none\n");
  EXPECT_EQ(Ring(), "one\n");
}

TEST_F(BlackBoxTraceTest, AFileThatEndsBehindTheMarkRestoresNothingSilently) {
  StartWithFile("#TEMPANDSPEED: temperatures and fan speeds\n");
  EXPECT_TRUE(RestoredNothing());
  EXPECT_EQ(Ring(), "");
}

TEST_F(BlackBoxTraceTest, AFileThatEndsBehindTheColumnRowRestoresNothingSilently) {
  StartWithFile(kEmptyHead);
  EXPECT_TRUE(RestoredNothing());
  EXPECT_EQ(Ring(), "");
}

TEST_F(BlackBoxTraceTest, AnEmptyFileRestoresNothingSilently) {
  StartWithFile("");
  EXPECT_TRUE(RestoredNothing());
  EXPECT_EQ(Ring(), "");
}

TEST_F(BlackBoxTraceTest, ALastLineWithoutLineEndIsKeptAsItIs) {
  StartWithLines("one\ntwo");
  EXPECT_EQ(Ring(), "one\ntwo");
}

TEST_F(BlackBoxTraceTest, ALineWithoutTextIsKept) {
  StartWithLines("\none\n");
  EXPECT_TRUE(fake::Logged(kDebug, LinesRead(2)));
  EXPECT_EQ(Ring(), "\none\n");
}

TEST_F(BlackBoxTraceTest, ALongLineArrivesInPiecesThatEachCountAsOne) {
  const std::string line = std::string(1023, 'a') + std::string(1023, 'b') + "c\n";
  StartWithLines(line);
  EXPECT_TRUE(fake::Logged(kDebug, LinesRead(3)));
  EXPECT_EQ(Ring(), line);
}

TEST_F(BlackBoxTraceTest, TheRestOfALongColumnRowCountsAsTheFirstLine) {
  StartWithFile("#TEMPANDSPEED\n#" + std::string(1022, 'c') + "rest\none\n");
  EXPECT_TRUE(fake::Logged(kDebug, LinesRead(2)));
  EXPECT_EQ(Ring(), "rest\none\n");
}

TEST_F(BlackBoxTraceTest, ALineEndsAtItsFirstZero) {
  StartWithLines(std::string("on\0e\n", 5) + "two\n");
  EXPECT_EQ(Ring(), "ontwo\n");
}

TEST_F(BlackBoxTraceTest, ALineThatBeginsWithAZeroIsNoLine) {
  StartWithLines(std::string("\0one\n", 5) + "two\n");
  EXPECT_TRUE(fake::Logged(kDebug, LinesRead(1)));
  EXPECT_EQ(Ring(), "two\n");
}

TEST_F(BlackBoxTraceTest, AReadErrorKeepsTheLinesBeforeIt) {
  Init();
  fake::SetFile(kTraceFile, kEmptyHead + Lines(1, 5));
  fake::FailCall("AaFileReadLine", 10);
  m_blackBox.readTempDataFromFile();
  EXPECT_TRUE(fake::Logged(kDebug, LinesRead(2)));
  EXPECT_EQ(Ring(), Lines(1, 2));
}

TEST_F(BlackBoxTraceTest, OldLinesKeepTheirColumnsBesideNewOnes) {
  StartWithLines("2020-01-01T00:00:00.000Z\t1\t2\t3\t\n");
  m_blackBox.addSensor("A");
  m_blackBox.takeSnapshot();
  EXPECT_EQ(Ring(), "2020-01-01T00:00:00.000Z\t1\t2\t3\t\n2024-06-15T12:00:00.000Z\t0\t\n");
}

TEST_F(BlackBoxTraceTest, OldExtremesAreNotReadBack) {
  StartWithFile("#MINMAX: x\n#\tA\t\nMIN:\t1\t\nMAX:\t2\t\n\n#TEMPANDSPEED: x\n#\tA\t\none\n");
  m_blackBox.addSensor("A");
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_NE(File(kTraceFile).find("MIN:\t-\t\nMAX:\t-\t\n"), std::string::npos);
}

TEST_F(BlackBoxTraceTest, OldLinesAreReadBeforeTheSemaphoreExists) {
  StartWithLines("one\n");
  EXPECT_TRUE(fake::CalledInOrder({{"AaFileReadLine", 1024, kTraceFile}, {"AaSemCreateC", 1}}));
  EXPECT_THAT(fake::Calls("AaSemWait"), IsEmpty());
}

TEST_F(BlackBoxTraceTest, AFileBroughtBackAndWrittenIsTheSame) {
  const std::string file = kEmptyHead + Lines(1, 180);
  StartWithFile(file);
  m_blackBox.writeTempAndSpeedDataToFile();
  EXPECT_EQ(File(kTraceFile), file);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
