/// The entry of the daemon.
#include "ClimateService.h"
#include "fake/PlatformTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

/// The daemon's main.
int ClimateMain(int argc, char** argv);

namespace ps::hwapi::common::climate {
namespace {

using testing::Contains;
using testing::ExitedWithCode;
using testing::MatchesRegex;
using testing::StartsWith;

/// Runs the daemon on a board without a black box, as the one service of its process.
class MainDeathTest : public fake::PlatformTest {
 protected:
  MainDeathTest() {
    fake::Unit().type = EUnitType_Vyd;
    fake::Unit().version = EUnitVersion_Vyda;
  }

  static int Run(std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), "CLM");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    return ClimateMain(static_cast<int>(arguments.size()), argv.data());
  }
};

bool g_tellHowItEnded = false;

/// Prints the tags of the endpoints and which of those were deregistered, if a test asked for it.
void TellHowItEnded() {
  if (!g_tellHowItEnded) return;
  for (const char* endpoint : {"4b6", "4ad", "4d9"}) {
    const auto tag = fake::TagValue(std::string("app.hwapi.online.") + endpoint);
    std::fprintf(stderr, "; %s is %d", endpoint, tag ? tag->front() : 0);
  }
  for (const fake::Call& call : fake::Calls("AaSysComUserDeregister")) {
    std::fprintf(stderr, "; without %x", static_cast<unsigned>(call.arguments.at(0).Number()));
  }
}

/// Runs before the service is constructed, and so lets what it registers run after the service is destroyed.
__attribute__((constructor(101))) void RegisterForTheEnd() { std::atexit(TellHowItEnded); }

/// A service whose initialisation fails in a way of the test.
template <typename Failure>
class FailingService : public Service {
 public:
  explicit FailingService(Failure failure) : Service("failing", 0x4B6, 0, 0), m_failure(std::move(failure)) {}
  void Init() override { throw m_failure; }

 private:
  const Failure m_failure;
};

TEST_F(MainDeathTest, TheServiceExistsBeforeMain) {
  EXPECT_NE(dynamic_cast<ClimateService*>(&Service::Get()), nullptr);
}

TEST_F(MainDeathTest, ReturnsZeroAndPrintsNothingWhenTheServiceEnds) {
  EXPECT_EXIT(std::exit(Run()), ExitedWithCode(0), "^$");
}

TEST_F(MainDeathTest, AFailedInitialisationIsPrintedWithoutALineEndAndReturnsZero) {
  fake::FailCall("AaSysComUserRegister", 2);
  EXPECT_EXIT(std::exit(Run()), ExitedWithCode(0),
              MatchesRegex("Initialization failed: HWAPI_BLACKBOX Service SysCom registration failed "
                           "\\(file: ClimateService\\.cpp, line: [1-9][0-9]* \\)"));
}

TEST_F(MainDeathTest, AFailedInitialisationGivesTheEndpointsBackAndTakesThemOffline) {
  fake::FailCall("AaSysComUserRegister", 2);
  g_tellHowItEnded = true;
  EXPECT_EXIT(std::exit(Run()), ExitedWithCode(0),
              testing::EndsWith("; 4b6 is 7; 4ad is 7; 4d9 is 7; without 4b6; without 4ad; without 4d9"));
  g_tellHowItEnded = false;
}

TEST_F(MainDeathTest, PrintsReasonDescriptionFileAndLine) {
  const FailingService service(Service::InitFailedException("no board", "Some.cpp", 12));
  EXPECT_EXIT(std::exit(Run()), ExitedWithCode(0),
              testing::Eq("Initialization failed: no board (file: Some.cpp, line: 12 )"));
}

TEST_F(MainDeathTest, AnotherExceptionIsNotCaught) {
  const FailingService service(std::logic_error("another kind"));
  EXPECT_THROW(Run(), std::logic_error);
}

TEST_F(MainDeathTest, AnotherExceptionOfTheLayerIsNotCaught) {
  const FailingService service(MsgHandlingException("another kind", "Some.cpp", 1));
  EXPECT_THROW(Run(), MsgHandlingException);
}

TEST_F(MainDeathTest, TheServiceInitialisesRunsAndExits) {
  Run();
  EXPECT_TRUE(fake::CalledInOrder({{"ApiGetLocalUnitVersion"},
                                   {"AaConfigTagRegister", "app.hwapi.online.4b3"},
                                   {"Service::Run"},
                                   {"Service::Exit"},
                                   {"AaSysComUserDeregister", 0x4B6}}));
}

TEST_F(MainDeathTest, TheBareOptionVMakesTheServiceVerbose) {
  Run({"-V"});
  EXPECT_TRUE(fake::IsVerbose());
}

TEST_F(MainDeathTest, TheTextOfTheBareOptionAsItsValueMakesTheServiceVerbose) {
  Run({"-V", "arg on"});
  EXPECT_TRUE(fake::IsVerbose());
}

TEST_F(MainDeathTest, VerbosityIsSetBeforeTheInitialisation) {
  Run({"-V"});
  EXPECT_TRUE(fake::CalledInOrder({{"Service::SetVerbose", 1}, {"ApiGetLocalUnitVersion"}}));
}

TEST_F(MainDeathTest, AnotherValueOfVLeavesTheServiceQuiet) {
  Run({"-V", "off"});
  EXPECT_FALSE(fake::IsVerbose());
}

TEST_F(MainDeathTest, TheServiceIsNamedCLM) {
  Run({"--unknown"});
  EXPECT_THAT(fake::LogTexts(EAaSysLogSeverityLevel_Error), Contains(StartsWith("CLM: ")));
}

TEST_F(MainDeathTest, TheServiceServesTheTemperatureEndpoint) {
  u32 taken = 0x4B6;
  fake::OnSent(0x2B2A, [&](const fake::Message&) { taken = AaSysComUserRegister(0x4B6, AaProEuCurrent()); });
  fake::Deliver({.id = 0x2B29, .payload = fake::Bytes(20, 0xFF), .sender = 0x01020345, .receiver = 0x010104B6});
  Run();
  EXPECT_EQ(taken, 0u) << "nobody served it while the service ran";
}

TEST_F(MainDeathTest, ARequestThatArrivesIsAnswered) {
  fake::Deliver({.id = 0x2B29, .payload = fake::Bytes(20, 0xFF), .sender = 0x01020345, .receiver = 0x010104B6});
  Run();
  EXPECT_EQ(fake::SentMessages(0x2B2A).size(), 1u);
}

TEST_F(MainDeathTest, OneBadMessageDoesNotEndTheService) {
  fake::Deliver({.id = 0x2B29, .sender = 0x01020345, .receiver = 0x010104B6});
  fake::Deliver({.id = 0x2B29, .payload = fake::Bytes(20, 0xFF), .sender = 0x01020345, .receiver = 0x010104B6});
  Run();
  EXPECT_EQ(fake::SentMessages(0x2B2A).size(), 1u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
