// Who may read a copy, and what may be copied.
#include "AaFile.h"
#include "CopyRights.h"
#include "PrivateRoot.h"
#include "Support.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace hwapi::test {
namespace {

constexpr uid_t kOwner = 1000;
constexpr gid_t kGroup = 2000;
constexpr gid_t kOtherGroup = 2001;

struct stat Source(mode_t mode) {
  struct stat source {};
  source.st_mode = S_IFREG | mode;
  source.st_uid = kOwner;
  source.st_gid = kGroup;
  return source;
}

TEST(CopyRights, AreNeverWiderThanTheSources) {
  EXPECT_EQ(qis::ModeOfCopy(Source(0600), 0644, kGroup), 0600u);
  EXPECT_EQ(qis::ModeOfCopy(Source(0640), 0644, kGroup), 0640u);
  EXPECT_EQ(qis::ModeOfCopy(Source(0644), 0644, kGroup), 0644u);
  EXPECT_EQ(qis::ModeOfCopy(Source(0666), 0644, kGroup), 0644u);
}

TEST(CopyRights, AreNeverWiderThanTheWantedOnes) {
  EXPECT_EQ(qis::ModeOfCopy(Source(0644), 0600, kGroup), 0600u);
  EXPECT_EQ(qis::ModeOfCopy(Source(0644), 0640, kGroup), 0640u);
}

TEST(CopyRights, OfAnotherGroupAreThoseOfEverybody) {
  EXPECT_EQ(qis::ModeOfCopy(Source(0640), 0644, kOtherGroup), 0600u);
  EXPECT_EQ(qis::ModeOfCopy(Source(0644), 0644, kOtherGroup), 0644u);
}

TEST(CopyRights, ThatTheSourcesGroupHasNotAreNotOthersElsewhere) {
  EXPECT_EQ(qis::ModeOfCopy(Source(0604), 0644, kGroup), 0604u);
  EXPECT_EQ(qis::ModeOfCopy(Source(0604), 0644, kOtherGroup), 0600u) << "others include the source's group there";
}

TEST(CopyRights, GoWithWritingAndRunning) {
  EXPECT_EQ(qis::ModeOfCopy(Source(0600), 0777, kGroup), 0700u);
  EXPECT_EQ(qis::ModeOfCopy(Source(0644), 04755, kGroup), 0755u);
}

TEST(CopyRights, OwnerIsOnlyWhoMayReadTheSource) {
  EXPECT_TRUE(qis::MayOwnCopy(Source(0600), kOwner));
  EXPECT_TRUE(qis::MayOwnCopy(Source(0600), 0));
  EXPECT_TRUE(qis::MayOwnCopy(Source(0644), kOwner + 1));
  EXPECT_FALSE(qis::MayOwnCopy(Source(0640), kOwner + 1));
  EXPECT_FALSE(qis::MayOwnCopy(Source(0604), kOwner + 1));
}

class Copy : public ::testing::Test {
 protected:
  explicit Copy(const std::string& access = "") : m_board(access) { std::filesystem::create_directory(Path("")); }

