#include "PictureFile.h"

#include "CommandError.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace clmctl {
namespace {

namespace fs = std::filesystem;

class PictureFile : public testing::Test {
 protected:
  PictureFile() {
    char name[] = "/tmp/picture_XXXXXX";
    m_folder = mkdtemp(name);
  }
  ~PictureFile() override { fs::remove_all(m_folder); }

  std::string Path() const { return m_folder + "/plot.png"; }
  std::string Content() const {
    std::ifstream file(Path());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  std::ptrdiff_t Files() const { return std::distance(fs::directory_iterator(m_folder), fs::directory_iterator()); }

  std::string m_folder;
};

TEST_F(PictureFile, IsReplacedWhole) {
  WritePicture(Path(), "a long old picture");
  WritePicture(Path(), "new");
  EXPECT_EQ(Content(), "new");
  EXPECT_EQ(Files(), 1);
}

TEST_F(PictureFile, HasTheModeOfANewFile) {
  umask(027);
  WritePicture(Path(), "picture");
  struct stat status {};
  ASSERT_EQ(stat(Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0640u);
}

TEST_F(PictureFile, InAMissingFolderIsRefused) {
  EXPECT_THROW(WritePicture(m_folder + "/x/plot.png", ""), CommandError);
}

TEST_F(PictureFile, NeverTakesThePlaceOfSomethingElse) {
  fs::create_directory(Path());
  EXPECT_THROW(WritePicture(Path(), "picture"), CommandError);
  EXPECT_THROW(WritePicture("/dev/null", "picture"), CommandError);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_EQ(Files(), 1);
}

}  // namespace
}  // namespace clmctl
