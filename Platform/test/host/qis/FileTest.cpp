// Files that are replaced whole or not at all.
#include "AaFile.h"
#include "Support.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace hwapi::test {
namespace {

class File : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return m_folder + "/" + name; }
  std::string Content(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(Path(name)).rdbuf();
    return text.str();
  }
  void Put(const std::string& name, const std::string& content) const { std::ofstream(Path(name)) << content; }
  TAaFile* Begin(const std::string& name, const std::string& content) const {
    TAaFile* const file = AaFileOpen(Path(name).c_str(), "w");
    if (file != nullptr) {
      AaFileWrite(content.data(), 1, static_cast<u32>(content.size()), file);
    }
    return file;
  }
  i32 Replace(const std::string& name, const std::string& content) const { return AaFileClose(Begin(name, content)); }
  /// Names in the folder as the kernel has them.
  std::vector<std::string> Entries() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }
  std::vector<std::string> Listed() const {
    char** names = nullptr;
    u32 count = 0;
    EXPECT_EQ(AaFileListDir(m_folder.c_str(), &names, &count), 0);
    std::vector<std::string> listed(names, names + count);
    AaFileFreeListDirArray(names, count);
    return listed;
  }

  using List = std::vector<std::string>;
  const Board m_board;
  const std::string m_folder = [this] {
    std::filesystem::create_directory(m_board.Folder() + "/files");
    return m_board.Folder() + "/files";
  }();
};

TEST_F(File, KeepsItsOldContentUntilTheNewOneIsClosed) {
  Put("a", "old");
  TAaFile* const file = Begin("a", "new");
  EXPECT_EQ(Content("a"), "old");
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_EQ(Content("a"), "new");
}

