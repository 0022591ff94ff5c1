/// Copies of files that others hand over: how they are named, stored, registered and trimmed.
#include "BlackBoxTest.h"
#include "StoredFiles.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BlackBoxStoredFilesTest : public StoredFilesTest {};

TEST_F(BlackBoxStoredFilesTest, ACopyBearsTheTimeAndTheKey) {
  EXPECT_EQ(Store(2), 1u);
  EXPECT_EQ(File("/ffs/run/config/lifedata/blackbox_20160307140509_selftest.txt"), "result 1");
}

TEST_F(BlackBoxStoredFilesTest, ACopyIsRegisteredUnderItsNameWithoutThePath) {
  Store(2);
  EXPECT_THAT(fake::Calls("AaTrblFileRegister"),
              ElementsAre(fake::Call("AaTrblFileRegister", Name(1), Path(1), EAaTrblFilePriority_Low, 0)));
}

TEST_F(BlackBoxStoredFilesTest, ACopyWhoseKeyHasASlashIsRegisteredUnderWhatStandsBehindIt) {
  const std::string folder = kLifedata + "blackbox_20160307140509_logs";
  fake::MakeDir(folder);
  EXPECT_EQ(m_blackBox.copyFile(2, kSource.c_str(), "logs/run 1"), 1u);
  EXPECT_THAT(fake::Calls("AaTrblFileRegister"),
              ElementsAre(fake::Call("AaTrblFileRegister", "run 1", folder + "/run 1", EAaTrblFilePriority_Low, 0)));
}

TEST_F(BlackBoxStoredFilesTest, ACopyIsRegisteredWithTheCallbacksOfTheBlackBox) {
  Store(2);
  const fake::TrblFile file = fake::TrblFiles().back();
  EXPECT_EQ(file.prepare, techlogPrepareFileCb);
  EXPECT_EQ(file.store, techlogStoreFileCb);
  EXPECT_EQ(file.remove, techlogDeleteFileCb);
  EXPECT_EQ(file.context, nullptr);
}

TEST_F(BlackBoxStoredFilesTest, AStoreIsLogged) {
  Store(2);
  EXPECT_THAT(
      fake::LogLines(),
      ElementsAre(
          Line(kDebug, "BlackBoxData::CheckFilesExist() sourceFile='" + kSource + "' targetFile='' fileToSave=''"),
          Line(kDebug, "BlackBoxData::CheckFilesExist() targetFile not given, using 'selftest.txt'"),
          Line(kDebug, "BlackBoxData::copyFile() fileToSave 'selftest.txt"),
          Line(kDebug, "BlackboxData::calculateAndRemovePreviousFiles(): There are 0 files with key 'selftest.txt'"),
          Line(kDebug,
               "BlackboxData::calculateAndRemovePreviousFiles(): There are 0 files with key selftest.txt after remove"),
          Line(kInfo, "BlackboxData::addStoredFile(): file copying from '" + kSource + "' to '" + Path(1) + "' done!"),
          Line(kInfo, "BlackboxData::addStoredFile(): file '" + Name(1) + "' registered")));
}

TEST_F(BlackBoxStoredFilesTest, AGivenTargetIsTheKey) {
  EXPECT_EQ(m_blackBox.copyFile(2, kSource.c_str(), "a_b"), 1u);
  EXPECT_EQ(File(kLifedata + "blackbox_20160307140509_a_b"), "result 1");
}

/// How many older copies may stay, and how many there are after five stores.
struct Trimming {
  u32 maxFiles;
  std::size_t left;
};

class TrimmingTest : public BlackBoxStoredFilesTest, public testing::WithParamInterface<Trimming> {};

TEST_P(TrimmingTest, LeavesTheNewestCopies) {
  std::vector<std::string> newest;
  for (unsigned i = 1; i <= 5; ++i) {
    EXPECT_EQ(Store(GetParam().maxFiles), 1u);
    if (i > 5 - GetParam().left) newest.push_back(Path(i));
    fake::AdvanceTime(1'000'000);
  }
  EXPECT_EQ(StoredPaths(), newest);
}

INSTANTIATE_TEST_SUITE_P(Counts, TrimmingTest,
                         testing::Values(Trimming{0, 1}, Trimming{1, 2}, Trimming{2, 3}, Trimming{3, 3}, Trimming{7, 3},
                                         Trimming{0xFFFFFFFF, 3}));

