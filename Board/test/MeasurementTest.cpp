// Measuring temperatures on a whole board.
#include "TestBoard.h"

#include <csignal>

namespace boardtest {
namespace {

using MeasurementTest = BoardTest;

/// @return what an indication says about a sensor
nlohmann::json SensorIn(const std::vector<nlohmann::json>& lines, const std::string& name) {
  for (const nlohmann::json& line : lines) {
    if (line["sensor"] == name) return line;
  }
  return {};
}

TEST_F(MeasurementTest, ShowsThePinnedTemperature) {
  Up();
  ASSERT_EQ(Boardsim({"temp", "0x10000", "45.625"}).status, 0);
  const Result watch = Clmctl({"temp", "watch", "Kel", "--count", "2", "--json"});
  ASSERT_EQ(watch.status, 0) << watch.err;
  const auto lines = JsonLines(watch.out);
  ASSERT_EQ(lines.size(), 10u);
  EXPECT_EQ(lines[0]["sensor"], "KEL_MCU");
  EXPECT_EQ(lines[0]["temperature_celsius"], 45.625);
  EXPECT_EQ(lines[5]["indication"], 2);
  EXPECT_EQ(lines[5]["temperature_celsius"], 45.625);
}

TEST_F(MeasurementTest, FailingSensorIsItsOwnErrorOnly) {
  Up();
  ASSERT_EQ(Boardsim({"temp", "0x10001", "fail=-2"}).status, 0);
  const auto lines = JsonLines(Clmctl({"temp", "watch", "Kel", "--count", "1", "--json"}).out);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(SensorIn(lines, "KEL")["state"], "failed");
  EXPECT_EQ(SensorIn(lines, "KEL")["driver_error"], -2);
  EXPECT_TRUE(SensorIn(lines, "KEL")["temperature_celsius"].is_null());
  for (const char* other : {"KEL_MCU", "KEL_ENV", "KEL_VORNIK", "KEL_INTAKE"}) {
    EXPECT_EQ(SensorIn(lines, other)["state"], "ok") << other;
  }
}

TEST_F(MeasurementTest, SensorFollowsThePhysicsAgain) {
  Up();
  Boardsim({"temp", "0x10000", "fail=-2"});
  ASSERT_EQ(Boardsim({"temp", "0x10000", "auto"}).status, 0);
  const auto lines = JsonLines(Clmctl({"temp", "watch", "Kel", "--count", "1", "--json"}).out);
  EXPECT_EQ(SensorIn(lines, "KEL_MCU")["state"], "ok");
}

TEST_F(MeasurementTest, CanBeRepeatedAsOftenAsOneLikes) {
  Up();
  for (int round = 0; round < 4; ++round) {
    const Result watch = Clmctl({"temp", "watch", "Kel", "--count", "1", "--json"});
    ASSERT_EQ(watch.status, 0) << "round " << round << ": " << watch.err;
  }
}

TEST_F(MeasurementTest, LinesAreStableToParse) {
  Up();
  Boardsim({"temp", "0x10000", "45.5"});
  const Result watch = Clmctl({"temp", "watch", "Kel", "--count", "1"});
  EXPECT_NE(watch.out.find("  KEL_MCU              45.500 C  ok\n"), std::string::npos) << watch.out;
}

TEST_F(MeasurementTest, CanBeStartedAgainOnceStopped) {
  Up();
  EXPECT_EQ(Clmctl({"temp", "start", "Kel"}).status, 0);
  EXPECT_EQ(Clmctl({"temp", "stop", "Kel"}).status, 0);
  EXPECT_EQ(Clmctl({"temp", "start", "Kel"}).status, 0);
}

TEST_F(MeasurementTest, SecondStartIsToldThatItRunsAlready) {
  Up();
  ASSERT_EQ(Clmctl({"temp", "start", "Kel"}).status, 0);
  const Result second = Clmctl({"temp", "watch", "Kel"});
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.err.find("clmctl temp stop Kel"), std::string::npos) << second.err;
}

TEST_F(MeasurementTest, InterruptedWatchStopsTheMeasurement) {
  Up();
  auto watch = StartClmctl({"temp", "watch", "Kel"});
  ASSERT_TRUE(watch->WaitForText("KEL_MCU"));
  watch->Signal(SIGINT);
  EXPECT_EQ(watch->Wait().status, 0);
  EXPECT_EQ(Clmctl({"temp", "start", "Kel"}).status, 0);
}

TEST_F(MeasurementTest, WhoseStartIsNotAnsweredInTimeCanBeStopped) {
  Up();
  const pid_t daemon = DaemonPid();
  kill(daemon, SIGSTOP);
  const Result watch = Clmctl({"temp", "watch", "Kel", "--timeout", "100ms"});
  kill(daemon, SIGCONT);
  EXPECT_EQ(watch.status, 3) << watch.err;
  EXPECT_NE(watch.err.find("; if it began all the same, `clmctl temp stop Kel` ends it"), std::string::npos);
  EXPECT_EQ(Clmctl({"temp", "stop", "Kel"}).status, 0);
  EXPECT_EQ(Clmctl({"temp", "watch", "Kel", "--count", "1"}).status, 0);
}

TEST_F(MeasurementTest, EndsWhenNobodyReadsItAnyMore) {
  Up();
  auto watch = StartClmctl({"temp", "watch", "Kel"});
  ASSERT_TRUE(watch->WaitForText("KEL_MCU"));
  watch->CloseOutput();
  EXPECT_EQ(watch->Wait().status, 0);
  EXPECT_EQ(Clmctl({"temp", "start", "Kel"}).status, 0);
}

TEST_F(MeasurementTest, IndicationsGoToTheClientThatIsNamed) {
  Up();
  // A raw start of the Kel sensors, once a second, by a task that then receives the answer and two indications.
  const Result send = Clmctl({"send", "--to", "temperature", "--id", "0x2b29", "--sender", "0x7000", "--hex",
                              "0000000006000000e80300000000000000700101", "--expect", "3"});
  EXPECT_EQ(send.status, 0) << send.err;
  EXPECT_NE(send.out.find("0x2b2a 1/1/0x4b6 000000000600000000000000\n"), std::string::npos) << send.out;
  EXPECT_NE(send.out.find("0x2b2b 1/1/0x4b6 0600000005000000"), std::string::npos) << send.out;
}

TEST_F(MeasurementTest, TypeWithoutSensorsIsRefused) {
  Up();
  const Result start = Clmctl({"temp", "start", "Borz"});
  EXPECT_EQ(start.status, 1);
  EXPECT_NE(start.err.find("SensorType"), std::string::npos) << start.err;
}

TEST_F(MeasurementTest, IntervalOutOfRangeIsRefused) {
  Up();
  const Result start = Clmctl({"temp", "start", "Kel", "--interval", "500ms"});
  EXPECT_EQ(start.status, 1);
  EXPECT_NE(start.err.find("900ms"), std::string::npos) << start.err;
}

TEST_F(MeasurementTest, WrongCommandLinesAreUsageErrors) {
  EXPECT_EQ(Clmctl({"temp", "start", "NoSuchType"}).status, 2);
  EXPECT_EQ(Clmctl({"temp", "start", "Kel", "--interval", "5"}).status, 2);
  EXPECT_EQ(Clmctl({"temp", "start"}).status, 2);
  EXPECT_EQ(Clmctl({"temp", "start", "Kel", "--nonsense"}).status, 2);
  EXPECT_EQ(Clmctl({"temp", "watch", "Kel", "--timeout", "0s"}).status, 2);
  EXPECT_EQ(Clmctl({}).status, 2);
}

TEST_F(MeasurementTest, WithoutADaemonNobodyAnswers) {
  Up({"--no-daemon"});
  const Result start = Clmctl({"temp", "start", "Kel"});
  EXPECT_EQ(start.status, 3);
  EXPECT_NE(start.err.find("0x4b6"), std::string::npos) << start.err;
  EXPECT_NE(start.err.find(StateFolder() + "/run"), std::string::npos) << start.err;
}

TEST_F(MeasurementTest, WithoutABoardNobodyAnswers) {
  const Result start = Clmctl({"temp", "start", "Kel"});
  EXPECT_EQ(start.status, 3);
  EXPECT_NE(start.err.find("boardsim status"), std::string::npos) << start.err;
}

TEST_F(MeasurementTest, TellsTheBoardsTime) {
  Up();
  ASSERT_EQ(Boardsim({"clock", "2040-02-29T12:00:00Z"}).status, 0);
  const auto lines = JsonLines(Clmctl({"temp", "watch", "Kel", "--count", "1", "--json"}).out);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0]["time"].get<std::string>().substr(0, 11), "2040-02-29T");
}

}  // namespace
}  // namespace boardtest
