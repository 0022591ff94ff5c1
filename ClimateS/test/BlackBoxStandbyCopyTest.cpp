/// The copy of the board file on the file system that does not run.
#include "BlackBoxTest.h"
#include "RadIds.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kStandbyFile = "/ffs/stb/config/lifedata/blackbox";
const std::string kName = "BlackBoxData::CopyFileToNonRunningFS()";

/// A board that runs the active image from the first file system, and has a board file.
class BlackBoxStandbyCopyTest : public BlackBoxTest {
 protected:
  BlackBoxStandbyCopyTest() {
    Init();
    fake::SetFile(kBoardFile, "the board's history");
    fake::MakeDir("/ffs/stb/config/lifedata");
  }

  std::vector<fake::LogLine> LinesOfCopy() {
    m_blackBox.CopyFileToNonRunningFS();
    return fake::LogLines();
  }

  const fake::LogLine m_active = Line(kInfo, kName + " Running Sw: Active");
  const fake::LogLine m_first = Line(kInfo, kName + " Active Filesystem: 53 (0x35)");
};

TEST_F(BlackBoxStandbyCopyTest, TheBoardFileIsCopied) {
  m_blackBox.CopyFileToNonRunningFS();
  EXPECT_EQ(File(kStandbyFile), "the board's history");
}

TEST_F(BlackBoxStandbyCopyTest, ACopyIsLogged) {
  EXPECT_THAT(LinesOfCopy(), ElementsAre(m_active, m_first,
                                         Line(kInfo, kName +
                                                         " Running FS is '/ffs/run/'. Blackbox file copying succeeded "
                                                         "to non-running FS: '" +
                                                         kStandbyFile + "'")));
}

TEST_F(BlackBoxStandbyCopyTest, EverythingIsAskedOnceInOrder) {
  m_blackBox.CopyFileToNonRunningFS();
  EXPECT_THAT(fake::Calls({"ddal_boot_get_linux_id", "ddal_boot_get_linux_active", "ddal_ffs_is_mounted", "AaFileOpen",
                           "AaFileClose", "AaFileCopy"}),
              ElementsAre(fake::Call("ddal_boot_get_linux_id"), fake::Call("ddal_boot_get_linux_active"),
                          fake::Call("ddal_ffs_is_mounted", 54), fake::Call("AaFileOpen", kBoardFile, "r"),
                          fake::Call("AaFileClose", kBoardFile), fake::Call("AaFileCopy", kBoardFile, kStandbyFile)));
}

TEST_F(BlackBoxStandbyCopyTest, WithoutTheRunningImageNothingIsCopied) {
  fake::FailCall("ddal_boot_get_linux_id", 1, -1001);
  EXPECT_THAT(LinesOfCopy(),
              ElementsAre(Line(kError, kName + " Running SW Id reading failed, ddal return code: -1001 (0xfffffc17)")));
  EXPECT_THAT(fake::Calls({"ddal_boot_get_linux_active", "AaFileCopy"}), IsEmpty());
}

TEST_F(BlackBoxStandbyCopyTest, WithoutTheActiveFileSystemNothingIsCopied) {
  fake::FailCall("ddal_boot_get_linux_active", 1, 26);
  EXPECT_THAT(LinesOfCopy(),
              ElementsAre(m_active, Line(kError, kName + " Active SW Id reading failed, ddal return code: 26 (0x1a)")));
  EXPECT_THAT(fake::Calls({"ddal_ffs_is_mounted", "AaFileCopy"}), IsEmpty());
}

/// What the board says, and which file system does not run.
struct Choice {
  u32 runningImage;
  u32 activeFileSystem;
  u32 nonRunning;
};

class NonRunningFileSystemTest : public BlackBoxStandbyCopyTest, public testing::WithParamInterface<Choice> {};

TEST_P(NonRunningFileSystemTest, IsTheOneThatIsChecked) {
  fake::Board().runningImage = GetParam().runningImage;
  fake::Board().activeFileSystem = GetParam().activeFileSystem;
  m_blackBox.CopyFileToNonRunningFS();
  EXPECT_THAT(fake::Calls("ddal_ffs_is_mounted"),
              ElementsAre(fake::Call("ddal_ffs_is_mounted", GetParam().nonRunning)));
}

INSTANTIATE_TEST_SUITE_P(Boards, NonRunningFileSystemTest,
                         testing::Values(Choice{0, 53, 54}, Choice{0, 54, 53}, Choice{1, 53, 53}, Choice{1, 54, 54}));

TEST_F(BlackBoxStandbyCopyTest, ThePassiveImageIsNamed) {
  fake::Board().runningImage = 1;
  fake::Board().activeFileSystem = 54;
  EXPECT_THAT(LinesOfCopy(), ElementsAre(Line(kInfo, kName + " Running Sw: Passive"),
                                         Line(kInfo, kName + " Active Filesystem: 54 (0x36)"),
                                         Line(kInfo, kName +
                                                         " Running FS is '/ffs/run/'. Blackbox file copying "
                                                         "succeeded to non-running FS: '" +
                                                         kStandbyFile + "'")));
}

class InvalidImageTest : public BlackBoxStandbyCopyTest, public testing::WithParamInterface<i32> {};

TEST_P(InvalidImageTest, IsNamedPassiveAndComplainedOfOnceTheActiveFileSystemIsLogged) {
  fake::Board().runningImage = static_cast<u32>(GetParam());
  EXPECT_THAT(LinesOfCopy(),
              ElementsAre(Line(kInfo, kName + " Running Sw: Passive"), m_first,
                          fake::LogLine{kError, ERadHwapi_PrintBlackboxService,
                                        "BlackboxData::CopyFileToNonRunningFS() Invalid running file id " +
                                            std::to_string(GetParam())}));
}