TEST_F(File, KeepsItsOldContentWhenTheWriterIsKilled) {
  Put("a", "old");
  const Event written;
  Peer writer([&] {
    Begin("a", std::string(100'000, 'n'));
    written.Happened();
    ::pause();
  });
  ASSERT_TRUE(written.Await());
  writer.Kill();
  EXPECT_EQ(Content("a"), "old");
}

TEST_F(File, LeftByAKilledWriterIsNeitherListedNorKept) {
  const Event written;
  Peer writer([&] {
    Begin("a", "new");
    written.Happened();
    ::pause();
  });
  ASSERT_TRUE(written.Await());
  writer.Kill();
  ASSERT_EQ(Entries().size(), 1u);
  EXPECT_EQ(Listed(), List{});
  EXPECT_EQ(Entries(), List{});
}

TEST_F(File, LeftByAKilledWriterIsRemovedByTheNextReplacement) {
  const Event written;
  Peer writer([&] {
    Begin("a", "new");
    written.Happened();
    ::pause();
  });
  ASSERT_TRUE(written.Await());
  writer.Kill();
  ASSERT_EQ(Replace("b", "x"), 0);
  EXPECT_EQ(Entries(), List{"b"});
}

TEST_F(File, ThatIsBeingWrittenIsNotListedButStays) {
  TAaFile* const file = Begin("a", "new");
  EXPECT_EQ(Listed(), List{});
  ASSERT_EQ(Replace("b", "x"), 0);
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_EQ(Listed(), (List{"a", "b"}));
}

TEST_F(File, OfSeveralWritersHasTheWholeContentOfTheLast) {
  TAaFile* const first = Begin("a", std::string(10'000, '1'));
  TAaFile* const second = Begin("a", std::string(10'000, '2'));
  EXPECT_EQ(AaFileClose(second), 0);
  EXPECT_EQ(AaFileClose(first), 0);
  EXPECT_EQ(Content("a"), std::string(10'000, '1'));
}

TEST_F(File, ThatIsAPipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(AaFileOpen(Path("pipe").c_str(), "r"), nullptr);
  EXPECT_EQ(AaFileCopy(Path("pipe").c_str(), Path("a").c_str()), EINVAL);
  EXPECT_EQ(Entries(), List{"pipe"});
}

TEST_F(File, ThatIsADeviceWithoutEndIsNotCopied) {
  EXPECT_EQ(AaFileCopy("/dev/zero", Path("a").c_str()), EINVAL);
  EXPECT_EQ(Entries(), List{});
}

TEST_F(File, ThatIsAFolderIsNotCopied) {
  EXPECT_EQ(AaFileCopy(m_folder.c_str(), Path("a").c_str()), EISDIR);
  EXPECT_EQ(Entries(), List{});
}

TEST_F(File, ThatCannotBeWrittenKeepsItsOldContentAndLeavesNothing) {
  Put("a", "old");
  Peer writer([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = 1000, .rlim_max = 1000};
    ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(Replace("a", std::string(100'000, 'n')), EFBIG);
  });
  EXPECT_TRUE(writer.Ended());
  EXPECT_EQ(Content("a"), "old");
  EXPECT_EQ(Entries(), List{"a"});
}

TEST_F(File, ReportsWritesAfterAnErrorAsNotTaken) {
  Peer writer([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = 1000, .rlim_max = 1000};
    ::setrlimit(RLIMIT_FSIZE, &small);
    TAaFile* const file = AaFileOpen(Path("a").c_str(), "w");
    const std::string big(100'000, 'n');
    EXPECT_LT(AaFileWrite(big.data(), 1, 100'000, file), 100'000u);
    EXPECT_EQ(AaFileWrite(big.data(), 1, 1, file), 0u);
    EXPECT_EQ(AaFileClose(file), EFBIG);
  });
  EXPECT_TRUE(writer.Ended());
}

TEST_F(File, ThatCannotBeWrittenIsToldWithItsPathAndTheReason) {
  Peer writer([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = 1000, .rlim_max = 1000};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const ErrorOutput log;
    Replace("a", std::string(100'000, 'n'));
    EXPECT_EQ(Occurrences(log.Text(), "File " + Path("a") + " is not written, what was there stays: File too large"),
              1u);
    EXPECT_EQ(Occurrences(log.Text(), "\n"), 1u);
  });
  EXPECT_TRUE(writer.Ended());
}

TEST_F(File, ThatCannotBeBegunIsToldWithItsPathAndTheReason) {
  const ErrorOutput log;
  EXPECT_EQ(AaFileOpen(Path("missing/a").c_str(), "w"), nullptr);
  EXPECT_EQ(Occurrences(log.Text(), "ERROR"), 1u);
  EXPECT_EQ(Occurrences(log.Text(), "File " + Path("missing/a") + " is not written"), 1u);
  EXPECT_EQ(Occurrences(log.Text(), "No such file or directory"), 1u);
}

TEST_F(File, ThatIsNotThereCanBeAskedForInSilence) {
  const ErrorOutput log;
  EXPECT_EQ(AaFileOpen(Path("missing").c_str(), "r"), nullptr);
  EXPECT_EQ(AaFileExists(Path("missing").c_str()), GLO_FALSE);
  EXPECT_EQ(AaFileDirExists(Path("missing/below").c_str()), GLO_FALSE);
  EXPECT_EQ(log.Text(), "");
}

/// The kernel's file of this process's memory: a regular one whose first byte cannot be read.
constexpr const char* kUnreadable = "/proc/self/mem";

TEST_F(File, ThatCannotBeReadEndsThereAndIsToldOnce) {
  const ErrorOutput log;
  TAaFile* const file = AaFileOpen(kUnreadable, "r");
  ASSERT_NE(file, nullptr);
  char line[10] = "x";
  EXPECT_EQ(AaFileReadLine(line, sizeof line, file), nullptr);
  EXPECT_EQ(AaFileReadLine(line, sizeof line, file), nullptr);
  EXPECT_STREQ(line, "");
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_EQ(Occurrences(log.Text(), "File /proc/self/mem cannot be read: Input/output error"), 1u);
}

TEST_F(File, CopyThatFailsIsToldOnceWithBothPathsAndTheReason) {
  const ErrorOutput log;
  EXPECT_EQ(AaFileCopy(kUnreadable, Path("a").c_str()), EIO);
  EXPECT_EQ(Occurrences(log.Text(), "File /proc/self/mem is not copied to " + Path("a") +
                                        ", what was there stays: Input/output error"),
            1u);
  EXPECT_EQ(Occurrences(log.Text(), "\n"), 1u);
}

TEST_F(File, DirectoryThatCannotBeMadeIsToldWithItsPathAndTheReason) {
  Put("a", "");
  const ErrorOutput log;
  EXPECT_NE(AaFileCreateDir(Path("a/b").c_str()), 0);
  EXPECT_EQ(Occurrences(log.Text(), "Directory " + Path("a/b") + " cannot be made: Not a directory"), 1u);
}

TEST_F(File, KeepsItsMode) {
  Put("a", "old");
  ::chmod(Path("a").c_str(), 0600);
  ASSERT_EQ(Replace("a", "new"), 0);
  struct stat status {};
  ASSERT_EQ(::stat(Path("a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(File, BehindASymbolicLinkIsReplacedNotTheLink) {
  Put("a", "old");
  std::filesystem::create_symlink("a", Path("link"));
  ASSERT_EQ(Replace("link", "new"), 0);
  EXPECT_EQ(Content("a"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
}

TEST_F(File, CannotReplaceADirectory) {
  EXPECT_EQ(AaFileOpen(m_folder.c_str(), "w"), nullptr);
  EXPECT_EQ(AaFileOpen((m_folder + "/").c_str(), "w"), nullptr);
  EXPECT_EQ(AaFileOpen(m_folder.c_str(), "r"), nullptr);
}

TEST_F(File, CopyLeavesTheTargetAloneWhenTheSourceIsMissing) {
  Put("a", "old");
  EXPECT_EQ(AaFileCopy(Path("missing").c_str(), Path("a").c_str()), ENOENT);
  EXPECT_EQ(Content("a"), "old");
}

TEST_F(File, CopyThatFailsOnTheWayKeepsTheTarget) {
  Put("a", "old");
  EXPECT_EQ(AaFileCopy(m_folder.c_str(), Path("a").c_str()), EISDIR);
  EXPECT_EQ(Content("a"), "old");
  EXPECT_EQ(Entries(), List{"a"});
}

TEST_F(File, NamesOfTheLongestLengthCanBeReplaced) {
  const std::string longest(255, 'n');
  EXPECT_EQ(Replace(longest, "new"), 0);
  EXPECT_EQ(Content(longest), "new");
}

}  // namespace
}  // namespace hwapi::test
