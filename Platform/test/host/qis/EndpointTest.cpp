// Who may announce an endpoint.
#include "AaConfig.h"
#include "AaSysLog.h"
#include "EndpointTags.h"
#include "Support.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace hwapi::test {
namespace {

constexpr const char* kTag = "app.hwapi.online.4ad";
constexpr u32 kOnline = 6;
constexpr u32 kGone = 7;

void Announce(u32 value) { EXPECT_EQ(AaConfigTagPublicSet(kTag, &value, sizeof value), 0); }

u32 Announced() {
  u32 value = 0;
  EXPECT_EQ(AaConfigTagGetU32(kTag, &value), 0);
  return value;
}

void GiveBack() {
  EXPECT_EQ(AaSysComUserDeregister(kServer), 0);
  qis::EndpointGivenBack(AddressOf(kServer));
}

/// A process that serves the task as soon as it may, announces that, and goes on serving.
class Successor {
 public:
  void Begin() const {
    m_go.Happened();
    EXPECT_TRUE(m_announced.Await());
  }

 private:
  const Event m_go;
  const Event m_announced;
  Peer m_process{[this] {
    m_go.Await();
    EXPECT_NE(Serve(kServer), 0u);
    Announce(kOnline);
    m_announced.Happened();
    ::pause();
  }};
};

TEST(Endpoint, OfASuccessorIsNotAnnouncedAsGone) {
  const Board board;
  const Successor successor;
  Serve(kServer);
  Announce(kOnline);
  GiveBack();
  Announce(kGone);
  EXPECT_EQ(Announced(), kGone);
  successor.Begin();
  Announce(kGone);
  EXPECT_EQ(Announced(), kOnline);
}

TEST(Endpoint, ThatNobodyServesIsAnnouncedAsGoneOverAndOver) {
  const Board board;
  Serve(kServer);
  Announce(kOnline);
  GiveBack();
  Announce(kGone);
  Announce(kOnline);
  Announce(kGone);
  EXPECT_EQ(Announced(), kGone);
}

TEST(Endpoint, ThatAProcessServesAgainIsItsOwnToAnnounce) {
  const Board board;
  Serve(kServer);
  GiveBack();
  Announce(kGone);
  Serve(kServer);
  Announce(kOnline);
  EXPECT_EQ(Announced(), kOnline);
}

TEST(Endpoint, OfAnotherMayBeAnnouncedByWhoNeverServedIt) {
  const Board board;
  const Successor server;
  server.Begin();
  Announce(kGone);
  EXPECT_EQ(Announced(), kGone);
}

TEST(Endpoint, OfASuccessorIsOneDebugLine) {
  const Board board;
  const Successor successor;
  Serve(kServer);
  GiveBack();
  successor.Begin();
  AaSysLogSetThreshold(EAaSysLogSeverityLevel_Debug);
  const ErrorOutput log;
  Announce(kGone);
  EXPECT_EQ(Occurrences(log.Text(), "DEBUG"), 1u);
  EXPECT_EQ(Occurrences(log.Text(), std::string("Tag ") + kTag + " is left as it is"), 1u) << log.Text();
}

}  // namespace
}  // namespace hwapi::test
