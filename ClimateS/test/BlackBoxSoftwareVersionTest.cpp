/// The software builds of both file systems.
#include "BlackBoxTest.h"
#include "PrivateRoot.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <iterator>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A board that runs from the first file system, both of them empty.
class BlackBoxSoftwareVersionTest : public InPrivateRoot<BlackBoxTest> {
 protected:
  void SetUp() override {
    InPrivateRoot::SetUp();
    if (IsSkipped()) return;
    MakeRealDir("/ffs/fs1");
    MakeRealDir("/ffs/fs2");
  }

  void Ask() { m_blackBox.getBtsSoftwareVersion(m_active, m_passive); }

  /// @return the active build when a file system holds one entry
  std::string BuildOf(const std::string& name) {
    WriteRealFile("/ffs/fs1/" + name);
    Ask();
    return m_active;
  }

  std::string m_active = "left over";
  std::string m_passive = "left over";
};

TEST_F(BlackBoxSoftwareVersionTest, IsTheNameOfTheBuildDescriptor) {
  EXPECT_EQ(BuildOf("TargetBD_R1_2.3.xml"), "R1_2.3");
}

TEST_F(BlackBoxSoftwareVersionTest, OfTheOtherFileSystemIsThePassiveOne) {
  WriteRealFile("/ffs/fs2/TargetBD_R1_2.2.xml");
  Ask();
  EXPECT_EQ(m_passive, "R1_2.2");
  EXPECT_EQ(m_active, "");
}

class SecondFileSystemTest : public BlackBoxSoftwareVersionTest, public testing::WithParamInterface<u32> {};

TEST_P(SecondFileSystemTest, IsActiveUnlessTheFirstOneIs) {
  WriteRealFile("/ffs/fs1/TargetBD_first.xml");
  WriteRealFile("/ffs/fs2/TargetBD_second.xml");
  fake::Board().activeFileSystem = GetParam();
  Ask();
  EXPECT_EQ(m_active, "second");
  EXPECT_EQ(m_passive, "first");
}

INSTANTIATE_TEST_SUITE_P(ActiveFileSystem, SecondFileSystemTest, testing::Values(54u, 0u, 52u));

TEST_F(BlackBoxSoftwareVersionTest, WithoutXmlGoesToTheEndOfTheName) {
  EXPECT_EQ(BuildOf("TargetBD_R1.zip"), "R1.zip");
}

TEST_F(BlackBoxSoftwareVersionTest, EndsBeforeTheFirstXml) { EXPECT_EQ(BuildOf("TargetBD_R1.xml.old.xml"), "R1"); }

TEST_F(BlackBoxSoftwareVersionTest, BeginsBehindThePrefixWhereverThatIs) {
  EXPECT_EQ(BuildOf("copy_of_TargetBD_R1.xml"), "R1");
}

TEST_F(BlackBoxSoftwareVersionTest, BeginsBehindTheFirstPrefix) {
  EXPECT_EQ(BuildOf("TargetBD_TargetBD_R1.xml"), "TargetBD_R1");
}

TEST_F(BlackBoxSoftwareVersionTest, OfADescriptorWithoutAnUnderscoreIsUnknown) {
  EXPECT_EQ(BuildOf("TargetBD-R1.xml"), "");
}

TEST_F(BlackBoxSoftwareVersionTest, IsToldByTheFirstDescriptorOnly) {
  const auto first = [] { return std::filesystem::directory_iterator("/ffs/fs1")->path().filename(); };
  WriteRealFile("/ffs/fs1/TargetBD_R1.xml");
  WriteRealFile("/ffs/fs1/TargetBD.xml");
  if (first() != "TargetBD.xml") {  // directories of this kernel list the oldest entry first
    std::filesystem::remove("/ffs/fs1/TargetBD_R1.xml");
    WriteRealFile("/ffs/fs1/TargetBD_R1.xml");
  }
  ASSERT_EQ(first(), "TargetBD.xml");
  Ask();
  EXPECT_EQ(m_active, "");
}

TEST_F(BlackBoxSoftwareVersionTest, MayBeEmptyInTheName) { EXPECT_EQ(BuildOf("TargetBD_.xml"), ""); }

TEST_F(BlackBoxSoftwareVersionTest, IsFoundAmongOtherFiles) {
  for (const char* name : {"Target_BD_R0.xml", "targetbd_R0.xml", "a.xml", "zImage", "rootfs"}) {
    WriteRealFile(std::string("/ffs/fs1/") + name);
  }
  EXPECT_EQ(BuildOf("TargetBD_R1.xml"), "R1");
}

TEST_F(BlackBoxSoftwareVersionTest, OfADirectoryWithoutADescriptorIsUnknown) { EXPECT_EQ(BuildOf("other.xml"), ""); }

TEST_F(BlackBoxSoftwareVersionTest, OfAMissingDirectoryIsUnknown) {
  std::filesystem::remove("/ffs/fs1");
  Ask();
  EXPECT_EQ(m_active, "");
}

TEST_F(BlackBoxSoftwareVersionTest, OfTheOtherFileSystemIsFoundAlsoWhenOneIsMissing) {
  std::filesystem::remove("/ffs/fs1");
  WriteRealFile("/ffs/fs2/TargetBD_R2.xml");
  Ask();
  EXPECT_EQ(m_passive, "R2");
}

TEST_F(BlackBoxSoftwareVersionTest, BothAreLogged) {
  WriteRealFile("/ffs/fs1/TargetBD_R1.xml");
  Ask();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, "GetBtsSoftwareVersion: active SW build: R1"),
                                            Line(kDebug, "GetBtsSoftwareVersion: passive SW build: ")));
}

TEST_F(BlackBoxSoftwareVersionTest, WithoutTheActiveFileSystemIsAnError) {
  WriteRealFile("/ffs/fs1/TargetBD_R1.xml");
  fake::FailCall("ddal_boot_get_linux_active", 1, -1);
  Ask();
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kError, "GetBtsSoftwareVersion: ddal_boot_get_linux_active failed")));
}

TEST_F(BlackBoxSoftwareVersionTest, WithoutTheActiveFileSystemBothAreUnknown) {
  WriteRealFile("/ffs/fs1/TargetBD_R1.xml");
  fake::FailCall("ddal_boot_get_linux_active");
  Ask();
  EXPECT_THAT(m_active, IsEmpty());
  EXPECT_THAT(m_passive, IsEmpty());
}

TEST_F(BlackBoxSoftwareVersionTest, LeavesNoDirectoryOpen) {
  const auto openFiles = [] {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
  };
  BuildOf("TargetBD_R1.xml");
  const auto before = openFiles();
  for (int i = 0; i < 10; ++i) Ask();
  EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
