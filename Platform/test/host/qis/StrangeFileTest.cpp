// Things that are not files in the folders of the run directory, and files that somebody keeps locked.
#include "AaConfig.h"
#include "AaFile.h"
#include "AaTrbl.h"
#include "LockedFile.h"
#include "Support.h"
#include "TagFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

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

/// A tag whose log a process that has stopped keeps locked.
class KeptLock : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(m_locked.Await());
    std::ifstream(m_board.Folder() + "/pid") >> m_holder;
  }
  unsigned Reports() const {
    return Occurrences(m_log.Text(), m_path + " is kept locked by process " + std::to_string(m_holder) +
                                         ": continue or end that process\n");
  }
  static i32 Set() { return AaConfigTagPublicSet("app.a", "2", 1); }

  const Board m_board;
  const std::string m_path = m_board.Run() + "/tags/app.a";
  const Event m_locked;
  Peer m_stopped{[this] {
    EXPECT_EQ(AaConfigTagPublicSet("app.a", "1", 1), 0);
    const int file = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(::flock(file, LOCK_EX), 0);
    std::ofstream(m_board.Folder() + "/pid") << ::getpid();
    m_locked.Happened();
    ::raise(SIGSTOP);
  }};
  pid_t m_holder = 0;
  const ErrorOutput m_log;
};

TEST_F(KeptLock, OfATagEndsInATimeOutAndIsReportedWithItsHolder) {
  EXPECT_EQ(Set(), ETIMEDOUT);
  EXPECT_EQ(Reports(), 1u) << m_log.Text();
  m_stopped.Kill();
  EXPECT_EQ(Set(), 0);
}

TEST_F(KeptLock, ThatWasWaitedForInVainIsNotWaitedForAgainAtOnce) {
  constexpr int kAttempts = 50;  // with a wait each of them all would take far longer than is generous
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < kAttempts; ++i) EXPECT_EQ(Set(), ETIMEDOUT);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kAttempts * qis::kLockPatience / 2);
  EXPECT_EQ(Reports(), 1u) << m_log.Text();
}

TEST_F(KeptLock, OfOneTagDoesNotKeepAnotherFromBeingSet) {
  EXPECT_EQ(Set(), ETIMEDOUT);
  EXPECT_EQ(AaConfigTagPublicSet("app.b", "2", 1), 0);
}

TEST(KeptLocks, OfOneFileAfterTheOtherInTheSamePlaceEndInATimeOut) {
  const Board board;
  const std::string path = board.Run() + "/tags/app.a";
  const Event locked;
  const Peer stranger([&] {
    const std::string next = board.Run() + "/next";
    std::filesystem::create_directories(board.Run() + "/tags");
    for (int before = -1;;) {
      const int file = ::open(next.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
      EXPECT_EQ(::flock(file, LOCK_EX), 0);
      std::filesystem::rename(next, path);
      locked.Happened();
      ::close(std::exchange(before, file));  // its lock is free, but it has no name any more
      ::usleep(200'000);
    }
  });
  ASSERT_TRUE(locked.Await());
  Peer setter([] { EXPECT_EQ(AaConfigTagPublicSet("app.a", "2", 1), ETIMEDOUT); });
  EXPECT_TRUE(setter.Ended());
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
