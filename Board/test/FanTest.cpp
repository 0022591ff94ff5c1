// Setting fans on a whole board, and fans that do not do what they are told.
#include "TestBoard.h"
#include "Wire.h"

namespace boardtest {
namespace {

class FanTest : public BoardTest {
 protected:
  /// @return what a fan shows in one report that comes when everything has settled
  nlohmann::json Report(const std::string& fan, std::vector<std::string> settings = {}) const {
    std::vector<std::string> arguments = {"fan", "watch", "--period", "30s", "--count", "1", "--json"};
    arguments.insert(arguments.end(), settings.begin(), settings.end());
    const Result watch = Clmctl(arguments);
    EXPECT_EQ(watch.status, 0) << watch.err;
    for (const nlohmann::json& line : JsonLines(watch.out)) {
      if (line["fan"] == fan) return line;
    }
    ADD_FAILURE() << fan << " is not in " << watch.out;
    return {{"speed_rpm", -1}, {"state", "missing"}, {"pwm_frequency_hz", -1}};
  }
  /// @return the line about a fan in `boardsim status`
  std::string StatusLine(const std::string& fan) const {
    const std::string text = Boardsim({"status"}).out;
    const std::size_t at = text.find(fan);
    return at == std::string::npos ? text : text.substr(at, text.find('\n', at) - at);
  }
  std::string DaemonLog() const { return FileText(StateFolder() + "/clm.log"); }
};

TEST_F(FanTest, TurnAsFastAsTheyAreTold) {
  Up();
  EXPECT_NEAR(Report("GAR_FAN1", {"201=50", "202=100"})["speed_rpm"], 3100, 10);
  EXPECT_NEAR(Report("GAR_FAN2")["speed_rpm"], 6000, 10);
}

TEST_F(FanTest, AreNotChangedByAWatch) {
  Up();
  ASSERT_EQ(Clmctl({"fan", "speed", "201=37"}).status, 0);
  Report("GAR_FAN1");
  EXPECT_NE(StatusLine("GAR_FAN1").find(" 37 %"), std::string::npos) << StatusLine("GAR_FAN1");
  EXPECT_NE(StatusLine("GAR_FAN2").find(" 100 %"), std::string::npos) << StatusLine("GAR_FAN2");
}

TEST_F(FanTest, AnswerTellsWhenTheFirstReportComes) {
  Up();
  const Result first = Clmctl({"fan", "speed", "201=60"});
  EXPECT_NE(first.out.find("Fan speed polling started. First report after 20 s"), std::string::npos) << first.out;
  const Result second = Clmctl({"fan", "speed", "201=60", "--period", "2min"});
  EXPECT_NE(second.out.find("First report after 120 s"), std::string::npos) << second.out;
}

TEST_F(FanTest, RunAtTheFrequencyTheyAreTold) {
  Up();
  const Result set = Clmctl({"fan", "freq", "GAR_FAN1=5kHz", "202=1000Hz"});
  EXPECT_EQ(set.status, 0) << set.err;
  EXPECT_NE(set.out.find("Set Fan PWM FREQ passed."), std::string::npos) << set.out;
  EXPECT_EQ(Report("GAR_FAN1")["pwm_frequency_hz"], 5000);
  EXPECT_EQ(Report("GAR_FAN2")["pwm_frequency_hz"], 1000);
}

TEST_F(FanTest, ThatIsNotServedIsRefusedAndTheOthersAreSet) {
  Up();
  const Result speed = Clmctl({"fan", "speed", "155=20", "202=40"});
  EXPECT_EQ(speed.status, 1);
  EXPECT_NE(speed.out.find("GAR_FAN4       20%  refused: InvalidParam (4)"), std::string::npos) << speed.out;
  EXPECT_NE(speed.out.find("GAR_FAN2       40%  ok"), std::string::npos) << speed.out;
  EXPECT_NE(StatusLine("GAR_FAN2").find(" 40 %"), std::string::npos) << StatusLine("GAR_FAN2");
  const Result frequency = Clmctl({"fan", "freq", "201=25kHz", "155=25kHz"});
  EXPECT_EQ(frequency.status, 1);
  EXPECT_NE(frequency.out.find("Set Fan PWM FREQ failed."), std::string::npos) << frequency.out;
}

TEST_F(FanTest, CoolTheBoardWhenTheyTurnFaster) {
  // A sensor that nothing but the fans moves.
  std::string text = FileText(std::filesystem::path(BOARDS_FOLDER) / "kela.toml");
  const std::string sensor = "device = 0x10000\nsim = { base = 46.0, load = 14.0, cooling = 7.0, inertia = 18 }";
  ASSERT_NE(text.find(sensor), std::string::npos);
  text.replace(text.find(sensor), sensor.size(),
               "device = 0x10000\nsim = { base = 50.0, load = 0.0, cooling = 20.0, noise = 0.0, inertia = 1 }");
  UpWith(Write("quiet.toml", "[clock]\nspeed = 20\n" + text));
  const auto celsius = [this] {
    return JsonLines(Clmctl({"temp", "watch", "Kel", "--count", "1", "--json"}).out).at(0)["temperature_celsius"];
  };
  Report("GAR_FAN1", {"201=0", "202=0"});
  EXPECT_NEAR(celsius(), 50, 0.5);
  Report("GAR_FAN1", {"201=100", "202=100"});
  EXPECT_NEAR(celsius(), 30, 0.5);
}

TEST_F(FanTest, ThatIsStuckShowsItsOwnSpeed) {
  Up();
  ASSERT_EQ(Boardsim({"fan", "GAR_FAN1", "rpm=0"}).status, 0);
  const nlohmann::json stopped = Report("GAR_FAN1", {"201=100"});
  EXPECT_EQ(stopped["speed_rpm"], 0);
  EXPECT_EQ(stopped["state"], "no speed");
  ASSERT_EQ(Boardsim({"fan", "0", "rpm=1234"}).status, 0);
  EXPECT_EQ(Report("GAR_FAN1")["speed_rpm"], 1234);
  EXPECT_NE(StatusLine("GAR_FAN1").find("stuck"), std::string::npos);
}

TEST_F(FanTest, ThatCannotBeReadIsItsOwnWarningUntilItCan) {
  Up();
  ASSERT_EQ(Boardsim({"fan", "GAR_FAN1", "fail-read=-2"}).status, 0);
  const nlohmann::json failed = Report("GAR_FAN1");
  EXPECT_EQ(failed["speed_rpm"], 0);
  EXPECT_TRUE(failed["pwm_frequency_hz"].is_null());
  EXPECT_NE(DaemonLog().find("Failed to read GAR_FAN1 RPM. DDAL ecode -2, "), std::string::npos);
  EXPECT_EQ(DaemonLog().find("Failed to read GAR_FAN2"), std::string::npos);
  ASSERT_EQ(Boardsim({"fan", "GAR_FAN1", "auto"}).status, 0);
  EXPECT_EQ(Report("GAR_FAN1")["state"], "ok");
}

TEST_F(FanTest, ThatCannotBeWrittenIsRefusedAndTheOthersAreSet) {
  Up();
  ASSERT_EQ(Boardsim({"fan", "201", "fail-write=-3"}).status, 0);
  const Result speed = Clmctl({"fan", "speed", "201=60", "202=70"});
  EXPECT_EQ(speed.status, 1);
  EXPECT_NE(speed.out.find("GAR_FAN1       60%  refused: InvalidParam (4)"), std::string::npos) << speed.out;
  EXPECT_NE(speed.out.find("GAR_FAN2       70%  ok"), std::string::npos) << speed.out;
  EXPECT_NE(DaemonLog().find("Setting speed value 60 for 0xc9 failed. DDAL ecode -3, "), std::string::npos);
  EXPECT_NE(StatusLine("GAR_FAN2").find(" 70 %"), std::string::npos) << StatusLine("GAR_FAN2");
}

TEST_F(FanTest, AreSetByAPeerOfTheOtherByteOrder) {
  Up();
  // transaction, receiver, period, number of items, fan, speed
  const Result send =
      Clmctl({"send", "--to", "fan", "--id", "0x2cf1", "--other-endian", "--hex", SwappedWords({7, 0, 9, 1, 202, 44})});
  EXPECT_EQ(send.status, 0) << send.err;
  EXPECT_NE(send.out.find("0x2cf2 1/1/0x4ad " + Words({7, 0})), std::string::npos) << send.out;
  EXPECT_NE(send.out.find(Words({9, 1, 202, 44, 0})), std::string::npos) << send.out;
  EXPECT_NE(StatusLine("GAR_FAN2").find(" 44 %"), std::string::npos) << StatusLine("GAR_FAN2");
}

TEST_F(FanTest, OfAUnitWithoutAnyAreNotAnswered) {
  UpWith(std::string(BOARDS_FOLDER) + "/kele.toml");
  const Result speed = Clmctl({"fan", "speed", "201=60", "--timeout", "300ms"});
  EXPECT_EQ(speed.status, 3);
  EXPECT_NE(speed.err.find("unit without fans"), std::string::npos) << speed.err;
}

TEST_F(FanTest, WrongCommandLinesAreRefusedBeforeAnythingIsSent) {
  // There is no board: what is sent could only end with status 3.
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"fan", "speed"},
                                             {"fan", "speed", "201=101"},
                                             {"fan", "speed", "9=60"},
                                             {"fan", "speed", "201=60", "GAR_FAN1=70"},
                                             {"fan", "speed", "201=60", "--period", "7s"},
                                             {"fan", "speed", "201=60", "--receiver", "1/1/0"},
                                             {"fan", "freq", "201=3kHz"},
                                             {"fan", "watch", "--count", "0"},
                                             {"fan", "watch", "--period", "121s"}}) {
    EXPECT_EQ(Clmctl(arguments).status, 2) << arguments.back();
  }
}

TEST_F(FanTest, ThatTheBoardDoesNotSimulateIsRefused) {
  Up();
  const Result fan = Boardsim({"fan", "GAR_FAN3", "rpm=0"});
  EXPECT_EQ(fan.status, 1);
  EXPECT_NE(fan.err.find("there are 0 (GAR_FAN1) 1 (GAR_FAN2)"), std::string::npos) << fan.err;
  EXPECT_EQ(Boardsim({"fan", "0", "rpm=fast"}).status, 2);
}

}  // namespace
}  // namespace boardtest
