// The form of log lines.
#include "AaSysLog.h"
#include "Support.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <regex>

namespace hwapi::test {
namespace {

class Log : public ::testing::Test {
 protected:
  void SetUp() override {
    ::unsetenv("JOURNAL_STREAM");
    ::unsetenv("NOTIFY_SOCKET");
  }
  const Board m_board{"[clock]\nstart = 2024-01-31T09:30:05Z\n"};
  const ErrorOutput m_output;
};

TEST_F(Log, LineHasTimeLevelAndFeature) {
  ::setenv("TZ", "UTC", 1);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 0x20047, "text %d", 5);
  EXPECT_TRUE(
      std::regex_match(m_output.Text(), std::regex(R"(2024-01-31 \d\d:\d\d:\d\d\.\d{3} ERROR   0x20047 text 5\n)")))
      << m_output.Text();
}

TEST_F(Log, LineOfASupervisedProcessHasTheKernelsPriority) {
  ::setenv("NOTIFY_SOCKET", "@somewhere", 1);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 1, "e");
  AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, 1, "w");
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "i");
  EXPECT_EQ(m_output.Text(), "<3>e\n<4>w\n<6>i\n");
}

TEST_F(Log, DebugIsHiddenUntilTheThresholdAllowsIt) {
  ::setenv("NOTIFY_SOCKET", "@somewhere", 1);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Debug, 1, "hidden");
  AaSysLogSetThreshold(EAaSysLogSeverityLevel_Debug);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Debug, 1, "shown");
  EXPECT_EQ(m_output.Text(), "<7>shown\n");
}

TEST_F(Log, ControlCharactersAreShownAndATrailingLineFeedIsNotDoubled) {
  ::setenv("NOTIFY_SOCKET", "@somewhere", 1);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "a\nb\tc\x1b[1m \xC3\xA4\n");
  EXPECT_EQ(m_output.Text(), "<6>a\\nb\\tc\\x1b[1m \xC3\xA4\n");
}

TEST_F(Log, LongLinesAreWrittenWhole) {
  ::setenv("NOTIFY_SOCKET", "@somewhere", 1);
  const std::string text(4000, 'x');
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "%s", text.c_str());
  EXPECT_EQ(m_output.Text(), "<6>" + text + "\n");
}

TEST_F(Log, LinesBeyondFourKibibytesAreCut) {
  ::setenv("NOTIFY_SOCKET", "@somewhere", 1);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "%s", std::string(10'000, 'x').c_str());
  EXPECT_EQ(m_output.Text(), "<6>" + std::string(4096 - 7, 'x') + "...\n");
}

TEST_F(Log, LeavesErrnoAlone) {
  errno = ENOSPC;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "text");
  EXPECT_EQ(errno, ENOSPC);
}

TEST(LogOfAssertion, NamesExpressionAndPlaceAndAborts) {
  const Board board;
  EXPECT_EXIT(AaErrorAssertion("a == b", "x.cpp", 12), ::testing::KilledBySignal(SIGABRT),
              "Assertion failed: a == b \\(file: x.cpp, line: 12\\)");
}

}  // namespace
}  // namespace hwapi::test
