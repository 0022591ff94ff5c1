// Lines that other processes cause are limited.
#include "AaConfig.h"
#include "AaSysCom.h"
#include "ComLog.h"
#include "LogLimit.h"
#include "PlatformThread.h"
#include "Support.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace hwapi::test {
namespace {

using qis::LogCause;
using qis::LogLimit;

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kStart = 1'000 * kSecond;

class Limit : public ::testing::Test {
 protected:
  /// @return how many of @p count lines of a cause may be logged now
  unsigned Log(const LogCause& cause, unsigned count, std::int64_t now = kStart) {
    unsigned logged = 0;
    for (unsigned i = 0; i < count; ++i) {
      logged += m_limit->MayLog(cause, now) ? 1u : 0u;
    }
    return logged;
  }
  static LogCause From(TAaSysComSicad sender, const char* format = "a format") {
    return {.format = format, .feature = 1, .level = EAaSysLogSeverityLevel_Info, .sender = sender};
  }

  const std::unique_ptr<LogLimit> m_limit = std::make_unique<LogLimit>();
};

TEST_F(Limit, LetsABurstThrough) { EXPECT_EQ(Log(From(1), 150), 100u); }

TEST_F(Limit, LetsSlowLinesThroughForEver) {
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(Log(From(1), 1, kStart + i * kSecond / 10), 1u);
  }
}

TEST_F(Limit, IsOfEachSenderAndOfEachCause) {
  Log(From(1), 150);
  EXPECT_EQ(Log(From(2), 1), 1u);
  EXPECT_EQ(Log(From(1, "another format"), 1), 1u);
  EXPECT_EQ(Log(From(1), 1), 0u);
}

TEST_F(Limit, TellsHowManyLinesWereLeftOutWhenTheCauseMayLogAgain) {
  Log(From(1), 142);
  LogLimit::LeftOut leftOut;
  EXPECT_FALSE(m_limit->TakeLeftOut(leftOut, kStart + kSecond / 2)) << "not yet";
  ASSERT_TRUE(m_limit->TakeLeftOut(leftOut, kStart + kSecond));
  EXPECT_EQ(leftOut.lines, 42u);
  EXPECT_EQ(leftOut.cause, From(1));
  EXPECT_STREQ(leftOut.begin.data(), "a format");
  EXPECT_FALSE(m_limit->HasLeftOut());
  EXPECT_EQ(Log(From(1), 20, kStart + kSecond), 9u) << "the report is a line, too";
}

TEST_F(Limit, OfAFloodIsTenLinesASecondAndTheReportIsOneOfThem) {
  unsigned logged = 0;
  for (int ms = 0; ms < 10'000; ++ms) {
    const std::int64_t now = kStart + ms * kSecond / 1000;
    for (LogLimit::LeftOut leftOut; m_limit->TakeLeftOut(leftOut, now);) {
      ++logged;
    }
    logged += Log(From(1), 10, now);
  }
  EXPECT_LE(logged, 200u);
  EXPECT_GE(logged, 180u);
}

TEST_F(Limit, HoldsForSendersThatNameThemselvesDifferentlyEachTime) {
  unsigned logged = 0;
  for (u32 sender = 1; sender <= 100'000; ++sender) {
    logged += Log(From(sender), 1);
  }
  EXPECT_LT(logged, 1000u) << "the table is full, and the rest shares one limit";
  EXPECT_GT(logged, 100u);
}

TEST_F(Limit, HoldsForAllSendersTogether) {
  unsigned logged = 0;
  for (u32 sender = 1; sender <= 200; ++sender) {
    logged += Log(From(sender), 100);
  }
  EXPECT_EQ(logged, 5000u);
}

TEST_F(Limit, IsFullAgainForACauseThatWasQuietForLong) {
  Log(From(1), 100);
  EXPECT_EQ(Log(From(1), 150, kStart + 20 * kSecond), 100u);
}

