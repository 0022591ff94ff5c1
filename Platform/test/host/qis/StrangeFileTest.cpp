// Things that are not files in the folders of the run directory, and files that somebody keeps locked.
#include "AaConfig.h"
#include "AaFile.h"
#include "AaTrbl.h"
#include "Support.h"
#include "TagFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

namespace hwapi::test {
namespace {

void Ignore(const char*, const void*, u32) {}

class StrangeFile : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return m_board.Run() + "/" + name; }
  void MakeFifo(const std::string& name) const {
    std::filesystem::create_directories(std::filesystem::path(Path(name)).parent_path());
    ASSERT_EQ(::mkfifo(Path(name).c_str(), 0666), 0);
  }
  /// @return how often it was reported what has this name
  unsigned Reported(const std::string& name, const std::string& what) const {
    return Occurrences(m_log.Text(), Path(name) + " is " + what + ": remove it\n");
  }
  static i32 Set(const std::string& value) {
    return AaConfigTagPublicSet("app.a", value.data(), static_cast<u32>(value.size()));
  }
  static i32 Get() {
    void* value = nullptr;
    const i32 error = AaConfigTagGet("app.a", &value);
    AaMemUnRefDbg(value, __FILE__, __LINE__);
    return error;
  }

  const Board m_board;
  const ErrorOutput m_log;
};

TEST_F(StrangeFile, PipeInTheTagsPlaceIsNotWaitedForAndReportedOnce) {
  MakeFifo("tags/app.a");
  EXPECT_EQ(Get(), ENOENT);
  EXPECT_EQ(Set("1"), EINVAL);
  EXPECT_EQ(AaConfigTagRegister("app.a", &Ignore), 0);
  EXPECT_EQ(Get(), ENOENT);
  EXPECT_EQ(Reported("tags/app.a", "a FIFO, not a file"), 1u) << m_log.Text();
}

TEST_F(StrangeFile, TagWorksAgainWhenTheThingInItsPlaceIsRemoved) {
  MakeFifo("tags/app.a");
  EXPECT_EQ(Set("1"), EINVAL);
  std::filesystem::remove(Path("tags/app.a"));
  EXPECT_EQ(Set("1"), 0);
  EXPECT_EQ(Get(), 0);
}

TEST_F(StrangeFile, FolderInTheTagsPlaceIsReported) {
  std::filesystem::create_directories(Path("tags/app.a"));
  EXPECT_EQ(Set("1"), EISDIR);
  EXPECT_EQ(Get(), ENOENT);
  EXPECT_EQ(Reported("tags/app.a", "a folder, not a file"), 1u) << m_log.Text();
}

TEST_F(StrangeFile, LinkToNothingInTheTagsPlaceIsReported) {
  std::filesystem::create_directories(Path("tags"));
  std::filesystem::create_symlink("/nothing", Path("tags/app.a"));
  EXPECT_EQ(Set("1"), EINVAL);
  EXPECT_EQ(Get(), ENOENT);
  EXPECT_EQ(Reported("tags/app.a", "a symbolic link, not a file"), 1u) << m_log.Text();
}

TEST_F(StrangeFile, PipeInThePlaceOfTheTagsIsReported) {
  MakeFifo("tags");
  EXPECT_EQ(Set("1"), ENOTDIR);
  EXPECT_EQ(Reported("tags", "a FIFO, not a folder"), 1u) << m_log.Text();
}

/// Sets the tag so often that its log is to be replaced.
i32 SetOften() {
  const std::string value(AACONFIG_TAG_MAX_SIZE, 'x');
  i32 error = 0;
  for (u32 i = 0; i < 2 * qis::kLongTagLog / AACONFIG_TAG_MAX_SIZE && error == 0; ++i) {
    error = AaConfigTagPublicSet("app.a", value.data(), AACONFIG_TAG_MAX_SIZE);
  }
  return error;
}

