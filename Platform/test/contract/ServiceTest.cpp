#include "Service.h"

#include "AaConfig.h"
#include "Messaging.h"

#include <gtest/gtest.h>

namespace contract {
namespace {

using namespace ps::hwapi::common;

constexpr u32 kTask = 0x4B6;
constexpr u32 kFirstMsg = 0x1001;
constexpr u32 kSecondMsg = 0x1002;
constexpr u32 kStopMsg = 0x1003;

/// A service that writes its steps down. Init sends the messages that a test wants to be handled, then the last one.
class StepService : public Service {
 public:
  StepService() : Service("STEPS", kTask, 1, 2) { Bind(kStopMsg, &StepService::Stop); }
  ~StepService() override { AaSysComUserDeregister(kTask); }

  bool PreStartup() override {
    steps.emplace_back("PreStartup");
    return goOn;
  }
  void Init() override {
    steps.emplace_back("Init");
    if (failInit) throw InitFailedException("told to", "file.cpp", 12);
    for (const u32 id : messages) Send(id, Address());
    Send(kStopMsg, Address());
  }
  void Exit() override { steps.emplace_back("Exit"); }

  void First(void*) { steps.emplace_back("First"); }
  void Second(void*) { steps.emplace_back("Second"); }
  void Throw(void*) {
    steps.emplace_back("Throw");
    throw MsgHandlingException("told to", "file.cpp", 12);
  }
  void Stop(void*) { rig::StopService(); }

  void Bind(u32 id, void (StepService::*method)(void*)) {
    AddMsgDelegate(new MsgMethodDelegate<StepService>(this, method, id));
  }
  static TAaSysComSicad Address() { return AaSysComSicadGet(kTask, AaSysComGetOwnNid()); }

  /// Runs the service to its end. @return its steps
  std::vector<std::string> StartAndStop() {
    char name[] = "steps";
    char* arguments[] = {name, nullptr};
    Startup(1, arguments);
    return steps;
  }