TEST_F(BlackBoxStoredFilesTest, TheFourthStoreRemovesTheOldestCopyFirst) {
  StoreTimes(3);
  Store(2);
  EXPECT_TRUE(fake::CalledInOrder({{"AaTrblFileUnregister", Name(1)},
                                   {"AaFileRemove", Path(1)},
                                   {"AaFileCopy", kSource, Path(4)},
                                   {"AaTrblFileRegister", Name(4), Path(4)}}));
}

TEST_F(BlackBoxStoredFilesTest, ARemovedCopyIsNoLongerRegistered) {
  StoreTimes(3);
  Store(0);
  EXPECT_THAT(StoredNames(), ElementsAre(Name(4)));
}

TEST_F(BlackBoxStoredFilesTest, TrimmingIsLogged) {
  StoreTimes(2);
  m_blackBox.calculateAndRemovePreviousFiles(1, kKey);
  const std::string operation = "BlackboxData::calculateAndRemovePreviousFiles(): ";
  EXPECT_THAT(fake::LogLines(),
              ElementsAre(Line(kDebug, operation + "There are 2 files with key 'selftest.txt'"),
                          Line(kDebug, operation + "The file will be removed '" + Path(1) + "'"),
                          Line(kInfo, "BlackboxData::removeStoredFile(): file: '" + Path(1) + "' removed!"),
                          Line(kDebug, operation + "There are 1 files with key selftest.txt after remove")));
}

TEST_F(BlackBoxStoredFilesTest, TrimmingLeavesOtherKeysAlone) {
  StoreTimes(1);
  m_blackBox.copyFile(0, kSource.c_str(), "selftest");
  m_blackBox.copyFile(0, kSource.c_str(), "selftest.txt.old");
  EXPECT_EQ(StoredPaths().size(), 3u);
}

TEST_F(BlackBoxStoredFilesTest, TrimmingWithoutCopiesRemovesNothing) {
  m_blackBox.calculateAndRemovePreviousFiles(0, kKey);
  EXPECT_THAT(fake::Calls({"AaTrblFileUnregister", "AaFileRemove"}), IsEmpty());
}

TEST_F(BlackBoxStoredFilesTest, ASecondCopyInTheSameSecondIsNotRegisteredTwice) {
  Store(2);
  EXPECT_EQ(Store(2), 0u);
  EXPECT_THAT(StoredPaths(), ElementsAre(Path(1)));
}

TEST_F(BlackBoxStoredFilesTest, AFailedCopyIsAnError) {
  fake::FailCall("AaFileCopy");
  EXPECT_EQ(Store(2), 0u);
  EXPECT_EQ(fake::LogLines().back(),
            Line(kError, "BlackboxData::addStoredFile(): failed to copy '" + kSource + "' to '" + Path(1) + "'"));
}

TEST_F(BlackBoxStoredFilesTest, AFailedCopyIsNeitherRegisteredNorKept) {
  fake::FailCall("AaFileCopy");
  Store(2);
  EXPECT_THAT(fake::Calls("AaTrblFileRegister"), IsEmpty());
  EXPECT_FALSE(m_blackBox.isStoredFile(Name(1)));
}

TEST_F(BlackBoxStoredFilesTest, AFailedRegistrationIsAnError) {
  fake::FailCall("AaTrblFileRegister", 1, 5);
  EXPECT_EQ(Store(2), 0u);
  EXPECT_EQ(fake::LogLines().back(),
            Line(kError, "BlackBoxData::addStoredFile(): Failed to register file '" + Name(1) + "' to AaTrbl, ret=5"));
}

TEST_F(BlackBoxStoredFilesTest, AnUnregisteredCopyStaysOnDiskAndIsNotKept) {
  fake::FailCall("AaTrblFileRegister");
  Store(2);
  EXPECT_EQ(File(Path(1)), "result 1");
  EXPECT_FALSE(m_blackBox.isStoredFile(Name(1)));
}

TEST_F(BlackBoxStoredFilesTest, TheTimeIsOfFourteenDigits) {
  EXPECT_EQ(m_blackBox.createTimeStamp(), "20160307140509");
}

TEST_F(BlackBoxStoredFilesTest, WithoutAClockTheTimeIsOfZeros) {
  fake::FailCall("AaUtcTimeGet");
  EXPECT_EQ(m_blackBox.createTimeStamp(), "00000000000000");
}

