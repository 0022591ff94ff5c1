// The examples of the black box's pages are files that the client reads, and it shows them as the pages say.
#include "BlackBoxCommands.h"
#include "BoardFile.h"
#include "CommandError.h"
#include "ConfigFile.h"
#include "Page.h"
#include "TraceFile.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>

namespace clmctl {
namespace {

std::string ProblemsOf(const std::vector<FileProblem>& problems) {
  std::string text;
  for (const FileProblem& problem : problems) text += std::to_string(problem.line) + ": " + problem.text + "\n";
  return text;
}

std::string TraceExample() { return page::Replaced(page::SectionOf("trace-file.md", "Example").Block(), "→", "\t"); }

TEST(TraceFilePage, ExampleIsReadWithoutAProblem) {
  const TraceFile trace = ParseTraceFile(TraceExample());
  EXPECT_EQ(ProblemsOf(trace.problems), "");
  EXPECT_EQ(trace.columns.size(), 3u);
}

TEST(TraceFilePage, ExamplesFirstRowHasOtherColumns) {
  const TraceFile trace = ParseTraceFile(TraceExample());
  ASSERT_EQ(trace.rows.size(), 3u);
  EXPECT_EQ(trace.rows[0].state, RowState::OtherColumns);
  EXPECT_EQ(trace.rows[1].state, RowState::Good);
  EXPECT_EQ(trace.rows[2].state, RowState::Good);
}

/// The page shows a command line and what it prints.
TEST(TraceFilePage, ExampleIsShownAsThePageSays) {
  char folder[] = "/tmp/page_XXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  const std::string file = std::string(folder) + "/example";
  std::ofstream(file) << TraceExample();
  ShowArguments arguments;
  arguments.kind = "trace";
  arguments.file = file;
  arguments.rows = true;
  testing::internal::CaptureStdout();
  RunShow(arguments, Settings{});
  const std::string shown = testing::internal::GetCapturedStdout();
  std::filesystem::remove_all(folder);
  EXPECT_EQ("$ clmctl blackbox show trace --file example --rows\n" + shown,
            page::SectionOf("trace-file.md", "Example").Block(1));
}

TEST(BoardFilePage, ExampleIsReadWithoutAProblem) {
  const BoardFile board = ParseBoardFile(page::SectionOf("board-file.md", "Example").Block());
  EXPECT_EQ(ProblemsOf(board.problems), "");
  for (const BoardValue& value : board.values) {
    EXPECT_EQ(value.present, value.label->section == BoardSection::Board) << value.label->label;
  }
}

TEST(BoardFilePage, ExampleHasTheTwoResetsThatThePageExplains) {
  const BoardFile board = ParseBoardFile(page::SectionOf("board-file.md", "Example").Block());
  ASSERT_EQ(board.resets.size(), 2u);
  EXPECT_FALSE(board.resets[0].damaged);
  EXPECT_EQ(board.resets[0].extendedInfo, "night upgrade");
  EXPECT_FALSE(board.resets[1].damaged);
  EXPECT_TRUE(board.resets[1].fallback);
  EXPECT_EQ(board.resets[1].CounterValue(), 7);
}

TEST(ConfigurationFilePage, ExampleIsReadWithoutAProblem) {
  const ConfigFile config = ParseConfigFile(page::SectionOf("configuration-file.md", "Example").Block());
  EXPECT_EQ(ProblemsOf(config.problems), "");
  for (const auto& path : config.paths) EXPECT_TRUE(path.has_value());
}

}  // namespace
}  // namespace clmctl
