/// The black box's copies of the O&M side's logs.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;

/// A log and what makes its copy.
struct LogCopy {
  const char* operation;
  u32 (BlackBoxData::*copy)();
  std::string source;
  std::string target;
};

void PrintTo(const LogCopy& row, std::ostream* out) { *out << row.operation; }

class BlackBoxLogCopiesTest : public BlackBoxTest, public testing::WithParamInterface<LogCopy> {
 protected:
  BlackBoxLogCopiesTest() { Init(); }

  u32 Copy() { return (m_blackBox.*GetParam().copy)(); }
  void SetSource() { fake::SetFile(GetParam().source, "a log"); }

  /// @return the log line "BlackBoxData::OPERATION(): text"
  fake::LogLine OperationLine(EAaSysLogSeverityLevel level, const std::string& text) const {
    return Line(level, std::string("BlackBoxData::") + GetParam().operation + "(): " + text);
  }
};

TEST_P(BlackBoxLogCopiesTest, TheLogIsCopied) {
  SetSource();
  EXPECT_EQ(Copy(), 1u);
  EXPECT_EQ(File(GetParam().target), "a log");
}

TEST_P(BlackBoxLogCopiesTest, ACopyIsLogged) {
  SetSource();
  Copy();
  EXPECT_THAT(fake::LogLines(), ElementsAre(OperationLine(kInfo, "file copy from " + GetParam().source + " to " +
                                                                     GetParam().target + " done")));
}

TEST_P(BlackBoxLogCopiesTest, AnOlderCopyIsReplaced) {
  fake::SetFile(GetParam().target, "an older and longer log");
  SetSource();
  Copy();
  EXPECT_EQ(File(GetParam().target), "a log");
}

TEST_P(BlackBoxLogCopiesTest, TheLogIsOpenedToReadAndClosedBeforeItIsCopied) {
  SetSource();
  fake::Clear();
  Copy();
  EXPECT_THAT(
      fake::Calls({"AaFileOpen", "AaFileClose", "AaFileCopy", "AaFileExists"}),
      ElementsAre(fake::Call("AaFileOpen", GetParam().source, "r"), fake::Call("AaFileClose", GetParam().source),
                  fake::Call("AaFileCopy", GetParam().source, GetParam().target)));
}

TEST_P(BlackBoxLogCopiesTest, AMissingLogIsAWarning) {
  EXPECT_EQ(Copy(), 0u);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(OperationLine(
                  kWarning, "File " + GetParam().source + " does not exist, can't create " + GetParam().target + ".")));
}

TEST_P(BlackBoxLogCopiesTest, OfAMissingLogNothingIsCopied) {
  fake::SetFile(GetParam().target, "an older log");
  Copy();
  EXPECT_TRUE(fake::Calls("AaFileCopy").empty());
  EXPECT_EQ(File(GetParam().target), "an older log");
}

TEST_P(BlackBoxLogCopiesTest, AFailedCopyIsAnError) {
  SetSource();
  fake::FailCall("AaFileCopy");
  EXPECT_EQ(Copy(), 0u);
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(OperationLine(kError, "failed to copy " + GetParam().source + " to " + GetParam().target)));
}

TEST_P(BlackBoxLogCopiesTest, ACopyWithANegativeResultIsAnError) {
  SetSource();
  fake::FailCall("AaFileCopy", 1, -1);
  EXPECT_EQ(Copy(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Logs, BlackBoxLogCopiesTest,
                         testing::Values(LogCopy{"copyAlarmsFile", &BlackBoxData::copyAlarmsFile, kOamAlarmsFile,
                                                 kAlarmsFile},
                                         LogCopy{"copySfpFile", &BlackBoxData::copySfpFile, kOamSfpFile, kSfpFile}),
                         [](const auto& row) { return std::string(row.param.operation); });

}  // namespace
}  // namespace ps::hwapi::common::climate
