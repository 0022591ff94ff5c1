/// Sensors, fans and their readings, as they show in the trace.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the trace file says of sensors and fans: one string a row, tabs as '|'.
struct Table {
  std::string sensors;
  std::string minimums;
  std::string maximums;
  std::string columns;
  std::string newest;  ///< newest snapshot, without its time

  bool operator==(const Table&) const = default;
};

class BlackBoxReadingsTest : public BlackBoxTest {
 protected:
  BlackBoxReadingsTest() { Init(); }

  /// Takes a snapshot and reads the trace file.
  Table Trace() {
    m_blackBox.takeSnapshot();
    m_blackBox.writeTempAndSpeedDataToFile();
    std::vector<std::string> lines(1);
    for (const char c : File(kTraceFile)) {
      if (c == '\n') {
        lines.emplace_back();
      } else {
        lines.back().push_back(c == '\t' ? '|' : c);
      }
    }
    EXPECT_GE(lines.size(), 9u);
    lines.resize(std::max<std::size_t>(lines.size(), 9));
    const std::string& newest = lines[lines.size() - 2];
    return {.sensors = lines[1].substr(2),
            .minimums = lines[2].substr(5),
            .maximums = lines[3].substr(5),
            .columns = lines[6].substr(20),
            .newest = newest.substr(newest.find('|') + 1)};
  }

  /// @return minimum, maximum and newest reading of the only sensor
  std::vector<std::string> Sensor() {
    const Table table = Trace();
    return {table.minimums, table.maximums, table.newest};
  }
};

TEST_F(BlackBoxReadingsTest, ANewSensorIsLogged) {
  m_blackBox.addSensor("KEL");
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackBoxData::addSensor(): sensor KEL")));
}

TEST_F(BlackBoxReadingsTest, ANewFanIsLogged) {
  m_blackBox.addFan("GAR_FAN1");
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackBoxData::addFan(): fanName GAR_FAN1")));
}

TEST_F(BlackBoxReadingsTest, AddingAsksThePlatformForNothingElse) {
  m_blackBox.addSensor("KEL");
  m_blackBox.addFan("GAR_FAN1");
  EXPECT_EQ(fake::Calls().size(), fake::Calls("AaSysLogPrintE").size());
}

TEST_F(BlackBoxReadingsTest, ASensorWithoutAReadingHasNoExtremesAndTheValueZero) {
  m_blackBox.addSensor("KEL");
  EXPECT_EQ(Trace(), (Table{.sensors = "KEL|", .minimums = "-|", .maximums = "-|", .columns = "KEL|", .newest = "0|"}));
}

TEST_F(BlackBoxReadingsTest, AFanWithoutAReadingHasTheSpeedZeroAndNoExtremes) {
  m_blackBox.addFan("GAR_FAN1");
  EXPECT_EQ(Trace(), (Table{.sensors = "", .minimums = "", .maximums = "", .columns = "GAR_FAN1|", .newest = "0|"}));
}

TEST_F(BlackBoxReadingsTest, SensorsThenFansComeInTheOrderOfTheirNamesByBytes) {
  for (const char* name : {"b", "a", "Z", "a1", "_"}) m_blackBox.addSensor(name);
  for (const char* name : {"FAN2", "FAN10", "AFAN"}) m_blackBox.addFan(name);
  EXPECT_EQ(Trace().sensors, "Z|_|a|a1|b|");
  EXPECT_EQ(Trace().columns, "Z|_|a|a1|b|AFAN|FAN10|FAN2|");
}

TEST_F(BlackBoxReadingsTest, AKnownSensorIsLeftUntouchedSilently) {
  m_blackBox.addSensor("KEL");
  EnableTrace();
  m_blackBox.addTemperature("KEL", 41000);
  Forget();
  m_blackBox.addSensor("KEL");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
  EXPECT_THAT(Sensor(), ElementsAre("41000|", "41000|", "41000|"));
}

TEST_F(BlackBoxReadingsTest, AKnownFanIsLeftUntouchedSilently) {
  m_blackBox.addFan("FAN");
  EnableTrace();
  m_blackBox.addFanSpeed("FAN", 3000);
  Forget();
  m_blackBox.addFan("FAN");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
  EXPECT_EQ(Trace().newest, "3000|");
}

TEST_F(BlackBoxReadingsTest, ASensorAndAFanMayHaveTheSameName) {
  m_blackBox.addSensor("X");
  m_blackBox.addFan("X");
  EnableTrace();
  m_blackBox.addTemperature("X", 1);
  m_blackBox.addFanSpeed("X", 2);
  EXPECT_EQ(Trace().newest, "1|2|");
}

TEST_F(BlackBoxReadingsTest, ARemovedSensorIsGone) {
  m_blackBox.addSensor("A");
  m_blackBox.addSensor("B");
  m_blackBox.removeSensor("A");
  EXPECT_EQ(Trace().columns, "B|");
}