class LimitedLog : public ::testing::Test {
 protected:
  LimitedLog() { ::setenv("NOTIFY_SOCKET", "@somewhere", 1); }
  ~LimitedLog() override { qis::HandlingMessageFrom(0, true); }
  static void LogOften() {
    for (int i = 0; i < 150; ++i) {
      AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 7, "refused %d", i);
    }
  }
  const Board m_board;
  const ErrorOutput m_output;
};

TEST_F(LimitedLog, HasAHundredLinesOfAStrangersMessages) {
  qis::HandlingMessageFrom(AddressOf(0x8123), false);
  LogOften();
  EXPECT_EQ(Occurrences(m_output.Text(), "refused"), 100u);
}

TEST_F(LimitedLog, HasEveryLineOfTheProcessesOwnMessages) {
  qis::HandlingMessageFrom(AddressOf(0x8123), true);
  LogOften();
  EXPECT_EQ(Occurrences(m_output.Text(), "refused"), 150u);
}

TEST_F(LimitedLog, HasEveryLineOfTheProcessesOtherThreads) {
  qis::HandlingMessageFrom(AddressOf(0x8123), false);
  std::thread(&LogOften).join();
  EXPECT_EQ(Occurrences(m_output.Text(), "refused"), 150u);
}

TEST_F(LimitedLog, LeavesOutLinesOfATagsObserver) {
  static const Event s_done;
  const auto observe = [](const char*, const void*, u32) {
    LogOften();
    s_done.Happened();
  };
  ASSERT_EQ(AaConfigTagRegister("app.a", observe), 0);
  ASSERT_EQ(AaConfigTagPublicSet("app.a", "1", 1), 0);
  ASSERT_TRUE(s_done.Await());
  EXPECT_LT(Occurrences(m_output.Text(), "refused"), 150u);
}

TEST_F(LimitedLog, LeavesOutLinesOfLossesAndRecoveriesThatTakeTurnsOnAPlatformThread) {
  static const Event s_done;
  const auto takeTurns = [](void*) -> void* {
    qis::LossLog losses(AddressOf(0x8123));
    for (int i = 0; i < 150; ++i) {
      losses.Lost(EAaSysComCounter_QueueFull, 1, "its queue is full");
      losses.Delivered();
    }
    s_done.Happened();
    return nullptr;
  };
  ASSERT_EQ(qis::StartPlatformThread(takeTurns, nullptr), 0);
  ASSERT_TRUE(s_done.Await());
  EXPECT_LT(Occurrences(m_output.Text(), "Cannot deliver"), 150u);
  EXPECT_LT(Occurrences(m_output.Text(), "are delivered again"), 150u);
}

TEST_F(LimitedLog, StaysLimitedOnAPlatformThreadThatReceivedAMessage) {
  static const Event s_done;
  const auto receive = [](void*) -> void* {
    qis::HandlingMessageFrom(0, true);
    LogOften();
    s_done.Happened();
    return nullptr;
  };
  ASSERT_EQ(qis::StartPlatformThread(receive, nullptr), 0);
  ASSERT_TRUE(s_done.Await());
  EXPECT_LT(Occurrences(m_output.Text(), "refused"), 150u);
  EXPECT_TRUE(Eventually([&] {
    qis::HandlingMessageFrom(0, true);
    return Occurrences(m_output.Text(), "; what other processes do causes too many\n") == 1;
  })) << m_output.Text();
}

TEST_F(LimitedLog, SaysHowManyLinesAreMissingWithALaterMessage) {
  qis::HandlingMessageFrom(AddressOf(0x8123), false);
  LogOften();
  EXPECT_TRUE(Eventually([&] {
    qis::HandlingMessageFrom(0, true);
    return Occurrences(m_output.Text(),
                       "<3>Lines like \"refused %d\" left out here: 50; messages of task 0x8123 of "
                       "board 1, cpu 2 cause too many\n") == 1;
  })) << m_output.Text();
}

}  // namespace
}  // namespace hwapi::test
