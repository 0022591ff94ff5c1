#include "AaFile.h"
#include "fake/PlatformTest.h"

#include <cerrno>

namespace {

using Files = fake::PlatformTest;

TEST_F(Files, WhatIsBeingWrittenShowsAfterTheClose) {
  fake::SetFile("/d/f", "old");
  TAaFile* file = AaFileOpen("/d/f", "w");
  AaFileWrite("new", 1, 3, file);
  EXPECT_EQ(fake::FileContent("/d/f"), "old");
  AaFileClose(file);
  EXPECT_EQ(fake::FileContent("/d/f"), "new");
}

TEST_F(Files, AWriteThatFailsMakesTheCloseFail) {
  fake::SetFile("/d/f", "old");
  fake::FailCall("AaFileWrite", 1, 2);
  TAaFile* file = AaFileOpen("/d/f", "w");
  EXPECT_EQ(AaFileWrite("new", 1, 3, file), 2u);
  EXPECT_EQ(AaFileClose(file), EIO);
  EXPECT_EQ(fake::FileContent("/d/f"), "old");
}

TEST_F(Files, AWriteTellsItsBytesThenTheSizeAndTheNumberOfItsItems) {
  TAaFile* file = AaFileOpen("/f", "w");
  AaFileWrite("aabb", 2, 2, file);
  AaFileClose(file);
  EXPECT_EQ(fake::Calls("AaFileWrite"),
            std::vector<fake::Call>{fake::Call("AaFileWrite", fake::Bytes{'a', 'a', 'b', 'b'}, "/f", 2, 2)});
}

TEST_F(Files, ACloseThatFailsKeepsTheOldContent) {
  fake::SetFile("/d/f", "old");
  fake::FailCall("AaFileClose", 1, ENOSPC);
  EXPECT_EQ(AaFileClose(AaFileOpen("/d/f", "w")), ENOSPC);
  EXPECT_EQ(fake::FileContent("/d/f"), "old");
  EXPECT_EQ(fake::OpenFiles(), 0u);
}

TEST_F(Files, ReadOnlyDirectoriesRefuseChanges) {
  fake::SetFile("/ro/f", "old");
  fake::SetReadOnly("/ro");
  EXPECT_EQ(AaFileOpen("/ro/f", "w"), nullptr);
  EXPECT_EQ(AaFileRemove("/ro/f"), EROFS);
  EXPECT_EQ(AaFileCreateDir("/ro/d"), EROFS);
}

TEST_F(Files, OpenOnesAreCounted) {
  fake::SetFile("/f", "");
  TAaFile* file = AaFileOpen("/f", "r");
  EXPECT_EQ(fake::OpenFiles(), 1u);
  AaFileClose(file);
  EXPECT_EQ(fake::OpenFiles(), 0u);
}

TEST_F(Files, UseOfAClosedOneIsAViolation) {
  fake::SetFile("/f", "");
  TAaFile* file = AaFileOpen("/f", "r");
  AaFileClose(file);
  EXPECT_EQ(AaFileClose(file), EINVAL);
  EXPECT_EQ(fake::Violations(), std::vector<std::string>{"AaFileClose with a file that is not open"});
  fake::ClearViolations();
}

TEST_F(Files, PathsAreTheSameHoweverTheyAreWritten) {
  fake::SetFile("/a/b", "x");
  EXPECT_TRUE(AaFileExists("//a/./c/../b"));
}

TEST_F(Files, RemovingADirectoryTakesAllInIt) {
  fake::SetFile("/a/b/c", "x");
  fake::SetFile("/ab", "y");
  fake::RemoveAll("/a");
  EXPECT_EQ(fake::FilePaths(), std::vector<std::string>{"/ab"});
}

}  // namespace
