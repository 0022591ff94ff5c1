#include "StateDirectory.h"

#include "SimError.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace boardsim {
namespace {

namespace fs = std::filesystem;

class StateDirectoryTest : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/boardsim-test-XXXXXX";
    m_base = mkdtemp(name);
  }
  void TearDown() override { fs::remove_all(m_base); }
  StateDirectory State() const { return StateDirectory(m_base / "state"); }
  static void Touch(const std::string& path) { std::ofstream(path) << "x"; }

  fs::path m_base;
};

TEST_F(StateDirectoryTest, OptionWinsOverTheEnvironment) {
  setenv("HWAPI_RUN", "/somewhere/run", 1);
  EXPECT_EQ(StateDirectory::FromOption("/tmp/x").Root(), "/tmp/x");
}

TEST_F(StateDirectoryTest, IsTheFolderAboveTheRunDirectory) {
  setenv("HWAPI_RUN", "/somewhere/run", 1);
  EXPECT_EQ(StateDirectory::FromOption("").Root(), "/somewhere");
}

TEST_F(StateDirectoryTest, HasADefaultForEachUser) {
  unsetenv("HWAPI_RUN");
  unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(StateDirectory::FromOption("").Root(), "/tmp/clm-" + std::to_string(geteuid()));
}

TEST_F(StateDirectoryTest, IsRunByOneProcessAtATime) {
  const Fd lock = State().Lock();
  State().NotePid(lock, 1234);
  try {
    State().Lock();
    FAIL();
  } catch (const SimError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Refused);
    EXPECT_NE(std::string(error.what()).find("1234"), std::string::npos);
  }
}

TEST_F(StateDirectoryTest, TellsWhoRunsIt) {
  Fd lock = State().Lock();
  State().NotePid(lock, 1234);
  EXPECT_EQ(State().RunningPid(), 1234);
  lock.Close();
  EXPECT_EQ(State().RunningPid(), std::nullopt);
}

TEST_F(StateDirectoryTest, IsJoinedWhileABoardIsUpOnly) {
  Fd lock = State().Lock();
  State().Prepare(false);
  State().NotePid(lock, 1234);
  State().Join();
  EXPECT_EQ(getenv("HWAPI_RUN"), State().Run());
  lock.Close();
  try {
    State().Join();
    FAIL();
  } catch (const SimError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Unreachable);
  }
}

TEST_F(StateDirectoryTest, ForgetsTheRunDirectoryButKeepsFlash) {
  const Fd lock = State().Lock();
  State().Prepare(false);
  Touch(State().Run() + "/tag");
  Touch(State().Ffs() + "/file");
  State().Prepare(false);
  EXPECT_FALSE(fs::exists(State().Run() + "/tag"));
  EXPECT_TRUE(fs::exists(State().Ffs() + "/file"));
}

TEST_F(StateDirectoryTest, ForgetsFlashWhenFresh) {
  const Fd lock = State().Lock();
  State().Prepare(false);
  Touch(State().Ffs() + "/file");
  Touch(State().Root() + "/mine");
  State().Prepare(true);
  EXPECT_FALSE(fs::exists(State().Ffs() + "/file"));
  EXPECT_TRUE(fs::exists(State().Root() + "/mine"));
}

TEST_F(StateDirectoryTest, IsFoundFromTheRunDirectory) {
  const Fd lock = State().Lock();
  State().Prepare(false);
  Touch(State().Ffs() + "/file");
  EXPECT_TRUE(fs::exists(State().Run() + "/root/ffs/file"));
}

TEST_F(StateDirectoryTest, ForgetsTheResetTypeWhenFresh) {
  const Fd lock = State().Lock();
  Touch(State().ResetAnswer());
  State().Prepare(false);
  EXPECT_TRUE(fs::exists(State().ResetAnswer()));
  State().Prepare(true);
  EXPECT_FALSE(fs::exists(State().ResetAnswer()));
}

TEST_F(StateDirectoryTest, IsNoLinkToAnotherFolder) {
  fs::create_directory(m_base / "other");
  fs::create_directory_symlink(m_base / "other", m_base / "state");
  EXPECT_THROW(State().Lock(), SimError);
}

TEST_F(StateDirectoryTest, IsOpenToItsUserOnly) {
  const Fd lock = State().Lock();
  EXPECT_EQ(fs::status(State().Root()).permissions(), fs::perms::owner_all);
}

}  // namespace
}  // namespace boardsim