TEST_F(BlackBoxStoredFilesTest, TheTimeIsUtc) {
  fake::SetLocalOffset(120);
  EXPECT_EQ(m_blackBox.createTimeStamp(), "20160307140509");
}

/// Removing a stored copy.
class RemoveStoredFileTest : public StoredFilesTest {
 protected:
  RemoveStoredFileTest() { StoreTimes(1); }

  std::vector<fake::LogLine> LinesOfRemoval() {
    m_blackBox.removeStoredFile(Path(1));
    return fake::LogLines();
  }
};

TEST_F(RemoveStoredFileTest, TakesTheRegistrationAwayThenTheFile) {
  m_blackBox.removeStoredFile(Path(1));
  EXPECT_THAT(fake::Calls({"AaTrblFileUnregister", "AaFileExists", "AaFileRemove"}),
              ElementsAre(fake::Call("AaTrblFileUnregister", Name(1)), fake::Call("AaFileExists", Path(1)),
                          fake::Call("AaFileRemove", Path(1))));
  EXPECT_THAT(StoredPaths(), IsEmpty());
}

TEST_F(RemoveStoredFileTest, IsLogged) {
  EXPECT_THAT(LinesOfRemoval(),
              ElementsAre(Line(kInfo, "BlackboxData::removeStoredFile(): file: '" + Path(1) + "' removed!")));
}

TEST_F(RemoveStoredFileTest, WhoseRegistrationStaysLeavesTheFile) {
  fake::FailCall("AaTrblFileUnregister", 1, 9);
  EXPECT_THAT(LinesOfRemoval(),
              ElementsAre(Line(kError, "BlackBoxData::removeStoredFile(): Failed to unregister file '" + Name(1) +
                                           "' from AaTrbl, ret=9")));
  EXPECT_EQ(File(Path(1)), "result 1");
}

TEST_F(RemoveStoredFileTest, ThatIsGoneIsLogged) {
  fake::RemoveAll(Path(1));
  EXPECT_THAT(LinesOfRemoval(),
              ElementsAre(Line(kInfo, "BlackboxData::removeStoredFile(): file not exists '" + Path(1) + "'")));
  EXPECT_THAT(fake::Calls("AaFileRemove"), IsEmpty());
}

TEST_F(RemoveStoredFileTest, ThatFailsIsLogged) {
  fake::FailCall("AaFileRemove", 1, 30);
  EXPECT_THAT(LinesOfRemoval(),
              ElementsAre(Line(kInfo, "BlackboxData::removeStoredFile(): failed to remove '" + Path(1) + "' ret=30")));
}

/// A removal within trimming that fails at one of its calls.
class FailedTrimmingTest : public RemoveStoredFileTest, public testing::WithParamInterface<const char*> {};

TEST_P(FailedTrimmingTest, ForgetsTheEntryWhateverHappened) {
  fake::FailCall(GetParam());
  m_blackBox.calculateAndRemovePreviousFiles(0, kKey);
  EXPECT_FALSE(m_blackBox.isStoredFile(Name(1)));
}

TEST_P(FailedTrimmingTest, LeavesAFileThatTheNextStartFindsAgain) {
  fake::FailCall(GetParam());
  m_blackBox.calculateAndRemovePreviousFiles(0, kKey);
  BlackBoxData next;
  next.registerSelfTestFiles();
  EXPECT_TRUE(next.isStoredFile(Name(1)));
}

INSTANTIATE_TEST_SUITE_P(Calls, FailedTrimmingTest, testing::Values("AaTrblFileUnregister", "AaFileRemove"));

/// A path, and what stands behind its last "/".
struct PathName {
  const char* path;
  const char* name;
};

class BasenameTest : public testing::TestWithParam<PathName> {};

TEST_P(BasenameTest, IsTheTextBehindTheLastSlash) {
  EXPECT_EQ(BlackBoxData::basename(GetParam().path), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Paths, BasenameTest,
                         testing::Values(PathName{"/ffs/run/a.txt", "a.txt"}, PathName{"a/b", "b"},
                                         PathName{"a.txt", "a.txt"}, PathName{"/a", "a"}, PathName{"/a/", ""},
                                         PathName{"", ""}));

}  // namespace
}  // namespace ps::hwapi::common::climate
