// When the speed reports of the fans come, and to whom. Time is counted in temperature indications: the same daemon
// sends both, from timers that are served in the order of their deadlines, so a slow host does not matter.
#include "TestBoard.h"
#include "Wire.h"

#include <algorithm>
#include <csignal>

namespace boardtest {
namespace {

constexpr const char* kTick = "0x2b2b";    ///< a temperature indication, every 4 s
constexpr const char* kReport = "0x2c17";  ///< a report of the fans' speeds

class FanReportTest : public BoardTest {
 protected:
  /// Sends a speed request as a task that receives temperature indications, too.
  /// @return the ids of what comes back: the answer first, then indications of both kinds
  std::vector<std::string> Request(const std::string& id, const std::string& payload, unsigned messages) const {
    EXPECT_EQ(Clmctl({"temp", "start", "Kel", "--interval", "4s", "--client", "1/1/0x7000"}).status, 0);
    const Result send = Clmctl({"send", "--to", "fan", "--id", id, "--sender", "0x7000", "--hex", payload, "--expect",
                                std::to_string(messages), "--timeout", "25s"});
    EXPECT_EQ(send.status, 0) << send.err;
    return MessageIds(send.out);
  }
};

/// @return the ticks before the first report and between it and the next one; fewer for fewer reports
std::vector<long> TicksBetweenReports(const std::vector<std::string>& ids, const std::string& answer) {
  std::vector<long> ticks;
  auto from = std::find(ids.begin(), ids.end(), answer);
  while (from != ids.end()) {
    const auto report = std::find(from, ids.end(), kReport);
    if (report == ids.end()) break;
    ticks.push_back(std::count(from, report, kTick));
    from = report + 1;
  }
  return ticks;
}

/// A tick more for those that the request came just before, up to two fewer for a host that stood still meanwhile.
void ExpectTicks(long ticks, long expected) {
  EXPECT_LE(ticks, expected + 1);
  EXPECT_GE(ticks, std::max(expected - 2, 1L));
}

TEST_F(FanReportTest, ComeAfterTheAskedPeriodAndThenEveryMinute) {
  Up();
  // transaction, receiver, period, number of items, fan, speed
  const auto ticks = TicksBetweenReports(Request("0x2cf1", Words({1, 0, 8, 1, 201, 50}), 24), "0x2cf2");
  ASSERT_GE(ticks.size(), 2u);
  ExpectTicks(ticks[0], 2);
  ExpectTicks(ticks[1], 15);
}

TEST_F(FanReportTest, OfTheFirstVersionComeAfterTwentySecondsAndThenEveryMinute) {
  Up();
  const auto ticks = TicksBetweenReports(Request("0x2c15", Words({1, 0, 1, 201, 50}), 27), "0x2c16");
  ASSERT_GE(ticks.size(), 2u);
  ExpectTicks(ticks[0], 5);
  ExpectTicks(ticks[1], 15);
}

TEST_F(FanReportTest, AreStartedAfreshByANewRequest) {
  Up();
  ASSERT_EQ(Clmctl({"fan", "speed", "201=50", "--period", "24s", "--receiver", "1/1/0x7000"}).status, 0);
  const auto ticks = TicksBetweenReports(Request("0x2cf1", Words({1, 0, 8, 1, 201, 50}), 24), "0x2cf2");
  // The 24 s of the first request, a few ticks after the first report, bring none.
  ASSERT_EQ(ticks.size(), 2u);
  ExpectTicks(ticks[1], 15);
}

TEST_F(FanReportTest, GoToTheLastRequestsRecipientOnly) {
  Up();
  auto before = StartClmctl({"fan", "watch"});
  ASSERT_TRUE(before->WaitForText("GAR_FAN2"));
  // The second report of the new watch is later than one of the old watch could be.
  EXPECT_EQ(Clmctl({"fan", "watch", "--count", "2"}).status, 0);
  before->Signal(SIGINT);
  const Result ended = before->Wait();
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(before->Count("GAR_FAN1"), 1u) << ended.out;
}

TEST_F(FanReportTest, GoToTheRecipientThatIsNamed) {
  Up();
  ASSERT_EQ(Clmctl({"fan", "speed", "201=50", "--period", "8s", "--receiver", "1/1/0x7000"}).status, 0);
  const Result heard =
      Clmctl({"send", "--to", "fan", "--id", "0x1", "--sender", "0x7000", "--expect", "1", "--timeout", "25s"});
  EXPECT_EQ(MessageIds(heard.out), std::vector<std::string>{kReport}) << heard.err;
}

TEST_F(FanReportTest, GoOnWhenTheDaemonCameBack) {
  Up();
  auto watch = StartClmctl({"fan", "watch"});
  ASSERT_TRUE(watch->WaitForText("GAR_FAN2"));
  kill(DaemonPid(), SIGKILL);
  ASSERT_TRUE(watch->WaitForText("goes on")) << watch->SoFar().err;
  EXPECT_TRUE(watch->WaitForText("GAR_FAN2", 2));
}

TEST_F(FanReportTest, ComeBesideTemperatures) {
  Up();
  const Result watch = Clmctl({"temp", "watch", "Kel", "--fans", "--count", "12", "--json"});
  ASSERT_EQ(watch.status, 0) << watch.err;
  EXPECT_NE(watch.out.find("\"sensor\":\"KEL_MCU\""), std::string::npos);
  EXPECT_NE(watch.out.find("\"fan\":\"GAR_FAN2\""), std::string::npos) << watch.out;
  EXPECT_EQ(Clmctl({"temp", "start", "Kel"}).status, 0);
}

/// Sends hostile payloads of every size to the fan service under one message id.
class HostileFanMessageTest : public BoardTest, public testing::WithParamInterface<const char*> {};

TEST_P(HostileFanMessageTest, OfAnySizeLeavesTheDaemonAnswering) {
  Up();
  const pid_t before = DaemonPid();
  for (unsigned size = 0; size <= 40; ++size) {
    const std::string everythingHuge(2 * size, 'f');
    ASSERT_EQ(Clmctl({"send", "--to", "fan", "--id", GetParam(), "--hex", everythingHuge, "--expect", "0"}).status, 0);
  }
  EXPECT_EQ(Clmctl({"fan", "speed", "201=50", "--period", "8s"}).status, 0);
  EXPECT_EQ(DaemonPid(), before);
}

INSTANTIATE_TEST_SUITE_P(Requests, HostileFanMessageTest, testing::Values("0x2c13", "0x2c15", "0x2cf1", "0x2c78"));

}  // namespace
}  // namespace boardtest