TEST_F(StrangeFile, FolderInThePlaceOfTheOldLogIsReportedAndTheTagGoesOn) {
  std::filesystem::create_directories(Path("tags.old/app.a/x"));
  EXPECT_EQ(SetOften(), 0);
  EXPECT_EQ(Reported("tags.old/app.a", "a folder, not a file"), 1u) << m_log.Text();
}

TEST_F(StrangeFile, PipeInThePlaceOfTheNewLogIsReportedAndTheTagGoesOn) {
  MakeFifo("tags.new/app.a");
  EXPECT_EQ(SetOften(), 0);
  EXPECT_EQ(Reported("tags.new/app.a", "a FIFO, not a file"), 1u) << m_log.Text();
}

TEST_F(StrangeFile, PipeInThePlaceOfATasksLockIsReported) {
  MakeFifo("com/0102-04AD.lock");
  EXPECT_EQ(Serve(kServer), 0u);
  EXPECT_EQ(Reported("com/0102-04AD.lock", "a FIFO, not a file"), 1u) << m_log.Text();
}

TEST_F(StrangeFile, InThePlaceOfACollectionsLockOrSocketLeavesTheNextOne) {
  MakeFifo("trbl/1.lock");
  std::filesystem::create_directories(Path("trbl/2"));
  std::filesystem::create_symlink("/nothing", Path("trbl/3.lock"));
  EXPECT_EQ(AaTrblFileRegister("file", "/nowhere", EAaTrblFilePriority_Low, 0, nullptr, nullptr, nullptr, nullptr),
            EAaTrblRet_Ok);
  EXPECT_TRUE(std::filesystem::is_socket(Path("trbl/4")));
  EXPECT_EQ(Reported("trbl/1.lock", "a FIFO, not a file"), 1u) << m_log.Text();
}

TEST(KeptLock, OfATagEndsInATimeOutAndIsReportedWithItsHolder) {
  const Board board;
  const std::string path = board.Run() + "/tags/app.a";
  const Event locked;
  Peer stopped([&] {
    EXPECT_EQ(AaConfigTagPublicSet("app.a", "1", 1), 0);
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(::flock(file, LOCK_EX), 0);
    std::ofstream(board.Folder() + "/pid") << ::getpid();
    locked.Happened();
    ::raise(SIGSTOP);
  });
  ASSERT_TRUE(locked.Await());
  pid_t holder = 0;
  std::ifstream(board.Folder() + "/pid") >> holder;
  const ErrorOutput log;
  EXPECT_EQ(AaConfigTagPublicSet("app.a", "2", 1), ETIMEDOUT);
  EXPECT_EQ(Occurrences(log.Text(), path + " is kept locked by process " + std::to_string(holder) +
                                        ": continue or end that process\n"),
            1u)
      << log.Text();
  stopped.Kill();
  EXPECT_EQ(AaConfigTagPublicSet("app.a", "2", 1), 0);
}

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

TEST(MadeFolder, HasTheModeOfTheRunDirectoryWhateverTheUmask) {
  for (const mode_t umask : {0u, 077u}) {
    const Board board;
    ASSERT_EQ(::chmod(board.Run().c_str(), 02770), 0);
    Peer process([&] {
      ::umask(umask);
      EXPECT_EQ(AaConfigTagPublicSet("app.a", "1", 1), 0);
    });
    EXPECT_TRUE(process.Ended());
    EXPECT_EQ(ModeOf(board.Run() + "/tags"), 02770u);
    EXPECT_EQ(ModeOf(board.Run() + "/tags/app.a"), 0660u);
  }
}

TEST(MadeFolder, OfAFilesPathIsOnlyItsOwnersToWrite) {
  const Board board;
  Peer process([&] {
    ::umask(0);
    EXPECT_EQ(AaFileCreateDir((board.Folder() + "/a/b").c_str()), 0);
  });
  EXPECT_TRUE(process.Ended());
  EXPECT_EQ(ModeOf(board.Folder() + "/a"), 0755u);
  EXPECT_EQ(ModeOf(board.Folder() + "/a/b"), 0755u);
}

}  // namespace
}  // namespace hwapi::test