TEST_F(BlackBoxReadingsTest, RemovingASensorIsLogged) {
  m_blackBox.addSensor("A");
  Forget();
  m_blackBox.removeSensor("A");
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackBoxData::removeSensor"),
                                            Line(kDebug, "BlackBoxData::removeSensor(): delete sensor A")));
}

TEST_F(BlackBoxReadingsTest, RemovingAnUnknownSensorOnlyLogsTheCall) {
  m_blackBox.addSensor("A");
  Forget();
  m_blackBox.removeSensor("B");
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackBoxData::removeSensor")));
  EXPECT_EQ(Trace().columns, "A|");
}

TEST_F(BlackBoxReadingsTest, RemovingASensorLeavesTheFanOfThatName) {
  m_blackBox.addSensor("X");
  m_blackBox.addFan("X");
  m_blackBox.removeSensor("X");
  EXPECT_EQ(Trace().sensors, "");
  EXPECT_EQ(Trace().columns, "X|");
}

TEST_F(BlackBoxReadingsTest, ASensorThatComesBackBeginsAfresh) {
  m_blackBox.addSensor("A");
  EnableTrace();
  m_blackBox.addTemperature("A", 41000);
  m_blackBox.removeSensor("A");
  m_blackBox.addSensor("A");
  EXPECT_THAT(Sensor(), ElementsAre("-|", "-|", "0|"));
}

TEST_F(BlackBoxReadingsTest, SensorsAndFansMayBeAddedWhileReadingsAreRecorded) {
  EnableTrace();
  m_blackBox.addSensor("A");
  m_blackBox.addFan("FAN");
  m_blackBox.addTemperature("A", 7);
  m_blackBox.addFanSpeed("FAN", 8);
  EXPECT_EQ(Trace().newest, "7|8|");
}

TEST_F(BlackBoxReadingsTest, ReadingsBeforeRecordingBeganAreDropped) {
  m_blackBox.addSensor("A");
  m_blackBox.addFan("FAN");
  Forget();
  m_blackBox.addTemperature("A", 41000);
  m_blackBox.addTemperatureError("A");
  m_blackBox.addFanSpeed("FAN", 3000);
  m_blackBox.addFanSpeedError("FAN");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
  EXPECT_THAT(Sensor(), ElementsAre("-|", "-|", "0|0|"));
}

TEST_F(BlackBoxReadingsTest, UnknownNamesBeforeRecordingBeganAreSilent) {
  m_blackBox.addTemperature("A", 41000);
  m_blackBox.addTemperatureError("A");
  m_blackBox.addFanSpeed("FAN", 3000);
  m_blackBox.addFanSpeedError("FAN");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

/// Readings while they are recorded, of the sensor "A" and the fan "F".
class RecordedReadingsTest : public BlackBoxReadingsTest {
 protected:
  RecordedReadingsTest() {
    m_blackBox.addSensor("A");
    m_blackBox.addFan("F");
    EnableTrace();
  }
};

TEST_F(RecordedReadingsTest, OneTemperatureIsMinimumMaximumAndValue) {
  m_blackBox.addTemperature("A", 41000);
  EXPECT_THAT(Sensor(), ElementsAre("41000|", "41000|", "41000|0|"));
}

TEST_F(RecordedReadingsTest, AHigherTemperatureMovesTheMaximum) {
  for (const int value : {41000, 41001}) m_blackBox.addTemperature("A", value);
  EXPECT_THAT(Sensor(), ElementsAre("41000|", "41001|", "41001|0|"));
}

TEST_F(RecordedReadingsTest, ALowerTemperatureMovesTheMinimum) {
  for (const int value : {41000, 40999}) m_blackBox.addTemperature("A", value);
  EXPECT_THAT(Sensor(), ElementsAre("40999|", "41000|", "40999|0|"));
}

TEST_F(RecordedReadingsTest, ATemperatureBetweenMovesTheValueOnly) {
  for (const int value : {10, 30, 20}) m_blackBox.addTemperature("A", value);
  EXPECT_THAT(Sensor(), ElementsAre("10|", "30|", "20|0|"));
}

TEST_F(RecordedReadingsTest, NegativeTemperaturesAreKept) {
  for (const int value : {-40000, -1}) m_blackBox.addTemperature("A", value);
  EXPECT_THAT(Sensor(), ElementsAre("-40000|", "-1|", "-1|0|"));
}

TEST_F(RecordedReadingsTest, ATemperatureAtTheMarkOfNoReadingLooksLikeNone) {
  m_blackBox.addTemperature("A", 555555);
  EXPECT_THAT(Sensor(), ElementsAre("-|", "-|", "555555|0|"));
}

TEST_F(RecordedReadingsTest, OneBelowTheMarkIsAReading) {
  m_blackBox.addTemperature("A", 555554);
  EXPECT_THAT(Sensor(), ElementsAre("555554|", "555554|", "555554|0|"));
}

TEST_F(RecordedReadingsTest, ATemperatureBelowTheFirstMaximumLeavesThatOne) {
  m_blackBox.addTemperature("A", -555556);
  EXPECT_THAT(Sensor(), ElementsAre("-555556|", "-555555|", "-555556|0|"));
}

TEST_F(RecordedReadingsTest, ExtremesAreCutToEightCharactersAndColumnsAreNot) {
  m_blackBox.addTemperature("A", std::numeric_limits<int>::max());
  EXPECT_THAT(Sensor(), ElementsAre("-|", "-|", "2147483647|0|"));
  m_blackBox.addTemperature("A", std::numeric_limits<int>::min());
  EXPECT_THAT(Sensor(), ElementsAre("-2147483|", "21474836|", "-2147483648|0|"));
}

TEST_F(RecordedReadingsTest, ExtremesOfEightCharactersAreWhole) {
  m_blackBox.addTemperature("A", -1234567);
  m_blackBox.addTemperature("A", 12345678);
  EXPECT_EQ(Trace().minimums, "-1234567|");
  EXPECT_EQ(Trace().maximums, "12345678|");
}

TEST_F(RecordedReadingsTest, ATemperatureIsLogged) {
  m_blackBox.addTemperature("A", -41000);
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackBoxData::addTemperature(): temperature -41000")));
}

TEST_F(RecordedReadingsTest, AFailedTemperatureShowsAsErrorAndKeepsTheExtremes) {
  for (const int value : {10, 30}) m_blackBox.addTemperature("A", value);
  m_blackBox.addTemperatureError("A");
  EXPECT_THAT(Sensor(), ElementsAre("10|", "30|", "error|0|"));
}

TEST_F(RecordedReadingsTest, ASensorThatOnlyFailedHasNoExtremes) {
  m_blackBox.addTemperatureError("A");
  EXPECT_THAT(Sensor(), ElementsAre("-|", "-|", "error|0|"));
}

TEST_F(RecordedReadingsTest, AFailedTemperatureIsSilent) {
  m_blackBox.addTemperatureError("A");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

TEST_F(RecordedReadingsTest, AGoodTemperatureEndsTheError) {
  m_blackBox.addTemperatureError("A");
  m_blackBox.addTemperature("A", 20);
  EXPECT_EQ(Trace().newest, "20|0|");
}

TEST_F(RecordedReadingsTest, TheNewestSpeedIsKept) {
  for (const int value : {3000, 2900}) m_blackBox.addFanSpeed("F", value);
  EXPECT_EQ(Trace().newest, "0|2900|");
}

TEST_F(RecordedReadingsTest, ASpeedIsLogged) {
  m_blackBox.addFanSpeed("F", 3000);
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "BlackBoxData::addFanSpeed(): speed 3000")));
}

