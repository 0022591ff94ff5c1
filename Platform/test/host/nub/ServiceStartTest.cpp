// How a service starts, and how it does not.
#include "Client.h"
#include "HungDevice.h"
#include "ServiceProcess.h"
#include "TestBoard.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

using ps::hwapi::common::Service;

namespace {

constexpr u32 kAsk = 0x1000;

bool g_saysAlarms = false;

/// While this lives, services say when they set an alarm, or take it back.
class SaidAlarms {
 public:
  SaidAlarms() { g_saysAlarms = true; }
  SaidAlarms(const SaidAlarms&) = delete;
  SaidAlarms& operator=(const SaidAlarms&) = delete;
  ~SaidAlarms() { g_saysAlarms = false; }
};

}  // namespace

/// Takes the C library's place: an alarm is a test's doing, and comes when that sends the signal.
extern "C" __attribute__((visibility("default"))) unsigned alarm(unsigned seconds) noexcept {
  if (g_saysAlarms) Say("alarm " + std::to_string(seconds));
  return 0;
}

namespace {

class ServiceStartTest : public testing::Test {
 protected:
  ServiceStartTest() { m_board.Describe(""); }

  TestBoard m_board;
};

TEST_F(ServiceStartTest, StepsComeInTheirOrder) {
  ServiceProcess service({});
  EXPECT_EQ(service.Line(), "pre-startup");
  EXPECT_EQ(service.Line(), "init");
  EXPECT_EQ(service.Line(), "run");
  service.Signal(SIGTERM);
  EXPECT_EQ(service.Line(), "exit");
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(service.End(), 0) << service.Errors();
}

TEST_F(ServiceStartTest, PreStartupCanEndIt) {
  ServiceProcess service({.preStartup = [](Probe&) { return false; }});
  EXPECT_EQ(service.Line(), "pre-startup");
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(service.End(), 0);
}

TEST_F(ServiceStartTest, AFailedInitLeavesStartupAndIsNotFollowedByExit) {
  ServiceProcess service({.init = [](Probe&) { throw Service::InitFailedException("no luck", "file", 7); },
                          .escaped = [](const std::exception& failure) { Say(failure.what()); }});
  EXPECT_TRUE(service.Says("init"));
  EXPECT_EQ(service.Line(), "Initialization failed");
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(service.End(), 0);
}

TEST_F(ServiceStartTest, AnUnknownOptionIsToldWithTheUsage) {
  ServiceProcess service({.arguments = {"-x"}});
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(WEXITSTATUS(service.End()), 2);
  const std::string errors = service.Errors();
  EXPECT_TRUE(errors.starts_with("PROBE: unknown option \"-x\"\nusage: probe [options]\n")) << errors;
  EXPECT_NE(errors.find("-V Verbose"), std::string::npos) << errors;
}

TEST_F(ServiceStartTest, HelpShowsTheUsageAndStartsNothing) {
  ServiceProcess service({.arguments = {"--help"}});
  EXPECT_EQ(service.Line(), "usage: probe [options]");
  EXPECT_FALSE(service.Says("pre-startup"));
  EXPECT_EQ(service.End(), 0);
  EXPECT_EQ(service.Errors(), "");
}

TEST_F(ServiceStartTest, ABareVerboseOptionIsOn) {
  ServiceProcess service({.arguments = {"-V"}, .preStartup = [](Probe& probe) {
                            Say(probe.GetArgumentParser().GetOption("V"));
                            return false;
                          }});
  EXPECT_TRUE(service.Says("arg on"));
}

TEST_F(ServiceStartTest, TheBoardOfTheCommandLineIsUsed) {
  TestBoard::Write(m_board.Folder() / "other.toml", "[node]\nboard = 9");
  ServiceProcess service({.arguments = {"--board", m_board.Folder() / "other.toml"}, .preStartup = [](Probe&) {
                            Say(std::to_string(AaSysComGetOwnNid() >> 8));
                            return false;
                          }});
  EXPECT_TRUE(service.Says("9"));
}

TEST_F(ServiceStartTest, AWrongBoardDescriptionEndsItBeforeAnything) {
  m_board.Describe("[unit]\nsize = 1");
  ServiceProcess service({});
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(WEXITSTATUS(service.End()), 2);
  EXPECT_NE(service.Errors().find("board.toml:2: unknown key \"size\""), std::string::npos);
}

TEST_F(ServiceStartTest, HardwareThatIsNotThereEndsItBeforeAnything) {
  m_board.Describe("[[temperature]]\ndevice = 0x10000\nhwmon = { chip = 'lm75', input = 'temp1' }");
  ServiceProcess service({});
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(WEXITSTATUS(service.End()), 2);
  const std::string errors = service.Errors();
  EXPECT_TRUE(errors.starts_with("PROBE: the board's hardware cannot be used:\n")) << errors;
  EXPECT_NE(errors.find("temperature 0x10000: no chip \"lm75\""), std::string::npos) << errors;
}

TEST_F(ServiceStartTest, HardwareThatDoesNotAnswerEndsItWithTheNameOfTheSensor) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  m_board.Describe("[[temperature]]\ndevice = 0x10000\nhwmon = { chip = 'lm75', at = '3-0048', input = 'temp1' }");
  const HungDevice device(m_board.Hwmon(0) / "temp1_input");
  ServiceProcess service({});
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(WEXITSTATUS(service.End()), 2);
  const std::string errors = service.Errors();
  EXPECT_NE(errors.find("temperature 0x10000: chip \"lm75\" at 3-0048 did not answer within 100 ms"), std::string::npos)
      << errors;
}

