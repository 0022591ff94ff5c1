/// What may be stored, and under which key.
#include "StoredFiles.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kName = "BlackBoxData::CheckFilesExist() ";

class BlackBoxStoreCheckTest : public StoredFilesTest {
 protected:
  u32 Check(const char* source, const char* target) { return m_blackBox.CheckFilesExist(m_key, source, target); }

  std::string m_key = "before";
};

TEST_F(BlackBoxStoreCheckTest, SaysWhatItWasAsked) {
  Check("/a/b", "c");
  EXPECT_EQ(fake::LogLines().front(), Line(kDebug, kName + "sourceFile='/a/b' targetFile='c' fileToSave='before'"));
}

/// A source that is none, as it is given and as it is shown.
class MissingSourceTest : public BlackBoxStoreCheckTest, public testing::WithParamInterface<const char*> {};

TEST_P(MissingSourceTest, IsRefused) {
  EXPECT_EQ(Check(GetParam(), "key"), 0u);
  EXPECT_THAT(fake::LogLines(), ElementsAre(Line(kDebug, kName + "sourceFile='' targetFile='key' fileToSave='before'"),
                                            Line(kError, kName + "sourceFile not given")));
}

TEST_P(MissingSourceTest, IsNotLookedFor) {
  Check(GetParam(), "key");
  EXPECT_THAT(fake::Calls("AaFileExists"), IsEmpty());
}

TEST_P(MissingSourceTest, IsNotStored) {
  EXPECT_EQ(m_blackBox.copyFile(2, GetParam(), "key"), 0u);
  EXPECT_THAT(fake::Calls({"AaFileCopy", "AaTrblFileRegister", "AaTrblFileUnregister"}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Sources, MissingSourceTest, testing::Values(nullptr, ""));

TEST_F(BlackBoxStoreCheckTest, ASourceThatDoesNotExistIsRefused) {
  EXPECT_EQ(Check("/tmp/none", "key"), 0u);
  EXPECT_EQ(fake::LogLines().back(), Line(kError, kName + "sourceFile not found: '/tmp/none'"));
}

TEST_F(BlackBoxStoreCheckTest, ASourceThatIsADirectoryIsRefused) { EXPECT_EQ(Check("/tmp/results", "key"), 0u); }

TEST_F(BlackBoxStoreCheckTest, ARefusedSourceLeavesTheKey) {
  Check("/tmp/none", "key");
  EXPECT_EQ(m_key, "before");
}

TEST_F(BlackBoxStoreCheckTest, ARefusedStoreTrimsNothing) {
  StoreTimes(3);
  EXPECT_EQ(m_blackBox.copyFile(0, "/tmp/none", kKey.c_str()), 0u);
  EXPECT_EQ(StoredPaths().size(), 3u);
}

TEST_F(BlackBoxStoreCheckTest, AGivenTargetIsTheKeyPathAndAll) {
  EXPECT_EQ(Check(kSource.c_str(), "/x/y_z"), 1u);
  EXPECT_EQ(m_key, "/x/y_z");
}

TEST_F(BlackBoxStoreCheckTest, AGivenTargetIsNotLoggedAgain) {
  Check(kSource.c_str(), "key");
  EXPECT_EQ(fake::LogLines().size(), 1u);
}

/// A target that is none.
class MissingTargetTest : public BlackBoxStoreCheckTest, public testing::WithParamInterface<const char*> {};

TEST_P(MissingTargetTest, LetsTheSourcesNameBeTheKey) {
  EXPECT_EQ(Check(kSource.c_str(), GetParam()), 1u);
  EXPECT_EQ(m_key, "selftest.txt");
  EXPECT_EQ(fake::LogLines().back(), Line(kDebug, kName + "targetFile not given, using 'selftest.txt'"));
}

TEST_P(MissingTargetTest, NeedsASourceWithAPath) {
  fake::SetFile("/plain", "x");
  EXPECT_EQ(Check("plain", GetParam()), 0u);
  EXPECT_EQ(fake::LogLines().back(), Line(kError, kName + "no target given, source does not contain a path."));
}

INSTANTIATE_TEST_SUITE_P(Targets, MissingTargetTest, testing::Values(nullptr, ""));

TEST_F(BlackBoxStoreCheckTest, ASourceInTheRootHasAPath) {
  fake::SetFile("/plain", "x");
  EXPECT_EQ(Check("/plain", ""), 1u);
  EXPECT_EQ(m_key, "plain");
}

TEST_F(BlackBoxStoreCheckTest, ASourceWithoutAPathMayHaveATarget) {
  fake::SetFile("/plain", "x");
  EXPECT_EQ(Check("plain", "key"), 1u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