  std::string Path(const std::string& name) const { return m_board.Folder() + "/files/" + name; }
  void Put(const std::string& name, mode_t mode, const std::string& content = "content") const {
    std::ofstream(Path(name)) << content;
    EXPECT_EQ(::chmod(Path(name).c_str(), mode), 0);
  }
  i32 Make(const std::string& source, const std::string& target) const {
    return AaFileCopy(Path(source).c_str(), Path(target).c_str());
  }
  mode_t ModeOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(Path(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }
  std::string Content(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(Path(name)).rdbuf();
    return text.str();
  }

  const Board m_board;
  const ErrorOutput m_log;
};

TEST_F(Copy, OfAPrivateFileIsPrivate) {
  Put("source", 0600);
  ASSERT_EQ(Make("source", "target"), 0);
  EXPECT_EQ(ModeOf("target"), 0600u);
}

TEST_F(Copy, OfAPublicFileIsPublic) {
  Put("source", 0666);
  ASSERT_EQ(Make("source", "target"), 0);
  EXPECT_EQ(ModeOf("target"), 0644u);
}

TEST_F(Copy, OfAPrivateFileDoesNotKeepTheModeOfAPublicOne) {
  Put("source", 0600);
  Put("target", 0664, "old");
  ASSERT_EQ(Make("source", "target"), 0);
  EXPECT_EQ(ModeOf("target"), 0600u);
  EXPECT_EQ(Content("target"), "content");
}

TEST_F(Copy, OfAPublicFileKeepsTheModeOfAPrivateOne) {
  Put("source", 0644);
  Put("target", 0600, "old");
  ASSERT_EQ(Make("source", "target"), 0);
  EXPECT_EQ(ModeOf("target"), 0600u);
}

TEST_F(Copy, OfAPrivateFileIsNotGivenToWhomeverHadTheTarget) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root gives files away";
  }
  Put("source", 0600);
  Put("target", 0644, "old");
  ASSERT_EQ(::chown(Path("target").c_str(), kOwner, kGroup), 0);
  ASSERT_EQ(Make("source", "target"), 0);
  struct stat status {};
  ASSERT_EQ(::stat(Path("target").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 0u);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

/// A board that names the folder "files/open".
class LimitedCopy : public Copy {
 protected:
  LimitedCopy() {
    std::filesystem::create_directories(Path("open/below"));
    std::filesystem::create_directories(Path("openly"));
    std::ofstream(m_board.Folder() + "/board.toml", std::ios::app)
        << "[access]\nstore = [\"" << Path("open") << "\"]\n";
    Put("secret", 0644);
  }
};

TEST_F(LimitedCopy, OfAFileBelowANamedFolderIsMade) {
  Put("open/below/source", 0644);
  EXPECT_EQ(Make("open/below/source", "target"), 0);
}

TEST_F(LimitedCopy, OfAFileElsewhereIsRefusedWithTheKey) {
  Put("target", 0644, "old");
  EXPECT_EQ(Make("secret", "target"), EACCES);
  EXPECT_EQ(Content("target"), "old");
  EXPECT_EQ(Occurrences(m_log.Text(), "File " + Path("secret") + " is not copied to " + Path("target") +
                                          ", what was there stays: it is " + Path("secret") +
                                          ", which is in none of the folders that access.store of " + m_board.Folder() +
                                          "/board.toml names\n"),
            1u)
      << m_log.Text();
}

TEST_F(LimitedCopy, OfAFolderWhoseNameOnlyBeginsLikeIsRefused) {
  Put("openly/source", 0644);
  EXPECT_EQ(Make("openly/source", "target"), EACCES);
}

TEST_F(LimitedCopy, IsJudgedByTheFileBehindALink) {
  std::filesystem::create_symlink(Path("secret"), Path("open/link"));
  EXPECT_EQ(Make("open/link", "target"), EACCES);
  EXPECT_EQ(Make("open/../secret", "target"), EACCES);
  Put("open/source", 0644);
  std::filesystem::create_symlink(Path("open/source"), Path("link"));
  EXPECT_EQ(Make("link", "target"), 0);
}

using LimitedCopyOnABoard = ps::hwapi::common::climate::InPrivateRoot<LimitedCopy>;

TEST_F(LimitedCopyOnABoard, OfTheBlackBoxesOwnFilesIsMade) {
  ps::hwapi::common::climate::WriteRealFile("/ffs/run/own", "content");
  EXPECT_EQ(AaFileCopy("/ffs/run/own", "/ffs/run/copy"), 0);
  EXPECT_EQ(AaFileCopy(Path("secret").c_str(), "/ffs/run/copy"), EACCES);
}

TEST_F(LimitedCopy, FromAFolderThatIsNamedByALinkIsMade) {
  std::filesystem::rename(Path("open"), Path("elsewhere"));
  std::filesystem::create_symlink(Path("elsewhere"), Path("open"));
  Put("elsewhere/source", 0644);
  EXPECT_EQ(Make("open/source", "target"), 0);
}

}  // namespace
}  // namespace hwapi::test
