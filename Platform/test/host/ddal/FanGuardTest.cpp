// Fans are handed back as they were found, however the process ends.
#include "Daemon.h"
#include "FanBoard.h"
#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_sim.h"

#include <cstdlib>
#include <thread>

namespace {

int SetBoth() {
  const int error = ddal_fan_set_pwm(0, 60);
  return error != DDAL_OK ? error : ddal_fan_set_fan_pwm_freq(0, 1000);
}

class FanGuardTest : public testing::Test {
 protected:
  FanGuardTest() { process::AdoptOrphans(); }
  ~FanGuardTest() override { AwaitAll(); }

  /// Waits until every process of the test is gone.
  static void AwaitAll() {
    while (waitpid(-1, nullptr, 0) > 0) {
    }
  }
  /// @return control value, mode and frequency of a fan
  std::string State(int fan = 1) const {
    const std::string pwm = "pwm" + std::to_string(fan);
    return m_fans.Shown(pwm) + ' ' + m_fans.Shown(pwm + "_enable") + ' ' + m_fans.Shown(pwm + "_freq");
  }

  FanBoard m_fans;
};

constexpr const char* kFound = "80 2 25000";
constexpr const char* kChanged = "153 1 1000";

struct End {
  const char* name;
  void (*end)();
};

void PrintTo(const End& end, std::ostream* out) { *out << end.name; }

class FanGuardEndTest : public FanGuardTest, public testing::WithParamInterface<End> {};

TEST_P(FanGuardEndTest, HandsTheFansBack) {
  Daemon daemon(SetBoth, GetParam().end);
  ASSERT_EQ(daemon.Result(), DDAL_OK);
  ASSERT_EQ(State(), kChanged);
  daemon.Go();
  AwaitAll();
  EXPECT_EQ(State(), kFound);
}

void ByDefault(int signal) {
  ::signal(signal, SIG_DFL);
  raise(signal);
}

constexpr End kEnds[] = {
    {.name = "Exit", .end = [] { exit(0); }},
    {.name = "ExitInAThread", .end = [] { std::thread([] { exit(0); }).join(); }},
    {.name = "ExitAtOnce", .end = [] { _exit(0); }},
    {.name = "Abort", .end = [] { abort(); }},
    {.name = "SegmentationFault", .end = [] { ByDefault(SIGSEGV); }},
    {.name = "Termination", .end = [] { ByDefault(SIGTERM); }},
    {.name = "Interrupt", .end = [] { ByDefault(SIGINT); }},
    {.name = "Kill", .end = [] { raise(SIGKILL); }},
};
INSTANTIATE_TEST_SUITE_P(Ends, FanGuardEndTest, testing::ValuesIn(kEnds),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(FanGuardTest, ANormalEndIsOverWhenTheFansAreHandedBack) {
  Daemon daemon(SetBoth);
  daemon.Go();
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanGuardTest, FansThatWereNotChangedAreLeftAlone) {
  Daemon daemon(SetBoth);
  m_fans.Show("pwm2", "33");
  m_fans.Show("pwm2_enable", "0");
  m_fans.Show("pwm2_freq", "44");
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(2), "33 0 44");
}

TEST_F(FanGuardTest, AFrequencyThatWasNotChangedIsLeftAlone) {
  Daemon daemon([] { return ddal_fan_set_pwm(0, 60); });
  m_fans.Show("pwm1_freq", "44");
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(), "80 2 44");
}

TEST_F(FanGuardTest, AControlValueThatWasNotChangedIsLeftAlone) {
  Daemon daemon([] { return ddal_fan_set_fan_pwm_freq(0, 1000); });
  m_fans.Show("pwm1", "33");
  m_fans.Show("pwm1_enable", "0");
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(), "33 0 25000");
}

TEST_F(FanGuardTest, AFanChangedOftenIsHandedBackAsItWasFoundFirst) {
  Daemon daemon([] { return ddal_fan_set_pwm(0, 10) | SetBoth() | ddal_fan_set_pwm(0, 90) | SetBoth(); });
  ASSERT_EQ(daemon.Result(), DDAL_OK);
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanGuardTest, TwoFansOnOneOutputHandItBackAsItWasFoundFirst) {
  m_fans.Board().Describe(
      "[[fan]]\nid = 0\nhwmon = { chip = 'emc2305', fan = 'fan1', pwm = 'pwm1' }\n"
      "[[fan]]\nid = 1\nhwmon = { chip = 'emc2305', fan = 'fan2', pwm = 'pwm1' }\n");
  Daemon daemon([] { return ddal_fan_set_pwm(0, 10) | ddal_fan_set_pwm(1, 20); });
  ASSERT_EQ(daemon.Result(), DDAL_OK);
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanGuardTest, AChipWithoutModesAndFrequenciesIsHandedBack) {
  m_fans.Remove("pwm1_enable");
  m_fans.Remove("pwm1_freq");
  Daemon daemon([] { return ddal_fan_set_pwm(0, 60); });
  ASSERT_EQ(State(), "153 none none");
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(), "80 none none");
}

TEST_F(FanGuardTest, ADriverThatShowsPerCentIsHandedBackWhatItTakes) {
  m_fans.Describe("", "max31785");
  m_fans.Unbind();
  m_fans.Bind(2, "max31785");
  Daemon daemon([] { return ddal_fan_set_pwm(0, 60); });
  ASSERT_EQ(daemon.Result(), DDAL_OK);
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(m_fans.Shown("pwm1"), "204");  // 80 per cent of 255
}

TEST_F(FanGuardTest, AChipThatKeptASpeedByItselfIsToldItAgain) {
  m_fans.Show("fan1_target", "4000");
  Daemon daemon([] { return ddal_fan_set_pwm(0, 60); });
  m_fans.Show("fan1_target", "0");
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(m_fans.Shown("fan1_target"), "4000");
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "2");
}

