// What the supervisor is told.
#include "AaSysTime.h"
#include "Client.h"
#include "SupervisedBoard.h"

#include <signal.h>

#include <thread>

namespace {

TEST_F(SupervisorTest, IsToldWhenTheServiceIsUpAndWhenItEnds) {
  const Supervisor supervisor(Path());
  ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  service.Signal(SIGTERM);
  EXPECT_EQ(supervisor.Notice(), "STOPPING=1");
  service.End();
  EXPECT_FALSE(supervisor.Told());
}

TEST_F(SupervisorTest, IsNotToldBeforeInitIsDone) {
  const Supervisor supervisor(Path());
  ServiceProcess service({.init = [](Probe&) {
    Say("initializing");
    WaitForTest();
  }});
  ASSERT_TRUE(service.Says("initializing"));
  EXPECT_FALSE(supervisor.Told());
  service.GoOn();
  EXPECT_EQ(supervisor.Notice(), "READY=1");
}

TEST_F(SupervisorTest, IsFoundUnderAnAbstractName) {
  const Supervisor supervisor("@notify-" + m_board.Folder().filename().string());
  const ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
}

TEST_F(SupervisorTest, GetsSignsOfLifeWhenItExpectsThem) {
  setenv("WATCHDOG_USEC", "20000", 1);
  const Supervisor supervisor(Path());
  const ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
}

TEST_F(SupervisorTest, GetsNoSignsOfLifeThatAnotherProcessOwes) {
  setenv("WATCHDOG_USEC", "2000", 1);
  setenv("WATCHDOG_PID", "1", 1);
  const Supervisor supervisor(Path());
  ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  service.Signal(SIGTERM);
  EXPECT_EQ(supervisor.Notice(), "STOPPING=1");
}

TEST_F(SignOfLifeTest, ComesWhenTheTimersMakeProgress) {
  const Supervisor supervisor(Path());
  const ServiceProcess service({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  const Client client;
  SetClock(999);
  EXPECT_EQ(client.Ask(kAsk), 1u) << "the service thread lives";
  EXPECT_FALSE(supervisor.Told());
  SetClock(1000);
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
}

TEST_F(SignOfLifeTest, DoesNotComeAtTheWordOfAnotherProcess) {
  constexpr u32 kAlive = 0xFF02;
  const Supervisor supervisor(Path());
  const ServiceProcess service({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  const Client client;
  for (u32 size = 0; size <= 16; ++size) client.Send(kAlive, size);
  EXPECT_EQ(client.Ask(kAsk), 1u);
  EXPECT_FALSE(supervisor.Told());
}

/// Tells that timers of the process have expired, those of its first second and this one.
void TellWhenASecondIsOver() {
  constexpr u32 kOver = 0x1001;
  constexpr u32 kASecondAndABit = 1'001'000;
  const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
  TAaSysTimerId timer = 0;
  void* msg = AaSysComMsgCreate(kOver, 0, AaSysComSicadGet(task, AaSysComGetOwnNid()));
  EXPECT_EQ(AaSysTimermCreate(&timer, kASecondAndABit, 0, msg), 0);
  Say("waiting");
  msg = AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
  AaSysComMsgDestroy(&msg);
  Say("a second is over");
}

TEST_F(SignOfLifeTest, ComesWhenTheServiceThreadMakesProgress) {
  const Supervisor supervisor(Path());
  ServiceProcess service({.init = [](Probe& probe) {
    probe.Handle(kAsk, [](void*) {
      std::thread(&TellWhenASecondIsOver).join();
      WaitForTest();
    });
  }});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  const Client client;
  client.Send(kAsk);
  ASSERT_TRUE(service.Says("waiting"));
  SetClock(1001);
  ASSERT_TRUE(service.Says("a second is over"));
  EXPECT_FALSE(supervisor.Told()) << "a handler does not come to its end";
  service.GoOn();
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
}

TEST_F(SupervisorTest, MayBeMissing) {
  setenv("NOTIFY_SOCKET", Path().c_str(), 1);
  ServiceProcess service({});
  EXPECT_TRUE(service.Says("run"));
  service.Signal(SIGTERM);
  EXPECT_EQ(service.End(), 0);
  EXPECT_NE(service.Errors().find("The supervisor at " + Path() + " is not reached"), std::string::npos);
}

TEST_F(SupervisorTest, IsNotLookedForUnderANameThatIsNone) {
  setenv("NOTIFY_SOCKET", "relative", 1);
  ServiceProcess service({});
  EXPECT_TRUE(service.Says("run"));
  service.Signal(SIGTERM);
  EXPECT_EQ(service.End(), 0);
  EXPECT_NE(service.Errors().find("neither a path nor a @name"), std::string::npos);
}

}  // namespace