TEST_F(ServiceStartTest, ASignalEndsItWhileItsHardwareIsChecked) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  m_board.Describe(
      "[[temperature]]\ndevice = 0x10000\n"
      "hwmon = { chip = 'lm75', at = '3-0048', input = 'temp1', deadline_ms = 10000 }");
  const HungDevice device(m_board.Hwmon(0) / "temp1_input");
  ServiceProcess service({});
  device.AwaitAccess();
  service.Signal(SIGTERM);
  const int status = service.End();
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST_F(ServiceStartTest, ACheckOfItsHardwareThatTakesAMinuteEndsIt) {
  m_board.BindChip(0, "lm75", "3-0048");
  m_board.Show(0, "temp1_input", "1000");
  m_board.Describe(
      "[[temperature]]\ndevice = 0x10000\n"
      "hwmon = { chip = 'lm75', at = '3-0048', input = 'temp1', deadline_ms = 10000 }");
  const HungDevice device(m_board.Hwmon(0) / "temp1_input");
  const SaidAlarms said;
  ServiceProcess service({});
  EXPECT_EQ(service.Line(), "alarm 60");
  device.AwaitAccess();
  service.Signal(SIGALRM);
  EXPECT_EQ(service.Line(), "");
  EXPECT_EQ(WEXITSTATUS(service.End()), 2);
  EXPECT_EQ(service.Errors(),
            "PROBE: the board's hardware cannot be used:\nthe drivers did not end their check within 60 s\n");
}

TEST_F(ServiceStartTest, TheMinuteEndsWithTheCheckOfItsHardware) {
  const SaidAlarms said;
  ServiceProcess service({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  EXPECT_EQ(service.Line(), "alarm 60");
  EXPECT_EQ(service.Line(), "alarm 0");
  ASSERT_TRUE(service.Says("run"));
  service.Signal(SIGALRM);  // one that was on its way
  EXPECT_EQ(Client().Ask(kAsk), 1u);
  service.Signal(SIGTERM);
  EXPECT_EQ(WEXITSTATUS(service.End()), 0);
}

TEST_F(ServiceStartTest, ASecondServiceOnTheBoardIsRefusedAndTheFirstGoesOn) {
  ServiceProcess first({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  ASSERT_TRUE(first.Says("run"));
  ServiceProcess second({});
  EXPECT_EQ(second.Line(), "pre-startup");
  EXPECT_EQ(second.Line(), "");
  EXPECT_EQ(WEXITSTATUS(second.End()), 1);
  EXPECT_NE(second.Errors().find("PROBE: task 0x4b6 of board 1 cpu 1 is served by another process"), std::string::npos)
      << second.Errors();
  EXPECT_EQ(Client().Ask(kAsk), 1u);
}

TEST_F(ServiceStartTest, ANewServiceTakesOverFromAKilledOne) {
  {
    ServiceProcess first({});
    ASSERT_TRUE(first.Says("run"));
    first.Signal(SIGKILL);
    first.End();
  }
  ServiceProcess second({.init = [](Probe& probe) { probe.Answer(kAsk, 2); }});
  ASSERT_TRUE(second.Says("run"));
  EXPECT_EQ(Client().Ask(kAsk), 2u);
}

}  // namespace
