#include "fake/PlatformTest.h"

namespace {

using Log = fake::PlatformTest;
using fake::LogLine;

TEST_F(Log, LinesAreKeptFormatted) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, 0x20047, "fan %d of %s", 2, "board");
  EXPECT_EQ(fake::LogLines(), (std::vector<LogLine>{{EAaSysLogSeverityLevel_Warning, 0x20047, "fan 2 of board"}}));
}

TEST_F(Log, ALineFeedAtTheEndIsNotPartOfTheLine) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "text\n");
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Info), std::vector<std::string>{"text"});
}

TEST_F(Log, ALineFeedAtTheEndIsPartOfTheCall) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "text\n");
  EXPECT_EQ(fake::Calls(), (std::vector<fake::Call>{{"AaSysLogPrintE", EAaSysLogSeverityLevel_Info, 1, "text\n"}}));
}

TEST_F(Log, LinesBelowTheThresholdAreKeptToo) {
  AaSysLogSetThreshold(EAaSysLogSeverityLevel_Error);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Debug, 1, "text");
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "text"));
}

TEST_F(Log, AnotherLevelIsAnotherLine) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Debug, 1, "text");
  EXPECT_FALSE(fake::Logged(EAaSysLogSeverityLevel_Info, "text"));
}

TEST_F(Log, AFailedAssertionIsThrownToTheTest) {
  try {
    AaErrorAssertion("request != GLO_NULL", "file.cpp", 12);
  } catch (const fake::AssertionFailed& failed) {
    EXPECT_EQ(failed.expression, "request != GLO_NULL");
    EXPECT_EQ(failed.line, 12u);
  }
  EXPECT_EQ(fake::Calls(), (std::vector<fake::Call>{{"AaErrorAssertion", "request != GLO_NULL"}}));
}

}  // namespace
