// How signals end a service, wherever it is at that moment.
#include "AaConfig.h"
#include "Client.h"
#include "ServiceProcess.h"
#include "TestBoard.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <memory>
#include <thread>

using ps::hwapi::common::MsgHandlingException;
using ps::hwapi::common::Service;

namespace {

constexpr u32 kWork = 0x1000;
constexpr const char kTag[] = "test.tag";

/// Waits for the tag and says how that ended.
void SayWhenTagIs(u32 value) {
  try {
    Service::Get().WaitForConfigTag(kTag, value);
    Say("tag is " + std::to_string(value));
  } catch (const MsgHandlingException& stopped) {
    Say(stopped.getDescription());
  }
}

constexpr const char kStopped[] = "Service is being stopped while it waits for tag test.tag";

void SetTag(u32 value) { ASSERT_EQ(AaConfigTagPublicSet(kTag, &value, sizeof value), 0); }

class ServiceSignalsTest : public testing::TestWithParam<int> {
 protected:
  ServiceSignalsTest() { m_board.Describe(""); }

  TestBoard m_board;
};

TEST_P(ServiceSignalsTest, ASignalEndsTheLoop) {
  ServiceProcess service({});
  ASSERT_TRUE(service.Says("run"));
  service.Signal(GetParam());
  EXPECT_EQ(service.Line(), "exit");
  EXPECT_EQ(service.End(), 0);
}

TEST_P(ServiceSignalsTest, ASignalDuringInitEndsTheLoopAtOnce) {
  ServiceProcess service({.init = [](Probe&) { WaitForTest(); }});
  ASSERT_TRUE(service.Says("init"));
  service.Signal(GetParam());
  service.GoOn();
  EXPECT_EQ(service.Line(), "run");
  EXPECT_EQ(service.Line(), "exit");
  EXPECT_EQ(service.End(), 0);
}

TEST_P(ServiceSignalsTest, ASignalEndsAWaitForATag) {
  ServiceProcess service({.init = [](Probe&) { SayWhenTagIs(6); }});
  ASSERT_TRUE(service.Says("init"));
  service.Signal(GetParam());
  EXPECT_EQ(service.Line(), kStopped);
  EXPECT_TRUE(service.Says("exit"));
  EXPECT_EQ(service.End(), 0);
}

TEST_P(ServiceSignalsTest, ASignalEndsAStartThatDoesNotEnd) {
  ServiceProcess service({.init = [](Probe&) {
    for (;;) WaitForTest();
  }});
  ASSERT_TRUE(service.Says("init"));
  service.Signal(GetParam());
  EXPECT_EQ(service.Line(), "exit");
  EXPECT_EQ(service.Line(), "");
  const int status = service.End();
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), GetParam());
}

TEST_P(ServiceSignalsTest, ASignalBeforeTheEndpointIsRegisteredTakesNobodyOffline) {
  ServiceProcess service({.preStartup = [](Probe&) -> bool {
    for (;;) WaitForTest();
  }});
  ASSERT_TRUE(service.Says("pre-startup"));
  service.Signal(GetParam());
  EXPECT_EQ(service.Line(), "");
  EXPECT_TRUE(WIFSIGNALED(service.End()));
}

INSTANTIATE_TEST_SUITE_P(Signal, ServiceSignalsTest, testing::Values(SIGTERM, SIGINT),
                         [](const auto& tested) { return tested.param == SIGTERM ? "Term" : "Int"; });

class ServiceEndTest : public ServiceSignalsTest {};

TEST_F(ServiceEndTest, AHandlerIsFinishedFirst) {
  ServiceProcess service({.init = [](Probe& probe) {
    probe.Handle(kWork, [](void*) {
      Say("busy");
      WaitForTest();
      Say("done");
    });
  }});
  ASSERT_TRUE(service.Says("run"));
  Client().Send(kWork);
  ASSERT_TRUE(service.Says("busy"));
  service.Signal(SIGTERM);
  service.GoOn();
  EXPECT_EQ(service.Line(), "done");
  EXPECT_EQ(service.Line(), "exit");
  EXPECT_EQ(service.End(), 0);
}

TEST_F(ServiceEndTest, ASecondSignalEndsItAtOnce) {
  auto waiter = std::make_shared<std::thread>();
  ServiceProcess service({.init = [waiter](Probe&) {
    *waiter = std::thread([] { SayWhenTagIs(6); });
    for (;;) WaitForTest();
  }});
  ASSERT_TRUE(service.Says("init"));
  service.Signal(SIGTERM);
  ASSERT_TRUE(service.Says(kStopped));
  service.Signal(SIGTERM);
  const int status = service.End();
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST_F(ServiceEndTest, AWaitAfterTheSignalEndsToo) {
  ServiceProcess service({.init = [](Probe&) {
    SayWhenTagIs(6);
    SayWhenTagIs(6);
  }});
  ASSERT_TRUE(service.Says("init"));
  service.Signal(SIGTERM);
  EXPECT_EQ(service.Line(), kStopped);
  EXPECT_EQ(service.Line(), kStopped);
  EXPECT_TRUE(service.Says("exit"));
}

TEST_F(ServiceEndTest, ExitEndsTheLoopFromWithin) {
  ServiceProcess service(
      {.init = [](Probe& probe) { probe.Handle(kWork, [&probe](void*) { probe.Service::Exit(); }); }});
  ASSERT_TRUE(service.Says("run"));
  Client().Send(kWork);
  EXPECT_EQ(service.Line(), "exit");
  EXPECT_EQ(service.End(), 0);
}

using ServiceTagTest = ServiceEndTest;

TEST_F(ServiceTagTest, AWaitEndsWhenTheTagHoldsTheValue) {
  ServiceProcess service({.init = [](Probe&) { SayWhenTagIs(6); }});
  ASSERT_TRUE(service.Says("init"));
  SetTag(7);
  SetTag(6);
  EXPECT_EQ(service.Line(), "tag is 6");
}

TEST_F(ServiceTagTest, AWaitForAValueThatIsThereEndsAtOnce) {
  m_board.Describe("[tags]\n\"test.tag\" = 6");
  ServiceProcess service({.init = [](Probe&) {
    SayWhenTagIs(6);
    SayWhenTagIs(6);
  }});
  ASSERT_TRUE(service.Says("init"));
  EXPECT_EQ(service.Line(), "tag is 6");
  EXPECT_EQ(service.Line(), "tag is 6");
}

TEST_F(ServiceTagTest, AValueOfAnotherSizeIsNotTheNumber) {
  ServiceProcess service({.init = [](Probe&) { SayWhenTagIs(6); }});
  ASSERT_TRUE(service.Says("init"));
  const char wide[] = {6, 0, 0, 0, 0, 0, 0, 0};
  ASSERT_EQ(AaConfigTagPublicSet(kTag, wide, sizeof wide), 0);
  SetTag(6);
  EXPECT_EQ(service.Line(), "tag is 6");
}

}  // namespace