TEST_F(RecordedReadingsTest, AFailedSpeedShowsAsErrorSilently) {
  m_blackBox.addFanSpeed("F", 3000);
  Forget();
  m_blackBox.addFanSpeedError("F");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
  EXPECT_EQ(Trace().newest, "0|error|");
}

TEST_F(RecordedReadingsTest, AGoodSpeedEndsTheError) {
  m_blackBox.addFanSpeedError("F");
  m_blackBox.addFanSpeed("F", 0);
  EXPECT_EQ(Trace().newest, "0|0|");
}

TEST_F(RecordedReadingsTest, AReadingConcernsTheSensorOfItsNameOnly) {
  m_blackBox.addSensor("AA");
  m_blackBox.addTemperature("AA", 5);
  m_blackBox.addTemperatureError("A");
  EXPECT_EQ(Trace().newest, "error|5|0|");
}

TEST_F(RecordedReadingsTest, AReadingConcernsTheFanOfItsNameOnly) {
  m_blackBox.addFan("FF");
  m_blackBox.addFanSpeed("FF", 5);
  m_blackBox.addFanSpeedError("F");
  EXPECT_EQ(Trace().newest, "0|error|5|");
}

TEST_F(RecordedReadingsTest, ReadingsOfUnknownNamesAreErrors) {
  m_blackBox.addTemperature("F", 1);
  m_blackBox.addTemperatureError("B");
  m_blackBox.addFanSpeed("A", 1);
  m_blackBox.addFanSpeedError("G");
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kError, "BlackBoxData::addTemperature(): sensor F not found"),
                                            Line(kError, "BlackBoxData::addTemperatureError(): sensor B not found"),
                                            Line(kError, "BlackBoxData::addFanSpeed(): fan A not found"),
                                            Line(kError, "BlackBoxData::addFanSpeedError(): fan G not found")));
}

TEST_F(RecordedReadingsTest, ReadingsOfUnknownNamesAddNothing) {
  m_blackBox.addTemperature("B", 1);
  m_blackBox.addFanSpeed("G", 1);
  EXPECT_EQ(Trace().columns, "A|F|");
}

TEST_F(RecordedReadingsTest, ReadingsOfARemovedSensorAreErrors) {
  m_blackBox.removeSensor("A");
  Forget();
  m_blackBox.addTemperature("A", 1);
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kError, "BlackBoxData::addTemperature(): sensor A not found")));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