  bool goOn = true;
  bool failInit = false;
  std::vector<u32> messages;
  std::vector<std::string> steps;
};

using Steps = std::vector<std::string>;

TEST(ServiceStartup, CallsItsStepsInOrder) {
  StepService service;
  EXPECT_EQ(service.StartAndStop(), (Steps{"PreStartup", "Init", "Exit"}));
}

TEST(ServiceStartup, EndsWhenPreStartupDoesNotWantTo) {
  StepService service;
  service.goOn = false;
  EXPECT_EQ(service.StartAndStop(), Steps{"PreStartup"});
}

TEST(ServiceStartup, IsLeftByAFailedInit) {
  StepService service;
  service.failInit = true;
  try {
    service.StartAndStop();
    FAIL() << "Startup returned";
  } catch (const Service::InitFailedException& failed) {
    EXPECT_EQ(failed.getDescription(), "told to");
  }
}

TEST(ServiceStartup, GivesTheWholeProcessOneService) {
  StepService service;
  EXPECT_EQ(&Service::Get(), &service);
}

TEST(ServiceLoop, HandsMessagesToTheDelegatesOfTheirIds) {
  StepService service;
  service.Bind(kFirstMsg, &StepService::First);
  service.Bind(kSecondMsg, &StepService::Second);
  service.messages = {kSecondMsg, kFirstMsg};
  EXPECT_EQ(service.StartAndStop(), (Steps{"PreStartup", "Init", "Second", "First", "Exit"}));
}

TEST(ServiceLoop, HandsAMessageToTheNewestDelegateOfItsId) {
  StepService service;
  service.Bind(kFirstMsg, &StepService::First);
  service.Bind(kFirstMsg, &StepService::Second);
  service.messages = {kFirstMsg};
  EXPECT_EQ(service.StartAndStop(), (Steps{"PreStartup", "Init", "Second", "Exit"}));
}

TEST(ServiceLoop, GoesOnAfterAHandlingException) {
  StepService service;
  service.Bind(kFirstMsg, &StepService::Throw);
  service.Bind(kSecondMsg, &StepService::Second);
  service.messages = {kFirstMsg, kSecondMsg};
  EXPECT_EQ(service.StartAndStop(), (Steps{"PreStartup", "Init", "Throw", "Second", "Exit"}));
}

TEST(ServiceLoop, GoesOnAfterAMessageWithoutADelegate) {
  StepService service;
  service.Bind(kSecondMsg, &StepService::Second);
  service.messages = {kFirstMsg, kSecondMsg};
  EXPECT_EQ(service.StartAndStop(), (Steps{"PreStartup", "Init", "Second", "Exit"}));
}

TEST(ServiceState, IsTheOneThatWasSetUnlessItIsTheCommonOne) {
  StepService service;
  service.SetUseCommonServiceState(0);
  service.SetServiceStateRad(4098);
  EXPECT_EQ(service.GetServiceStateRad(), 4098u);
  service.SetUseCommonServiceState(1);
  EXPECT_NE(service.GetServiceStateRad(), 4098u);
}

TEST(ServiceState, IsNotKeptWhenItWasLeft) {
  StepService service;
  service.SetUseCommonServiceState(0);
  service.SetServiceStateRad(4096);
  service.SetUseCommonServiceState(1);
  service.SetUseCommonServiceState(0);
  EXPECT_NE(service.GetServiceStateRad(), 4096u);
}

TEST(ServiceState, IsKeptWhileItIsTheOwnOne) {
  StepService service;
  service.SetUseCommonServiceState(0);
  service.SetServiceStateRad(4098);
  service.SetUseCommonServiceState(0);
  EXPECT_EQ(service.GetServiceStateRad(), 4098u);
}

TEST(ServiceState, IsReadyWhateverARedundantUnitIsTold) {
  StepService service;
  for (const auto command : {ERedundancyCommand_Activate, ERedundancyCommand_Deactivate}) {
    ERedundancyState state = ERedundancyState_NotReady;
    EXPECT_TRUE(service.HandleRedundancyStateCommand(command, &state));
    EXPECT_EQ(state, ERedundancyState_Ready);
  }
}

TEST(ServiceTagWait, EndsWhenTheTagHoldsTheValue) {
  StepService service;
  const u32 value = 6;
  AaConfigTagPublicSet("contract.wait", &value, sizeof value);
  EXPECT_NO_THROW(service.WaitForConfigTag("contract.wait", 6));
}

TEST(ServiceArguments, OfABareOptionIsOn) {
  ArgumentParser parser;
  parser.AddOption("-V Verbose\n");
  const char* arguments[] = {"program", "-V"};
  EXPECT_EQ(parser.Parse(2, arguments), "");
  EXPECT_EQ(parser.GetOption("V"), "arg on");
}

TEST(ServiceArguments, OfAnOptionWithAValueIsTheValue) {
  ArgumentParser parser;
  parser.AddOption("-V Verbose\n");
  const char* arguments[] = {"program", "-V", "off"};
  EXPECT_EQ(parser.Parse(3, arguments), "");
  EXPECT_EQ(parser.GetOption("V"), "arg off");
}

TEST(ServiceArguments, OfAnOptionWhoseValueIsItsTextIsOn) {
  ArgumentParser parser;
  parser.AddOption("-V Verbose\n");
  const char* arguments[] = {"program", "-V", "arg on"};
  EXPECT_EQ(parser.Parse(3, arguments), "");
  EXPECT_EQ(parser.GetOption("V"), "arg on");
}

TEST(ServiceArguments, OfAnOptionThatWasNotGivenIsEmpty) {
  ArgumentParser parser;
  parser.AddOption("-V Verbose\n");
  const char* arguments[] = {"program"};
  EXPECT_EQ(parser.Parse(1, arguments), "");
  EXPECT_EQ(parser.GetOption("V"), "");
}

TEST(ServiceArguments, MayFollowEachOther) {
  ArgumentParser parser;
  parser.AddOption("-V Verbose\n");
  parser.AddOption("-X Meaning\n");
  const char* arguments[] = {"program", "-V", "-X", "value"};
  EXPECT_EQ(parser.Parse(4, arguments), "");
  EXPECT_EQ(parser.GetOption("V"), "arg on");
  EXPECT_EQ(parser.GetOption("X"), "arg value");
}

TEST(ServiceArguments, RefuseAnUnknownOptionAndNameIt) {
  ArgumentParser parser;
  parser.AddOption("-V Verbose\n");
  const char* arguments[] = {"program", "-Q"};
  EXPECT_NE(parser.Parse(2, arguments).find("-Q"), std::string::npos);
}

}  // namespace
}  // namespace contract
