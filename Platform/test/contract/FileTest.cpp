#include "AaFile.h"
#include "Rig.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace contract {
namespace {

using Lines = std::vector<std::string>;

std::string PathOf(const std::string& name) { return rig::Directory() + "/" + name; }

void Write(const std::string& path, const std::string& content) {
  TAaFile* file = AaFileOpen(path.c_str(), "w");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(AaFileWrite(content.data(), 1, static_cast<u32>(content.size()), file), content.size());
  EXPECT_EQ(AaFileClose(file), 0);
}

/// @return what the reads of a file give, with a buffer of that size
Lines Read(const std::string& path, u32 bufferSize = 1024) {
  TAaFile* file = AaFileOpen(path.c_str(), "r");
  if (file == nullptr) return {"no such file"};
  Lines lines;
  std::string buffer(bufferSize, 'x');
  while (AaFileReadLine(buffer.data(), bufferSize, file) != nullptr) lines.emplace_back(buffer.c_str());
  EXPECT_EQ(AaFileClose(file), 0);
  return lines;
}

TEST(File, GivesBackWhatWasWritten) {
  Write(PathOf("simple"), "one\ntwo\n");
  EXPECT_EQ(Read(PathOf("simple")), (Lines{"one\n", "two\n"}));
}

TEST(File, ThatIsMissingCannotBeRead) { EXPECT_EQ(AaFileOpen(PathOf("missing").c_str(), "r"), nullptr); }

TEST(File, InAMissingDirectoryCannotBeWritten) { EXPECT_EQ(AaFileOpen(PathOf("nowhere/file").c_str(), "w"), nullptr); }

TEST(File, KeepsItsOldContentUntilTheClose) {
  Write(PathOf("replaced"), "old\n");
  TAaFile* file = AaFileOpen(PathOf("replaced").c_str(), "w");
  ASSERT_NE(file, nullptr);
  AaFileWrite("new\n", 1, 4, file);
  EXPECT_EQ(Read(PathOf("replaced")), Lines{"old\n"});
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_EQ(Read(PathOf("replaced")), Lines{"new\n"});
}

TEST(File, ThatIsNewAppearsWithTheClose) {
  const std::string path = PathOf("appears");
  TAaFile* file = AaFileOpen(path.c_str(), "w");
  ASSERT_NE(file, nullptr);
  EXPECT_FALSE(AaFileExists(path.c_str()));
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_TRUE(AaFileExists(path.c_str()));
}

TEST(File, ThatIsOpenIsReadAsItWasWhenAnotherReplacesIt) {
  Write(PathOf("opened"), "old\n");
  TAaFile* file = AaFileOpen(PathOf("opened").c_str(), "r");
  Write(PathOf("opened"), "new\n");
  std::array<char, 16> buffer{};
  EXPECT_STREQ(AaFileReadLine(buffer.data(), buffer.size(), file), "old\n");
  AaFileClose(file);
}

TEST(File, BecomesShorterWhenItIsReplaced) {
  Write(PathOf("shorter"), std::string(5000, 'x'));
  Write(PathOf("shorter"), "y");
  EXPECT_EQ(Read(PathOf("shorter")), Lines{"y"});
}

TEST(File, TakesManyWritesOneAfterTheOther) {
  TAaFile* file = AaFileOpen(PathOf("many").c_str(), "w");
  std::string expected;
  for (int i = 0; i < 3000; ++i) {
    const std::string part = std::to_string(i) + ",";
    EXPECT_EQ(AaFileWrite(part.data(), 1, static_cast<u32>(part.size()), file), part.size());
    expected += part;
  }
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_EQ(Read(PathOf("many"), 100000), Lines{expected});
}

TEST(File, CountsItemsAndNotBytes) {
  TAaFile* file = AaFileOpen(PathOf("items").c_str(), "w");
  EXPECT_EQ(AaFileWrite("aabbcc", 2, 3, file), 3u);
  EXPECT_EQ(AaFileClose(file), 0);
  EXPECT_EQ(Read(PathOf("items")), Lines{"aabbcc"});
}

TEST(Line, WithoutAnEndIsGivenAtTheEndOfTheFile) {
  Write(PathOf("noend"), "one\ntwo");
  EXPECT_EQ(Read(PathOf("noend")), (Lines{"one\n", "two"}));
}

TEST(Line, ThatIsTooLongComesInPieces) {
  Write(PathOf("pieces"), "abcdefgh\nij\n");
  EXPECT_EQ(Read(PathOf("pieces"), 5), (Lines{"abcd", "efgh", "\n", "ij\n"}));
}

TEST(Line, ThatFitsExactlyComesWhole) {
  Write(PathOf("exact"), "abc\ndef\n");
  EXPECT_EQ(Read(PathOf("exact"), 5), (Lines{"abc\n", "def\n"}));
}

TEST(Line, MayBeEmpty) {
  Write(PathOf("emptylines"), "\n\na\n");
  EXPECT_EQ(Read(PathOf("emptylines")), (Lines{"\n", "\n", "a\n"}));
}

TEST(Line, BehindTheEndOfTheFileIsNullAndEmpty) {
  Write(PathOf("end"), "a\n");
  TAaFile* file = AaFileOpen(PathOf("end").c_str(), "r");
  std::array<char, 16> buffer{};
  EXPECT_EQ(AaFileReadLine(buffer.data(), buffer.size(), file), buffer.data());
  EXPECT_EQ(AaFileReadLine(buffer.data(), buffer.size(), file), nullptr);
  EXPECT_STREQ(buffer.data(), "");
  AaFileClose(file);
}

TEST(Line, OfAnEmptyFileIsNullAndEmpty) {
  Write(PathOf("empty"), "");
  TAaFile* file = AaFileOpen(PathOf("empty").c_str(), "r");
  std::array<char, 16> buffer{'x'};
  EXPECT_EQ(AaFileReadLine(buffer.data(), buffer.size(), file), nullptr);
  EXPECT_STREQ(buffer.data(), "");
  AaFileClose(file);
}

TEST(Line, OfAFileThatIsWrittenIsNullAndEmpty) {
  TAaFile* file = AaFileOpen(PathOf("writing").c_str(), "w");
  std::array<char, 16> buffer{'x'};
  EXPECT_EQ(AaFileReadLine(buffer.data(), buffer.size(), file), nullptr);
  EXPECT_STREQ(buffer.data(), "");
  AaFileClose(file);
}

TEST(FileCopy, HasTheContentOfItsSource) {
  Write(PathOf("source"), "text\n");
  EXPECT_EQ(AaFileCopy(PathOf("source").c_str(), PathOf("target").c_str()), 0);
  EXPECT_EQ(Read(PathOf("target")), Lines{"text\n"});
  EXPECT_EQ(Read(PathOf("source")), Lines{"text\n"});
}

TEST(FileCopy, CopiesMuch) {
  const std::string content(300000, 'z');
  Write(PathOf("much"), content);
  EXPECT_EQ(AaFileCopy(PathOf("much").c_str(), PathOf("much2").c_str()), 0);
  EXPECT_EQ(Read(PathOf("much2"), 400000), Lines{content});
}

TEST(FileCopy, ReplacesItsTarget) {
  Write(PathOf("source2"), "new");
  Write(PathOf("target2"), "old and longer");
  EXPECT_EQ(AaFileCopy(PathOf("source2").c_str(), PathOf("target2").c_str()), 0);
  EXPECT_EQ(Read(PathOf("target2")), Lines{"new"});
}

TEST(FileCopy, OfNothingLeavesTheTarget) {
  Write(PathOf("target3"), "old");
  EXPECT_NE(AaFileCopy(PathOf("missing").c_str(), PathOf("target3").c_str()), 0);
  EXPECT_EQ(Read(PathOf("target3")), Lines{"old"});
}

TEST(FileCopy, IntoAMissingDirectoryFails) {
  Write(PathOf("source4"), "new");
  EXPECT_NE(AaFileCopy(PathOf("source4").c_str(), PathOf("nowhere/target").c_str()), 0);
}

TEST(FileRemove, TakesAFileAway) {
  Write(PathOf("removed"), "x");
  EXPECT_EQ(AaFileRemove(PathOf("removed").c_str()), 0);
  EXPECT_FALSE(AaFileExists(PathOf("removed").c_str()));
}

TEST(FileRemove, OfNothingFails) { EXPECT_NE(AaFileRemove(PathOf("missing").c_str()), 0); }

}  // namespace
}  // namespace contract
