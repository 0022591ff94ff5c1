#include "BoardRoot.h"

#include "CommandError.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace clmctl {
namespace {

namespace fs = std::filesystem;

/// A board's root with the links of its flash, and a file outside of it.
class BoardRoot : public testing::Test {
 protected:
  BoardRoot() {
    char name[] = "/tmp/board_root_XXXXXX";
    m_folder = mkdtemp(name);
    fs::create_directories(State() + "/ffs/fs1/config");
    fs::create_directories(Run());
    fs::create_symlink("/ffs/fs1", State() + "/ffs/run");
    std::ofstream(State() + "/ffs/fs1/config/blackbox") << "inside";
    std::ofstream(m_folder + "/secret") << "outside";
    setenv("HWAPI_RUN", Run().c_str(), 1);
  }
  ~BoardRoot() override { fs::remove_all(m_folder); }

  std::string State() const { return m_folder + "/state"; }
  std::string Run() const { return m_folder + "/run"; }

  std::string m_folder;
};

/// Both ways to open a file below a root.
class OpenedInRoot : public BoardRoot, public testing::WithParamInterface<UniqueFd (*)(int, const std::string&)> {
 protected:
  std::string Content(const std::string& path) {
    const UniqueFd root(open(State().c_str(), O_PATH | O_DIRECTORY));
    const UniqueFd file = GetParam()(root.Get(), path);
    if (file.Get() < 0) return std::strerror(errno);
    char text[32];
    const ssize_t length = read(file.Get(), text, sizeof text);
    return std::string(text, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  }
};

TEST_P(OpenedInRoot, AnAbsoluteLinkStaysInside) { EXPECT_EQ(Content("/ffs/run/config/blackbox"), "inside"); }

TEST_P(OpenedInRoot, ThePathMayHaveDotsAndDoubleSlashes) {
  EXPECT_EQ(Content("//ffs/./run//config/../config/blackbox"), "inside");
}

TEST_P(OpenedInRoot, NothingOutsideIsReached) {
  fs::create_symlink("../secret", State() + "/relative");
  fs::create_symlink(m_folder + "/secret", State() + "/absolute");
  for (const char* const path : {"../secret", "/../secret", "ffs/../../secret", "relative", "absolute"}) {
    EXPECT_EQ(Content(path), std::strerror(ENOENT)) << path;
  }
}

TEST_P(OpenedInRoot, LinksThatGoInACircleEnd) {
  fs::create_symlink("/b", State() + "/a");
  fs::create_symlink("/a", State() + "/b");
  EXPECT_EQ(Content("/a/x"), std::strerror(ELOOP));
}

TEST_P(OpenedInRoot, AFileIsNoFolder) { EXPECT_EQ(Content("/ffs/run/config/blackbox/x"), std::strerror(ENOTDIR)); }

INSTANTIATE_TEST_SUITE_P(Ways, OpenedInRoot, testing::Values(&OpenInRoot, &OpenInRootByHand),
                         [](const auto& way) { return way.index == 0 ? "ByTheKernel" : "ByHand"; });

TEST_F(BoardRoot, IsUsedWhereTheRunDirectoryNamesIt) {
  fs::create_symlink(State(), Run() + "/root");
  EXPECT_EQ(ReadBoardsFile("/ffs/run/config/blackbox"), "inside");
}

TEST_F(BoardRoot, IsTheMachinesOwnWhereTheRunDirectoryNamesNone) {
  EXPECT_EQ(ReadBoardsFile(m_folder + "/secret"), "outside");
}

TEST_F(BoardRoot, WithoutTheFileSaysHowItComesThere) {
  fs::create_symlink(State(), Run() + "/root");
  try {
    ReadBoardsFile("/ffs/run/config/trace");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Refused);
    EXPECT_NE(std::string(error.what()).find("clmctl blackbox store"), std::string::npos);
    EXPECT_NE(std::string(error.what()).find(Run() + "/root"), std::string::npos);
  }
}

TEST_F(BoardRoot, OfAStateThatIsGoneIsAnError) {
  fs::create_symlink(m_folder + "/gone", Run() + "/root");
  EXPECT_THROW(ReadBoardsFile("/ffs/run/config/blackbox"), CommandError);
}

TEST_F(BoardRoot, HasNoEndlessFiles) {
  try {
    ReadLocalFile("/dev/zero");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Usage);
    EXPECT_NE(std::string(error.what()).find("larger than 4 MiB"), std::string::npos);
  }
}

TEST_F(BoardRoot, AFolderIsNoFile) { EXPECT_THROW(ReadLocalFile(m_folder), CommandError); }

}  // namespace
}  // namespace clmctl
