#include "Service.h"

#include "fake/PlatformTest.h"

#include <stdexcept>

namespace {

using namespace ps::hwapi::common;

constexpr u32 kTask = 0x4B6;
constexpr TAaSysComSicad kOwn = 0x010104B6;

class Plain : public Service {
 public:
  Plain() : Service("PLAIN", kTask, 1, 2) { GetArgumentParser().AddOption("-V Verbose\n"); }
  void First(void*) { handled += "1"; }
  void Second(void*) { handled += "2"; }
  void ThrowHandling(void*) { throw MsgHandlingException("bad payload", __FILE__, __LINE__); }
  void ThrowOther(void*) { throw std::runtime_error("other"); }
  void Bind(u32 id, void (Plain::*method)(void*)) { AddMsgDelegate(new MsgMethodDelegate<Plain>(this, method, id)); }

  std::string handled;
};

Plain g_early;  ///< constructed before the first Reset, and destroyed after main

class ServiceBase : public fake::PlatformTest {
 protected:
  Plain service;
};

TEST_F(ServiceBase, DelegatesAreListedInOrder) {
  service.Bind(9, &Plain::First);
  service.Bind(4, &Plain::First);
  EXPECT_EQ(fake::RegisteredIds(), (std::vector<u32>{9, 4}));
}

TEST_F(ServiceBase, TheNewestDelegateOfAnIdAnswers) {
  service.Bind(9, &Plain::First);
  service.Bind(9, &Plain::Second);
  EXPECT_TRUE(fake::Dispatch({.id = 9}));
  EXPECT_EQ(service.handled, "2");
}

TEST_F(ServiceBase, AMessageWithoutADelegateIsNotDispatched) { EXPECT_FALSE(fake::Dispatch({.id = 9})); }

TEST_F(ServiceBase, WhatAHandlerThrowsLeavesDispatchAndTheMessageIsFreed) {
  service.Bind(9, &Plain::ThrowOther);
  EXPECT_THROW(fake::Dispatch({.id = 9}), std::runtime_error);
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_F(ServiceBase, StartupCallsItsStepsInOrder) {
  char name[] = "plain";
  char* arguments[] = {name, nullptr};
  fake::Clear();
  service.Startup(1, arguments);
  EXPECT_EQ(fake::Calls(),
            (std::vector<fake::Call>{{"Service::PreStartup"}, {"Service::Init"}, {"Service::Run"}, {"Service::Exit"}}));
}

TEST_F(ServiceBase, ABareOptionIsOn) {
  char name[] = "plain";
  char option[] = "-V";
  char* arguments[] = {name, option, nullptr};
  service.Startup(2, arguments);
  EXPECT_EQ(service.GetArgumentParser().GetOption("V"), "arg on");
}

TEST_F(ServiceBase, AnOptionHasItsValue) {
  const char* arguments[] = {"plain", "-V", "off"};
  EXPECT_EQ(service.GetArgumentParser().Parse(3, arguments), "");
  EXPECT_EQ(service.GetArgumentParser().GetOption("V"), "arg off");
}

TEST_F(ServiceBase, RunHandlesWhatIsQueued) {
  service.Bind(9, &Plain::First);
  fake::ServeTask(kTask);
  fake::Deliver({.id = 9, .receiver = kOwn});
  fake::Deliver({.id = 9, .receiver = kOwn});
  service.Run();
  EXPECT_EQ(service.handled, "11");
}

TEST_F(ServiceBase, RunLogsAHandlingExceptionAndGoesOn) {
  service.Bind(8, &Plain::ThrowHandling);
  service.Bind(9, &Plain::First);
  fake::Deliver({.id = 8});
  fake::Deliver({.id = 9});
  service.Run();
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error, "Message handling error: bad payload"));
  EXPECT_EQ(service.handled, "1");
}

TEST_F(ServiceBase, AnInitThatFailsLeavesStartup) {
  fake::FailCall("Service::Init");
  char name[] = "plain";
  char* arguments[] = {name, nullptr};
  EXPECT_THROW(service.Startup(1, arguments), Service::InitFailedException);
}

TEST_F(ServiceBase, WaitingForATagThrowsWhenTold) {
  service.WaitForConfigTag("t", 6);
  fake::FailCall("Service::WaitForConfigTag");
  EXPECT_THROW(service.WaitForConfigTag("t", 6), MsgHandlingException);
}

TEST_F(ServiceBase, WhatAServiceWasConstructedWithIsKept) {
  fake::Reset();
  EXPECT_EQ(fake::ConstructedWith(), (fake::ServiceArguments{"PLAIN", kTask, 1, 2}));
}

TEST_F(ServiceBase, AStateThatATestSetsIsReported) {
  fake::SetServiceState(4097);
  EXPECT_EQ(service.GetServiceStateRad(), 4097u);
  EXPECT_FALSE(fake::UsesCommonServiceState());
}

using EarlyService = fake::PlatformTest;

TEST_F(EarlyService, StillWorksAfterAReset) {
  g_early.Bind(9, &Plain::First);
  EXPECT_EQ(&Service::Get(), &g_early);
  EXPECT_TRUE(fake::Dispatch({.id = 9}));
}

}  // namespace
