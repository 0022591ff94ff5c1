// The receive loop: which delegate answers, and what becomes of failures.
#include "Client.h"
#include "ServiceProcess.h"
#include "TestBoard.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

using ps::hwapi::common::MsgHandlingException;

namespace {

constexpr u32 kAsk = 0x1000;
constexpr u32 kChange = 0x1010;
constexpr u32 kFail = 0x1020;
constexpr u32 kUnknown = 0x1030;

class ServiceMessagesTest : public testing::Test {
 protected:
  ServiceMessagesTest() { m_board.Describe(""); }

  TestBoard m_board;
};

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(ServiceMessagesTest, AMessageReachesTheDelegateOfItsId) {
  ServiceProcess service({.init = [](Probe& probe) {
    probe.Answer(kChange, 2);
    probe.Answer(kAsk, 1);
  }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  EXPECT_EQ(client.Ask(kAsk), 1u);
  EXPECT_EQ(client.Ask(kChange), 2u);
}

TEST_F(ServiceMessagesTest, OfTwoDelegatesTheNewerOneAnswersAlone) {
  ServiceProcess service({.init = [](Probe& probe) {
    probe.Answer(kAsk, 1);
    probe.Answer(kAsk, 2);
    probe.Answer(kChange, 3);
  }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  EXPECT_EQ(client.Ask(kAsk), 2u);
  EXPECT_EQ(client.Ask(kChange), 3u) << "a second answer was in the way";
}

TEST_F(ServiceMessagesTest, AHandlerMayReplaceItself) {
  ServiceProcess service({.init = [](Probe& probe) {
    auto text = std::make_shared<std::string>("still alive after being replaced");
    probe.Handle(kAsk, [&probe, text](void*) {
      probe.Answer(kAsk, 2);
      Say(*text);
    });
  }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  client.Send(kAsk);
  EXPECT_EQ(service.Line(), "still alive after being replaced");
  EXPECT_EQ(client.Ask(kAsk), 2u);
}

TEST_F(ServiceMessagesTest, AHandlersFailureIsLoggedAndTheLoopGoesOn) {
  ServiceProcess service({.init = [](Probe& probe) {
    probe.Handle(kFail, [](void*) { throw MsgHandlingException("no payload", "Handler.cpp", 42); });
    probe.Answer(kAsk, 1);
  }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  client.Send(kFail);
  EXPECT_EQ(client.Ask(kAsk), 1u);
  service.Signal(SIGTERM);
  EXPECT_NE(service.Errors().find("Message 0x1020: Message handling error: no payload (file: Handler.cpp, line: 42)"),
            std::string::npos)
      << service.Errors();
}

TEST_F(ServiceMessagesTest, AHandlerWithoutMemoryIsLoggedAndTheLoopGoesOn) {
  ServiceProcess service({.init = [](Probe& probe) {
    probe.Handle(kFail, [](void*) { throw std::bad_alloc(); });
    probe.Answer(kAsk, 1);
  }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  client.Send(kFail);
  EXPECT_EQ(client.Ask(kAsk), 1u);
  service.Signal(SIGTERM);
  EXPECT_NE(service.Errors().find("Message 0x1020: out of memory"), std::string::npos) << service.Errors();
}

TEST_F(ServiceMessagesTest, AnyOtherExceptionLeavesTheLoop) {
  ServiceProcess service(
      {.init = [](Probe& probe) { probe.Handle(kFail, [](void*) { throw std::runtime_error("broken"); }); },
       .escaped = [](const std::exception& failure) { Say(failure.what()); }});
  ASSERT_TRUE(service.Says("run"));
  Client().Send(kFail);
  EXPECT_EQ(service.Line(), "broken");
}

TEST_F(ServiceMessagesTest, UnknownMessagesAreLoggedOncePerIdAndCounted) {
  ServiceProcess service({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  for (int i = 0; i < 3; ++i) client.Send(kUnknown);
  EXPECT_EQ(client.Ask(kAsk), 1u);
  service.Signal(SIGTERM);
  const std::string errors = service.Errors();
  EXPECT_EQ(Count(errors, "Message 0x1030 from 0x"), 1u) << errors;
  EXPECT_EQ(Count(errors, "3 unknown messages were ignored in all"), 1u) << errors;
}

TEST_F(ServiceMessagesTest, AFloodOfUnknownIdsDoesNotFloodTheLog) {
  ServiceProcess service({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  for (u32 i = 0; i < 100; ++i) client.Send(kUnknown + i);
  EXPECT_EQ(client.Ask(kAsk), 1u);
  service.Signal(SIGTERM);
  EXPECT_EQ(Count(service.Errors(), "is unknown and ignored"), 64u);
}

TEST_F(ServiceMessagesTest, AWakeUpFromOutsideDoesNotEndTheLoop) {
  ServiceProcess service({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  client.Send(0xFF01);
  client.Send(0xFF02);
  EXPECT_EQ(client.Ask(kAsk), 1u);
}

TEST_F(ServiceMessagesTest, DelegatesCanBeAddedWhileMessagesCome) {
  auto adder = std::make_shared<std::thread>();
  ServiceProcess service({.init = [adder](Probe& probe) {
    probe.Answer(kAsk, 0);
    *adder = std::thread([&probe] {
      for (u32 i = 1; i <= 500; ++i) probe.Answer(kAsk, i);
      Say("added");
    });
    probe.Handle(kChange, [adder](void*) { adder->join(); });
  }});
  ASSERT_TRUE(service.Says("run"));
  const Client client;
  for (u32 i = 0, last = 0; i < 50; ++i) {
    const auto answer = client.Ask(kAsk);
    ASSERT_TRUE(answer);
    EXPECT_GE(*answer, last);
    last = *answer;
  }
  client.Send(kChange);
  EXPECT_EQ(client.Ask(kAsk), 500u);
}

TEST_F(ServiceMessagesTest, DebugLinesAreWrittenOnlyWhenVerbose) {
  const auto reportState = [](u32 verbose) {
    return [verbose](Probe& probe) {
      probe.SetVerbose(verbose);
      probe.SetServiceStateRad(0x1000);
      return false;
    };
  };
  ServiceProcess verbose({.preStartup = reportState(1)});
  ServiceProcess quiet({.preStartup = reportState(0)});
  EXPECT_NE(verbose.Errors().find("State 0x22000b is 0x1000"), std::string::npos);
  EXPECT_EQ(quiet.Errors().find("State"), std::string::npos);
}

TEST_F(ServiceMessagesTest, TheOwnStateIsTheOneReportedUnlessTheCommonOneIsUsed) {
  ServiceProcess service({.preStartup = [](Probe& probe) {
    probe.SetServiceStateRad(0x1001);
    probe.SetUseCommonServiceState(0);
    Say(std::to_string(probe.GetServiceStateRad()));
    probe.SetUseCommonServiceState(1);
    Say(std::to_string(probe.GetServiceStateRad()));
    return false;
  }});
  ASSERT_TRUE(service.Says("pre-startup"));
  EXPECT_EQ(service.Line(), std::to_string(0x1001));
  EXPECT_EQ(service.Line(), "0");
}

}  // namespace
