#include "TechlogFolder.h"

#include "CommandError.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace clmctl {
namespace {

namespace fs = std::filesystem;

class TechlogFolderTest : public testing::Test {
 protected:
  TechlogFolderTest() {
    char name[] = "/tmp/clmctl-test-XXXXXX";
    m_base = mkdtemp(name);
  }
  ~TechlogFolderTest() override { fs::remove_all(m_base); }

  std::string Directory() const { return m_base / "a" / "b"; }
  Stored Store(const std::string& name, const std::string& text) const {
    const fs::path source = m_base / "source";
    std::ofstream(source) << text;
    const int content = open(source.c_str(), O_RDONLY | O_CLOEXEC);
    const Stored stored = TechlogFolder(Directory()).Store(name, content);
    close(content);
    return stored;
  }
  std::string Text(const std::string& name) const {
    std::ifstream file(fs::path(Directory()) / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::ptrdiff_t Count() const {
    const fs::directory_iterator entries(Directory());
    return std::distance(begin(entries), end(entries));
  }

  fs::path m_base;
};

TEST_F(TechlogFolderTest, IsMadeWhenItIsMissing) {
  EXPECT_EQ(Store("file", "text").problem, "");
  EXPECT_EQ(Text("file"), "text");
}

TEST(TechlogFolder, ThatCannotBeMadeTellsWhyItCannot) {
  try {
    TechlogFolder("/sys/nobody/makes/this");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(std::string(error.what()).find("No such file"), std::string::npos) << error.what();
  }
}

TEST_F(TechlogFolderTest, TellsTheSizeOfAStoredFile) {
  const std::string large(100'000, 'x');
  EXPECT_EQ(Store("file", large).sizeBytes, 100'000);
  EXPECT_EQ(Text("file"), large);
}

TEST_F(TechlogFolderTest, ReplacesAFileThatIsThere) {
  Store("file", "a longer text");
  Store("file", "short");
  EXPECT_EQ(Text("file"), "short");
  EXPECT_EQ(Count(), 1);
}

TEST_F(TechlogFolderTest, RefusesNamesThatAreNoFilesOfIt) {
  for (const char* name : {"", ".", "..", "../out", "/tmp/out", "sub/file", "/"}) {
    EXPECT_NE(Store(name, "x").problem, "") << name;
  }
  EXPECT_EQ(Count(), 0);
  EXPECT_FALSE(fs::exists(m_base / "a" / "out"));
}

TEST_F(TechlogFolderTest, FollowsNoLink) {
  fs::create_directories(Directory());
  std::ofstream(m_base / "victim") << "old";
  fs::create_symlink(m_base / "victim", fs::path(Directory()) / "file");
  EXPECT_EQ(Store("file", "new").problem, "");
  EXPECT_EQ(Text("file"), "new");
  EXPECT_FALSE(fs::is_symlink(fs::path(Directory()) / "file"));
  std::ifstream victim(m_base / "victim");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(victim), {}), "old");
}

TEST_F(TechlogFolderTest, LeavesNothingOfAFileThatCannotBeRead) {
  const int folder = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_NE(TechlogFolder(Directory()).Store("file", folder).problem, "");
  close(folder);
  EXPECT_EQ(Count(), 0);
}

TEST_F(TechlogFolderTest, LeavesNothingOfAFileWhoseNameIsAFolder) {
  fs::create_directories(fs::path(Directory()) / "file");
  EXPECT_NE(Store("file", "x").problem, "");
  EXPECT_EQ(Count(), 1);
}

TEST_F(TechlogFolderTest, ThatIsAFileIsAUsageError) {
  std::ofstream(m_base / "a") << "x";
  try {
    const TechlogFolder folder(m_base / "a");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Usage);
  }
}

}  // namespace
}  // namespace clmctl
