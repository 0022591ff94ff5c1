#include "fake/PlatformTest.h"

namespace {

std::vector<std::string> g_seen;

class Config : public fake::PlatformTest {
 protected:
  Config() { g_seen.clear(); }
};

void NoteValue(const char*, const void* value, u32) { g_seen.emplace_back(static_cast<const char*>(value)); }
void SetSecondValue(const char* name, const void* value, u32) {
  g_seen.emplace_back(static_cast<const char*>(value));
  if (g_seen.size() == 1) AaConfigTagPublicSet(name, "b", 1);
  g_seen.emplace_back("done");
}
void Assert(const char*, const void*, u32) { AaErrorAssertion("value != GLO_NULL", __FILE__, __LINE__); }

TEST_F(Config, ATagOfAnotherProcessReachesObserversWithoutBeingRecorded) {
  AaConfigTagRegister("t", NoteValue);
  fake::Clear();
  fake::SetTag("t", std::string("text"));
  EXPECT_EQ(g_seen, std::vector<std::string>{"text"});
  EXPECT_TRUE(fake::Calls().empty());
}

TEST_F(Config, ASetFromWithinAnObserverWaitsForItsEnd) {
  AaConfigTagRegister("t", SetSecondValue);
  AaConfigTagPublicSet("t", "a", 1);
  EXPECT_EQ(g_seen, (std::vector<std::string>{"a", "done", "b", "done"}));
}

TEST_F(Config, WhatAnObserverThrowsIsLogged) {
  AaConfigTagRegister("t", [](const char*, const void*, u32) { throw std::runtime_error("broken"); });
  AaConfigTagPublicSet("t", "a", 1);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error, "Observer of tag t threw: broken"));
}

TEST_F(Config, AnAssertionInAnObserverReachesTheTest) {
  AaConfigTagRegister("t", Assert);
  EXPECT_THROW(AaConfigTagPublicSet("t", "a", 1), fake::AssertionFailed);
}

TEST_F(Config, AnOddAnswerCanBeGiven) {
  fake::AnswerTagGet("t", 5, "text");
  void* value = nullptr;
  EXPECT_EQ(AaConfigTagGet("t", &value), 5);
  EXPECT_STREQ(static_cast<char*>(value), "text");
  AaMemUnRefDbg(value, __FILE__, __LINE__);
}

TEST_F(Config, ReferencesThatAreHeldAreCounted) {
  fake::SetTag("t", 6);
  void* value = nullptr;
  AaConfigTagGet("t", &value);
  EXPECT_EQ(fake::LiveMemory(), 1u);
  AaMemUnRefDbg(value, __FILE__, __LINE__);
  EXPECT_EQ(fake::LiveMemory(), 0u);
}

TEST_F(Config, ReleasingTwiceIsAViolation) {
  fake::SetTag("t", 6);
  void* value = nullptr;
  AaConfigTagGet("t", &value);
  AaMemUnRefDbg(value, __FILE__, __LINE__);
  AaMemUnRefDbg(value, __FILE__, __LINE__);
  EXPECT_EQ(fake::Violations().size(), 1u);
  fake::ClearViolations();
}

TEST_F(Config, RadValuesAreGiven) {
  fake::SetRad(0x200B5, 24);
  EXPECT_EQ(AaConfigRadGetValue(0x200B5), 24u);
}

}  // namespace