INSTANTIATE_TEST_SUITE_P(Images, InvalidImageTest, testing::Values(2, 53, 0x7FFFFFFF, -1));

TEST_F(BlackBoxStandbyCopyTest, AnInvalidImageIsNotComplainedOfWithoutTheActiveFileSystem) {
  fake::Board().runningImage = 2;
  fake::FailCall("ddal_boot_get_linux_active", 1, -1);
  EXPECT_THAT(LinesOfCopy(), ElementsAre(Line(kInfo, kName + " Running Sw: Passive"),
                                         Line(kError, kName + " Active SW Id reading failed, ddal return code: -1 "
                                                              "(0xffffffff)")));
}

TEST_F(BlackBoxStandbyCopyTest, TheActiveFileSystemIsLoggedSignedAndInHexadecimal) {
  fake::Board().activeFileSystem = 0xFFFFFFFF;
  EXPECT_EQ(LinesOfCopy().at(1), Line(kInfo, kName + " Active Filesystem: -1 (0xffffffff)"));
}

/// What the board says, and what is wrong with it.
struct Nonsense {
  u32 runningImage;
  u32 activeFileSystem;
  const char* problem;
};

class InvalidFileSystemTest : public BlackBoxStandbyCopyTest, public testing::WithParamInterface<Nonsense> {
 protected:
  InvalidFileSystemTest() {
    fake::Board().runningImage = GetParam().runningImage;
    fake::Board().activeFileSystem = GetParam().activeFileSystem;
  }
};

TEST_P(InvalidFileSystemTest, IsAnErrorOfTheBlackBoxService) {
  const fake::LogLine line = {kError, ERadHwapi_PrintBlackboxService,
                              std::string("BlackboxData::CopyFileToNonRunningFS() ") + GetParam().problem};
  EXPECT_EQ(LinesOfCopy().back(), line);
}

TEST_P(InvalidFileSystemTest, EndsTheCopy) {
  m_blackBox.CopyFileToNonRunningFS();
  EXPECT_THAT(fake::Calls({"ddal_ffs_is_mounted", "AaFileOpen", "AaFileCopy"}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Boards, InvalidFileSystemTest,
                         testing::Values(Nonsense{0, 52, "Invalid active file id 52, runningSw 0"},
                                         Nonsense{1, 0, "Invalid active file id 0, runningSw 1"},
                                         Nonsense{0, 55, "Invalid active file id 55, runningSw 0"},
                                         Nonsense{2, 53, "Invalid running file id 2"},
                                         Nonsense{2, 52, "Invalid running file id 2"},
                                         Nonsense{0xFFFFFFFF, 54, "Invalid running file id -1"}));

TEST(PrintFeature, OfTheBlackBoxServiceIsItsOwn) {
  EXPECT_NE(u32{ERadHwapi_PrintBlackboxService}, u32{ERadHwapi_PrintClimateService});
}

TEST_F(BlackBoxStandbyCopyTest, WithoutTheMountStateNothingIsCopied) {
  fake::FailCall("ddal_ffs_is_mounted", 1, -4);
  EXPECT_THAT(LinesOfCopy(),
              ElementsAre(m_active, m_first,
                          Line(kError,
                               "BlackBoxData::CopyFileToNonRunningFS () ddal_ffs_is_mounted failed when checking "
                               "passive filesystem (id=54), ddal status = -4")));
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaFileCopy"}), IsEmpty());
}

class UnwritableFileSystemTest : public BlackBoxStandbyCopyTest, public testing::WithParamInterface<u32> {};

TEST_P(UnwritableFileSystemTest, IsPassedOver) {
  fake::Board().mountStates[54] = GetParam();
  EXPECT_THAT(
      LinesOfCopy(),
      ElementsAre(m_active, m_first,
                  Line(kInfo, kName + " Blackbox file copying not possible because non-running FS (id=54) is not "
                                      "mounted or FS is read only mode")));
  EXPECT_THAT(fake::Calls({"AaFileOpen", "AaFileCopy"}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(MountStates, UnwritableFileSystemTest, testing::Values(0u, 1u));

TEST_F(BlackBoxStandbyCopyTest, AnyOtherMountStateIsWritable) {
  fake::Board().mountStates[54] = 3;
  m_blackBox.CopyFileToNonRunningFS();
  EXPECT_EQ(File(kStandbyFile), "the board's history");
}

TEST_F(BlackBoxStandbyCopyTest, AMissingBoardFileIsAnError) {
  fake::RemoveAll(kBoardFile);
  EXPECT_THAT(LinesOfCopy(),
              ElementsAre(m_active, m_first, Line(kError, kName + " " + kBoardFile + " file does not exists")));
  EXPECT_THAT(fake::Calls("AaFileCopy"), IsEmpty());
}

TEST_F(BlackBoxStandbyCopyTest, AFailedCopyIsAnError) {
  fake::FailCall("AaFileCopy");
  EXPECT_THAT(LinesOfCopy(),
              ElementsAre(m_active, m_first, Line(kError, kName + " Blackbox file copying is not possible")));
}

TEST_F(BlackBoxStandbyCopyTest, AFailedCopyLeavesTheOlderOne) {
  fake::SetFile(kStandbyFile, "older");
  fake::FailCall("AaFileCopy");
  m_blackBox.CopyFileToNonRunningFS();
  EXPECT_EQ(File(kStandbyFile), "older");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
