/// What earlier software kept elsewhere is taken over.
#include "BlackBoxTest.h"
#include "PrivateRoot.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

/// A file of earlier software, and where it belongs now.
struct OldFile {
  std::string path;
  std::string target;
};

void PrintTo(const OldFile& row, std::ostream* out) { *out << row.path; }

const OldFile kOldAlarms = {"/ffs/run/logs/blackbox_alarms", kAlarmsFile};
const OldFile kOldTrace = {"/ffs/run/logs/blackbox_temperature", kTraceFile};

class BlackBoxOldFilesTest : public InPrivateRoot<BlackBoxTest> {
 protected:
  BlackBoxOldFilesTest() { Init(); }

  /// The platform reads the one, the C library removes the other.
  static void SetOldFile(const OldFile& file) {
    fake::SetFile(file.path, "old content");
    WriteRealFile(file.path, "old content");
  }

  static std::vector<fake::Call> FileCalls() { return fake::Calls({"AaFileOpen", "AaFileClose", "AaFileCopy"}); }
};

class BlackBoxOldFileTest : public BlackBoxOldFilesTest, public testing::WithParamInterface<OldFile> {};

TEST_P(BlackBoxOldFileTest, IsCopiedToWhereItBelongs) {
  SetOldFile(GetParam());
  m_blackBox.cleanupOldFiles();
  EXPECT_EQ(File(GetParam().target), "old content");
}

TEST_P(BlackBoxOldFileTest, IsDeleted) {
  SetOldFile(GetParam());
  m_blackBox.cleanupOldFiles();
  EXPECT_FALSE(RealFileExists(GetParam().path));
}

TEST_P(BlackBoxOldFileTest, IsDeletedAlsoWhenTheCopyFailed) {
  SetOldFile(GetParam());
  fake::FailCall("AaFileCopy");
  m_blackBox.cleanupOldFiles();
  EXPECT_FALSE(RealFileExists(GetParam().path));
}

TEST_P(BlackBoxOldFileTest, ThatCannotBeOpenedStays) {
  WriteRealFile(GetParam().path);
  m_blackBox.cleanupOldFiles();
  EXPECT_TRUE(RealFileExists(GetParam().path));
}

TEST_P(BlackBoxOldFileTest, AloneIsTheOnlyOneTakenOver) {
  SetOldFile(GetParam());
  m_blackBox.cleanupOldFiles();
  EXPECT_EQ(fake::Calls("AaFileCopy"), (std::vector{fake::Call("AaFileCopy", GetParam().path, GetParam().target)}));
}

INSTANTIATE_TEST_SUITE_P(Files, BlackBoxOldFileTest, testing::Values(kOldAlarms, kOldTrace));

TEST_F(BlackBoxOldFilesTest, AreTakenOverOneAfterTheOtherEachClosedFirst) {
  SetOldFile(kOldAlarms);
  SetOldFile(kOldTrace);
  m_blackBox.cleanupOldFiles();
  const std::vector<fake::Call> expected = {{"AaFileOpen", kOldAlarms.path, "r"},
                                            {"AaFileClose", kOldAlarms.path},
                                            {"AaFileCopy", kOldAlarms.path, kAlarmsFile},
                                            {"AaFileOpen", kOldTrace.path, "r"},
                                            {"AaFileClose", kOldTrace.path},
                                            {"AaFileCopy", kOldTrace.path, kTraceFile}};
  EXPECT_EQ(FileCalls(), expected);
}

TEST_F(BlackBoxOldFilesTest, NothingIsLogged) {
  SetOldFile(kOldAlarms);
  fake::FailCall("AaFileCopy");
  m_blackBox.cleanupOldFiles();
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

TEST_F(BlackBoxOldFilesTest, WithoutThemNothingIsCopied) {
  m_blackBox.cleanupOldFiles();
  EXPECT_THAT(fake::Calls("AaFileCopy"), IsEmpty());
}

TEST_F(BlackBoxOldFilesTest, NeedNotBeOnTheRealFlash) {
  fake::SetFile(kOldAlarms.path, "old content");
  m_blackBox.cleanupOldFiles();
  EXPECT_EQ(File(kAlarmsFile), "old content");
  EXPECT_THAT(fake::LogLines(), IsEmpty());
}

}  // namespace
}  // namespace ps::hwapi::common::climate
