#include "AaSem.h"
#include "fake/PlatformTest.h"

#include <cerrno>

namespace {

using Semaphore = fake::PlatformTest;

TEST_F(Semaphore, CallsTellItsNumber) {
  TAaSem* first = AaSemCreateC(1);
  TAaSem* second = AaSemCreateC(1);
  fake::Clear();
  AaSemWait(second);
  AaSemWait(first);
  const std::vector<fake::Call> calls = fake::Calls("AaSemWait");
  EXPECT_EQ(calls.at(0).arguments.at(0).Number(), calls.at(1).arguments.at(0).Number() + 1);
}

TEST_F(Semaphore, UseAfterItsEndIsAViolation) {
  TAaSem* semaphore = AaSemCreateC(1);
  AaSemDestroy(semaphore);
  EXPECT_EQ(AaSemPost(semaphore), EINVAL);
  EXPECT_EQ(fake::Violations().size(), 1u);
  fake::ClearViolations();
}

TEST_F(Semaphore, IsHeldWhenTheActionsOfATestRun) {
  TAaSem* semaphore = AaSemCreateC(1);
  std::vector<std::string> events;
  const auto note = [&](const char* event) {
    fake::FailCall("AaSemWait");
    EXPECT_NE(AaSemWait(semaphore), 0) << "an action may wait where that fails";
    events.emplace_back(event);
  };
  fake::OnSemaphoreTaken([&] { note("taken"); });
  fake::OnSemaphorePost([&] { note("post"); });
  AaSemWait(semaphore);
  events.emplace_back("held");
  AaSemPost(semaphore);
  EXPECT_EQ(events, (std::vector<std::string>{"taken", "held", "post"}));
}

TEST_F(Semaphore, OutlivesAReset) {
  TAaSem* semaphore = AaSemCreateC(1);
  fake::Reset();
  EXPECT_EQ(AaSemWait(semaphore), 0);
}

}  // namespace
