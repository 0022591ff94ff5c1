#include "FlashLayout.h"

#include "SimError.h"
#include "ddal_board.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>

namespace boardsim {
namespace {

namespace fs = std::filesystem;
using hwapi::board::BoardDescription;

constexpr const char* kAlarmsTag = "app.hwapi.blackbox.oam.alarms.file";

class FlashLayoutTest : public testing::Test {
 protected:
  FlashLayoutTest() {
    char name[] = "/tmp/boardsim-test-XXXXXX";
    m_base = mkdtemp(name);
    m_board.tags[kAlarmsTag] = "/ffs/run/logs/alarms";
    m_board.tags["app.hwapi.blackbox.oam.sfp.file"] = "/ffs/run/logs/sfp";
  }
  ~FlashLayoutTest() override { fs::remove_all(m_base); }

  void LayOut() const { LayOutFlash(StateDirectory(m_base), m_board); }
  fs::path Ffs() const { return m_base / "ffs"; }
  void Write(const std::string& file, const std::string& text) const { std::ofstream(Ffs() / file) << text; }
  std::string Text(const std::string& file) const {
    std::ifstream stream(Ffs() / file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  std::set<std::string> Names(const std::string& folder) const {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(Ffs() / folder)) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  fs::path m_base;
  BoardDescription m_board;
};

TEST_F(FlashLayoutTest, HasTwoFileSystemsWithABuildEach) {
  LayOut();
  EXPECT_EQ(Names("fs1"), (std::set<std::string>{"TargetBD_R2_4.1.xml", "config", "logs"}));
  EXPECT_EQ(Names("fs2"), (std::set<std::string>{"TargetBD_R2_4.0.xml", "config", "logs"}));
  EXPECT_TRUE(fs::is_directory(Ffs() / "fs1/config/lifedata"));
  EXPECT_TRUE(fs::is_directory(Ffs() / "fs2/config/lifedata"));
}

TEST_F(FlashLayoutTest, LinksAreThoseOfTheDaemonsRoot) {
  LayOut();
  EXPECT_EQ(fs::read_symlink(Ffs() / "run"), "/ffs/fs1");
  EXPECT_EQ(fs::read_symlink(Ffs() / "stb"), "/ffs/fs2");
}

TEST_F(FlashLayoutTest, LinksFollowTheBootData) {
  LayOut();
  m_board.boot.active = DDAL_FFS_FS2;
  LayOut();
  EXPECT_EQ(fs::read_symlink(Ffs() / "run"), "/ffs/fs2");
  EXPECT_EQ(fs::read_symlink(Ffs() / "stb"), "/ffs/fs1");
}

TEST_F(FlashLayoutTest, TheOtherFileSystemRunsWhenThePassiveImageDoes) {
  hwapi::board::Boot boot;
  const auto running = [&boot](u32 active, u32 image) {
    boot.active = active;
    boot.image = image;
    return RunningFileSystem(boot);
  };
  EXPECT_EQ(running(DDAL_FFS_FS1, 0), 1u);
  EXPECT_EQ(running(DDAL_FFS_FS1, 1), 2u);
  EXPECT_EQ(running(DDAL_FFS_FS2, 0), 2u);
  EXPECT_EQ(running(DDAL_FFS_FS2, 1), 1u);
}

TEST_F(FlashLayoutTest, BuildsOfTheDescriptionTakeThePlaceOfOthers) {
  LayOut();
  m_board.boot.fs1Build = "R3_0.0";
  LayOut();
  EXPECT_TRUE(Names("fs1").contains("TargetBD_R3_0.0.xml"));
  EXPECT_FALSE(Names("fs1").contains("TargetBD_R2_4.1.xml"));
}

TEST_F(FlashLayoutTest, BuildsThatAreThereStayWhenTheDescriptionNamesNone) {
  fs::create_directories(Ffs() / "fs1");
  Write("fs1/TargetBD_MINE.xml", "");
  LayOut();
  EXPECT_TRUE(Names("fs1").contains("TargetBD_MINE.xml"));
  EXPECT_FALSE(Names("fs1").contains("TargetBD_R2_4.1.xml"));
}

TEST_F(FlashLayoutTest, LogsLieInTheRunningFileSystem) {
  m_board.boot.image = 1;
  LayOut();
  EXPECT_EQ(Names("fs2/logs"), (std::set<std::string>{"alarms", "sfp"}));
  EXPECT_TRUE(Names("fs1/logs").empty());
}

TEST_F(FlashLayoutTest, LogsAreTheSameOnEveryBoard) {
  LayOut();
  const std::string first = Text("fs1/logs/alarms");
  EXPECT_FALSE(first.empty());
  fs::remove(Ffs() / "fs1/logs/alarms");
  LayOut();
  EXPECT_EQ(Text("fs1/logs/alarms"), first);
}

TEST_F(FlashLayoutTest, WhatIsThereStaysAsItIs) {
  LayOut();
  Write("fs1/logs/alarms", "mine\n");
  Write("fs1/config/lifedata/kept", "x");
  LayOut();
  EXPECT_EQ(Text("fs1/logs/alarms"), "mine\n");
  EXPECT_EQ(Text("fs1/config/lifedata/kept"), "x");
}

TEST_F(FlashLayoutTest, LogsOutsideTheFlashAreNotMade) {
  const std::string outside = m_base / "outside";
  for (const std::string& path :
       {outside, "/ffs/.." + outside, std::string("ffs/x"), std::string("/ffs"), std::string()}) {
    m_board.tags[kAlarmsTag] = path;
    LayOut();
    EXPECT_FALSE(fs::exists(outside)) << path;
    EXPECT_EQ(Names(""), (std::set<std::string>{"fs1", "fs2", "run", "stb"})) << path;
  }
}

TEST_F(FlashLayoutTest, FolderInPlaceOfALinkIsToldAndLeftAlone) {
  fs::create_directories(Ffs() / "run/config");
  try {
    LayOut();
    FAIL();
  } catch (const SimError& error) {
    EXPECT_NE(std::string(error.what()).find("--fresh"), std::string::npos) << error.what();
  }
  EXPECT_TRUE(fs::exists(Ffs() / "run/config"));
}

}  // namespace
}  // namespace boardsim
