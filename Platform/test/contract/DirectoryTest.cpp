#include "AaFile.h"
#include "Rig.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace contract {
namespace {

using Names = std::vector<std::string>;

std::string PathOf(const std::string& name) { return rig::Directory() + "/" + name; }

std::string MakeDir(const std::string& name) {
  EXPECT_EQ(AaFileCreateDir(PathOf(name).c_str()), 0);
  return PathOf(name);
}

void Touch(const std::string& path) { EXPECT_EQ(AaFileClose(AaFileOpen(path.c_str(), "w")), 0); }

Names List(const std::string& path) {
  char** names = nullptr;
  u32 count = 0;
  EXPECT_EQ(AaFileListDir(path.c_str(), &names, &count), 0);
  Names list(names, names + count);
  AaFileFreeListDirArray(names, count);
  return list;
}

TEST(Directory, IsCreatedWithTheMissingOnesAboveIt) {
  MakeDir("a/b/c");
  EXPECT_TRUE(AaFileDirExists(PathOf("a").c_str()));
  EXPECT_TRUE(AaFileDirExists(PathOf("a/b/c").c_str()));
}

TEST(Directory, MayBeCreatedAgain) {
  MakeDir("again");
  EXPECT_EQ(AaFileCreateDir(PathOf("again").c_str()), 0);
}

TEST(Directory, IsNotCreatedOverAFile) {
  Touch(PathOf("file"));
  EXPECT_NE(AaFileCreateDir(PathOf("file").c_str()), 0);
  EXPECT_NE(AaFileCreateDir(PathOf("file/below").c_str()), 0);
}

TEST(Directory, IsNoRegularFile) {
  MakeDir("dir");
  EXPECT_FALSE(AaFileExists(PathOf("dir").c_str()));
  EXPECT_TRUE(AaFileDirExists(PathOf("dir").c_str()));
}

TEST(Directory, IsNotWhatAFileIs) {
  Touch(PathOf("regular"));
  EXPECT_TRUE(AaFileExists(PathOf("regular").c_str()));
  EXPECT_FALSE(AaFileDirExists(PathOf("regular").c_str()));
}

TEST(Directory, ThatIsMissingDoesNotExist) {
  EXPECT_FALSE(AaFileExists(PathOf("missing").c_str()));
  EXPECT_FALSE(AaFileDirExists(PathOf("missing").c_str()));
}

TEST(Directory, CannotBeRemovedAsAFile) {
  MakeDir("stays");
  EXPECT_NE(AaFileRemove(PathOf("stays").c_str()), 0);
  EXPECT_TRUE(AaFileDirExists(PathOf("stays").c_str()));
}

TEST(Directory, CannotBeReplacedByAFile) {
  MakeDir("kept");
  TAaFile* file = AaFileOpen(PathOf("kept").c_str(), "w");
  EXPECT_TRUE(file == nullptr || AaFileClose(file) != 0);
  EXPECT_TRUE(AaFileDirExists(PathOf("kept").c_str()));
}

TEST(Directory, ListsItsNamesInByteOrder) {
  const std::string directory = MakeDir("list");
  for (const char* name : {"b", "B", "a.txt", "\xC3\xA4", ".hidden"}) Touch(directory + "/" + name);
  MakeDir("list/aa");
  EXPECT_EQ(List(directory), (Names{".hidden", "B", "a.txt", "aa", "b", "\xC3\xA4"}));
}

TEST(Directory, ListsOnlyWhatLiesDirectlyInIt) {
  MakeDir("deep/er");
  Touch(PathOf("deep/er/file"));
  EXPECT_EQ(List(PathOf("deep")), Names{"er"});
}

TEST(Directory, DoesNotListWhatIsStillBeingWritten) {
  const std::string directory = MakeDir("writing.d");
  TAaFile* file = AaFileOpen((directory + "/new").c_str(), "w");
  AaFileWrite("x", 1, 1, file);
  EXPECT_EQ(List(directory), Names{});
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_EQ(List(directory), Names{"new"});
}

TEST(Directory, ThatIsEmptyHasNoList) {
  const std::string directory = MakeDir("empty.d");
  char* unchanged = nullptr;
  char** names = &unchanged;
  u32 count = 5;
  EXPECT_EQ(AaFileListDir(directory.c_str(), &names, &count), 0);
  EXPECT_EQ(names, nullptr);
  EXPECT_EQ(count, 0u);
}

TEST(Directory, ThatIsMissingCannotBeListed) {
  char* unchanged = nullptr;
  char** names = &unchanged;
  u32 count = 5;
  EXPECT_EQ(AaFileListDir(PathOf("missing").c_str(), &names, &count), ENOENT);
  EXPECT_EQ(names, nullptr);
}

TEST(Directory, ReleasesNoListHarmlessly) { AaFileFreeListDirArray(nullptr, 0); }

}  // namespace
}  // namespace contract
