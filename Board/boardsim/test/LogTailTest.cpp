#include "LogTail.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace boardsim {
namespace {

class LogTailTest : public testing::Test {
 protected:
  LogTailTest() {
    char name[] = "/tmp/boardsim-log-XXXXXX";
    m_folder = mkdtemp(name);
  }
  ~LogTailTest() override { std::filesystem::remove_all(m_folder); }
  std::string Log() const { return m_folder / "log"; }
  void Write(const std::string& text) const { std::ofstream(Log(), std::ios::app) << text; }

 private:
  std::filesystem::path m_folder;
};

TEST_F(LogTailTest, IsEmptyWithoutALog) { EXPECT_EQ(LogTail(Log()).Lines(), ""); }

TEST_F(LogTailTest, LeavesOutWhatEarlierRunsWrote) {
  Write("earlier\n");
  const LogTail tail(Log());
  EXPECT_EQ(tail.Lines(), "");
  Write("now\nwithout an end");
  EXPECT_EQ(tail.Lines(), "  now\n  without an end\n");
}

TEST_F(LogTailTest, IsTheLastLines) {
  const LogTail tail(Log());
  for (int line = 1; line <= 20; ++line) Write(std::to_string(line) + "\n");
  EXPECT_EQ(tail.Lines(), "  13\n  14\n  15\n  16\n  17\n  18\n  19\n  20\n");
}

}  // namespace
}  // namespace boardsim
