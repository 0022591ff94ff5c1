/// Construction, pre-start-up, exit and destruction of the service.
#include "UninitializedService.h"

#include "AaSysCom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

class LifecycleTest : public UninitializedServiceTest {
 protected:
  /// @return what is wrong with the command line; "" when nothing is
  std::string Parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "CLM");
    return m_service->GetArgumentParser().Parse(static_cast<int>(arguments.size()), arguments.data());
  }

  static std::vector<fake::Call> FarewellCalls() {
    return fake::Calls({"Service::Exit", "AaSysComUserDeregister", "AaConfigTagPublicSet"});
  }

  const std::vector<fake::Call> m_farewell = {{"Service::Exit"},
                                              {"AaSysComUserDeregister", 0x4B6},
                                              {"AaSysComUserDeregister", 0x4AD},
                                              {"AaSysComUserDeregister", 0x4D9},
                                              TagSet("app.hwapi.online.4b6", 7),
                                              TagSet("app.hwapi.online.4ad", 7),
                                              TagSet("app.hwapi.online.4d9", 7)};
};

TEST_F(LifecycleTest, ConstructionRegistersNoEndpoint) { EXPECT_THAT(fake::Calls("AaSysComUserRegister"), IsEmpty()); }

TEST_F(LifecycleTest, ConstructionAnnouncesNothing) { EXPECT_THAT(fake::Calls("AaConfigTagPublicSet"), IsEmpty()); }

TEST_F(LifecycleTest, ConstructionRegistersNoHandler) { EXPECT_THAT(fake::RegisteredIds(), IsEmpty()); }

TEST_F(LifecycleTest, ConstructionMakesTheOptionVKnown) { EXPECT_EQ(Parse({"-V"}), ""); }

TEST_F(LifecycleTest, TheUsageShowsTheOptionVWithItsMeaning) {
  EXPECT_EQ(fake::Calls("ArgumentParser::AddOption"),
            std::vector{fake::Call("ArgumentParser::AddOption", "-V Verbose\n")});
}

TEST_F(LifecycleTest, NoOtherOptionIsKnown) { EXPECT_NE(Parse({"-v"}), ""); }

TEST_F(LifecycleTest, ARedundancyCommandIsAnsweredReady) {
  for (const ERedundancyCommand command : {ERedundancyCommand_Activate, ERedundancyCommand_Deactivate}) {
    ERedundancyState state = ERedundancyState_NotReady;
    EXPECT_TRUE(m_service->HandleRedundancyStateCommand(command, &state));
    EXPECT_EQ(state, 1u);
  }
}

TEST_F(LifecycleTest, PreStartupWithABareVTurnsVerboseOn) {
  Parse({"-V"});
  m_service->PreStartup();
  EXPECT_EQ(fake::Calls("Service::SetVerbose"), std::vector{fake::Call("Service::SetVerbose", 1)});
}

TEST_F(LifecycleTest, PreStartupWithVOnTurnsVerboseOn) {
  Parse({"-V", "on"});
  m_service->PreStartup();
  EXPECT_TRUE(fake::IsVerbose());
}

TEST_F(LifecycleTest, PreStartupWithAnotherValueOfVLeavesVerbosityUnchanged) {
  for (const char* value : {"off", "On", "on2", "1"}) {
    Parse({"-V", value});
    m_service->PreStartup();
  }
  EXPECT_THAT(fake::Calls("Service::SetVerbose"), IsEmpty());
}

TEST_F(LifecycleTest, PreStartupWithoutVLeavesVerbosityUnchanged) {
  m_service->PreStartup();
  EXPECT_THAT(fake::Calls("Service::SetVerbose"), IsEmpty());
}

TEST_F(LifecycleTest, PreStartupGoesOnWithV) {
  Parse({"-V"});
  EXPECT_TRUE(m_service->PreStartup());
}

TEST_F(LifecycleTest, PreStartupGoesOnWithAnotherValueOfV) {
  Parse({"-V", "off"});
  EXPECT_TRUE(m_service->PreStartup());
}

TEST_F(LifecycleTest, PreStartupGoesOnWithoutV) { EXPECT_TRUE(m_service->PreStartup()); }

TEST_F(LifecycleTest, ExitDeregistersTheEndpointsThenAnnouncesThemAsGone) {
  m_service->Init();
  fake::Clear();
  m_service->Exit();
  EXPECT_EQ(FarewellCalls(), m_farewell);
}

TEST_F(LifecycleTest, ExitGivesTheEndpointsBack) {
  m_service->Init();
  m_service->Exit();
  EXPECT_EQ(AaSysComUserRegister(0x4AD, AaProEuCurrent()), 0x4ADu);
  EXPECT_EQ(AaSysComUserRegister(0x4D9, AaProEuCurrent()), 0x4D9u);
}

TEST_F(LifecycleTest, AFailedDeregistrationDoesNotStopExit) {
  fake::FailEvery("AaSysComUserDeregister");
  m_service->Exit();
  EXPECT_EQ(FarewellCalls(), m_farewell);
}

TEST_F(LifecycleTest, AFailedAnnouncementDoesNotStopExit) {
  fake::FailEvery("AaConfigTagPublicSet");
  m_service->Exit();
  EXPECT_EQ(FarewellCalls(), m_farewell);
}

TEST_F(LifecycleTest, DestructionExits) {
  m_service->Init();
  fake::Clear();
  m_service.reset();
  EXPECT_EQ(FarewellCalls(), m_farewell);
}

TEST_F(LifecycleTest, DestructionWithoutInitExits) {
  m_service.reset();
  EXPECT_EQ(FarewellCalls(), m_farewell);
}

TEST_F(LifecycleTest, DestructionAfterExitExitsOnceMore) {
  m_service->Init();
  m_service->Exit();
  fake::Clear();
  m_service.reset();
  EXPECT_EQ(FarewellCalls(), m_farewell);
}

TEST_F(LifecycleTest, DestructionDeletesThePollerBeforeItExits) {
  InitOn(EUnitVersion_Pivoa);
  m_service.reset();
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 131143, "PsuSpiPoller::~PsuSpiPoller"}, {"Service::Exit"}}));
}

TEST_F(LifecycleTest, DestructionWithoutAPollerDeletesNone) {
  m_service->Init();
  m_service.reset();
  EXPECT_THAT(fake::LogTexts(EAaSysLogSeverityLevel_Debug), Not(Contains("PsuSpiPoller::~PsuSpiPoller")));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