TEST_F(FanGuardTest, AFanFoundInManualModeIsToldNoTarget) {
  m_fans.Show("pwm1_enable", "1");
  m_fans.Show("fan1_target", "4000");
  Daemon daemon([] { return ddal_fan_set_pwm(0, 60); });
  m_fans.Show("fan1_target", "0");
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(m_fans.Shown("fan1_target"), "0");
  EXPECT_EQ(m_fans.Shown("pwm1"), "80");
}

TEST_F(FanGuardTest, AFanFoundInManualModeIsHandedBackInIt) {
  m_fans.Show("pwm1_enable", "1");
  Daemon daemon([] { return ddal_fan_set_pwm(0, 60); });
  m_fans.Show("pwm1_enable", "2");
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "1");
}

TEST_F(FanGuardTest, AChipThatIsGoneIsLeftAlone) {
  Daemon daemon(SetBoth);
  m_fans.Unbind();
  daemon.Kill();
  AwaitAll();
  EXPECT_FALSE(std::filesystem::exists(m_fans.Path("pwm1")));
}

TEST_F(FanGuardTest, AChipThatCameBackUnderAnotherNumberIsHandedBackThere) {
  Daemon daemon(SetBoth, [] {
    int rpm = 0;
    ddal_fan_get_rpm(0, &rpm);
    raise(SIGKILL);
  });
  m_fans.Unbind();
  m_fans.Bind(6);
  m_fans.Show("pwm1", "153");
  m_fans.Show("pwm1_enable", "1");
  daemon.Go();
  AwaitAll();
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanGuardTest, NoGuardIsStartedForReading) {
  Daemon daemon([] {
    int value = 0;
    return ddal_init(nullptr, 0) | ddal_fan_get_rpm(0, &value) | ddal_fan_get_pwm(0, &value);
  });
  ASSERT_EQ(daemon.Result(), DDAL_OK);
  EXPECT_EQ(process::ChildOf(daemon.Pid(), "fan-guard"), -1);
  EXPECT_FALSE(std::filesystem::exists(m_fans.Board().Folder() / "run/fans.lock"));
}

TEST_F(FanGuardTest, NoGuardIsStartedForSimulatedFans) {
  m_fans.Board().Describe("[[fan]]\nid = 0\nsim = { max_rpm = 6000 }");
  Daemon daemon([] { return ddal_sim_start() | SetBoth(); });
  ASSERT_EQ(daemon.Result(), DDAL_OK);
  EXPECT_FALSE(std::filesystem::exists(m_fans.Board().Folder() / "run/fans.lock"));
}

TEST_F(FanGuardTest, NoGuardIsStartedForARefusedValue) {
  Daemon daemon([] { return ddal_fan_set_pwm(0, 101) + ddal_fan_set_fan_pwm_freq(0, 0); });
  ASSERT_EQ(daemon.Result(), 2 * DDAL_ERR_INVALID);
  EXPECT_FALSE(std::filesystem::exists(m_fans.Board().Folder() / "run/fans.lock"));
}

TEST_F(FanGuardTest, AFanThatCouldNotBeHandedBackIsNotChanged) {
  setenv("HWAPI_RUN", "/dev/null/run", 1);
  Daemon daemon(SetBoth);
  EXPECT_EQ(daemon.Result(), DDAL_ERR_IO);
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanGuardTest, AGuardThatWasKilledIsReplacedAtTheNextChange) {
  Daemon daemon(SetBoth, [] { _exit(ddal_fan_set_pwm(1, 50) == DDAL_OK ? 0 : 1); });
  process::KillOthersChild(daemon.Guard());
  EXPECT_EQ(daemon.Go(), 0);
  AwaitAll();
  EXPECT_EQ(State(1), kFound);
  EXPECT_EQ(State(2), "90 3 5000");
}

TEST_F(FanGuardTest, AGuardOutlivesTheSignalsThatEndItsProcess) {
  Daemon daemon(SetBoth);
  const pid_t guard = daemon.Guard();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE, SIGUSR1}) kill(guard, signal);
  EXPECT_EQ(State(), kChanged);
  daemon.Kill();
  AwaitAll();
  EXPECT_EQ(State(), kFound);
}

TEST_F(FanGuardTest, AGuardHasASessionOfItsOwn) {
  Daemon daemon(SetBoth);
  const pid_t guard = daemon.Guard();
  EXPECT_EQ(getsid(guard), guard);
}

TEST_F(FanGuardTest, AForkedChildOfTheProcessHandsNothingBack) {
  Daemon daemon([] {
    const int error = SetBoth();
    const pid_t child = fork();
    if (child == 0) exit(0);
    waitpid(child, nullptr, 0);
    return error | ddal_fan_set_pwm(0, 60);
  });
  EXPECT_EQ(daemon.Result(), DDAL_OK);
  EXPECT_EQ(State(), kChanged);
}

TEST_F(FanGuardTest, AProgramThatTheProcessStartedDoesNotDelayTheHandBack) {
  Daemon daemon([] {
    if (SetBoth() != DDAL_OK) return -1;
    const pid_t program = fork();
    if (program == 0) execlp("sleep", "sleep", "1000", nullptr);
    return static_cast<int>(program);
  });
  const pid_t guard = daemon.Guard();
  const pid_t program = process::AwaitChildOf(daemon.Pid(), "sleep");
  daemon.Kill();
  process::AwaitEnd(guard);
  EXPECT_EQ(State(), kFound);
  EXPECT_EQ(kill(program, SIGKILL), 0);
}

}  // namespace
