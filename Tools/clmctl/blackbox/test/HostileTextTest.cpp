/// Files with random damage: whatever is in them, they are read to their end and shown without driving the terminal.
#include "BlackBoxJson.h"
#include "BoardSample.h"
#include "BoardText.h"
#include "PlotColumns.h"
#include "TerminalPlot.h"
#include "TracePlot.h"
#include "TraceSample.h"
#include "TraceText.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <random>

namespace clmctl {
namespace {

constexpr int kFiles = 400;

/// @return @p text with some bytes changed, taken away, doubled or put in
std::string Damaged(std::string text, std::mt19937& random) {
  const auto below = [&random](std::size_t end) { return static_cast<std::size_t>(random() % end); };
  static const std::string kLikely = "\n\t\r\0\x1b:#-9error ZT\xff\xc3(";
  for (std::size_t changes = 1 + below(12); changes != 0 && !text.empty(); --changes) {
    const std::size_t at = below(text.size());
    const char byte = below(2) == 0 ? kLikely[below(kLikely.size())] : static_cast<char>(below(256));
    switch (below(4)) {
      case 0:
        text[at] = byte;
        break;
      case 1:
        text.erase(at, 1 + below(40));
        break;
      case 2:
        text.insert(at, text.substr(below(text.size()), below(60)));
        break;
      default:
        text.insert(at, 1, byte);
    }
  }
  return text;
}

bool IsHarmless(const std::vector<std::string>& lines) {
  return std::all_of(lines.begin(), lines.end(), [](const std::string& line) { return Printable(line) == line; });
}

std::string Dump(const nlohmann::ordered_json& object) {
  return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

TEST(HostileText, InATraceIsShownAndDrawnHarmlessly) {
  std::mt19937 random(1);
  std::string sample = kTraceHead;
  for (int i = 0; i < 12; ++i) sample += Row(10 + i * 2, "41500\terror\t3000\t");
  for (int i = 0; i < kFiles; ++i) {
    const TraceFile trace = ParseTraceFile(Damaged(sample, random));
    const TraceStatistics statistics = StatisticsOf(trace);
    EXPECT_TRUE(IsHarmless(TraceHeadLines(trace, statistics)));
    EXPECT_TRUE(IsHarmless(TraceSummaryLines(trace, statistics, Screen{})));
    EXPECT_TRUE(IsHarmless(TraceRowLines(trace, {.columns = 80})));
    for (const FileProblem& problem : trace.problems) EXPECT_EQ(Printable(problem.text), problem.text);
    for (const TraceRow& row : trace.rows) EXPECT_FALSE(Dump(TraceRowJson(trace, row)).empty());
    if (!CanBeDrawn(trace, statistics)) continue;
    const TerminalPlot plot(trace, statistics, HottestColumns(trace, statistics), Screen{});
    EXPECT_EQ(plot.Script().find('`'), std::string::npos);
    EXPECT_FALSE(
        TracePlotScript(trace, statistics, {.size = {100, 100}, .title = "", .columns = AllColumns(trace)}).empty());
  }
}

TEST(HostileText, InABoardFileIsShownHarmlessly) {
  std::mt19937 random(2);
  for (int i = 0; i < kFiles; ++i) {
    const BoardFile board = ParseBoardFile(Damaged(kBoardFile + kBoardProductData, random));
    EXPECT_TRUE(IsHarmless(BoardLines(board, Screen{})));
    EXPECT_TRUE(IsHarmless(BoardLines(board, {.columns = 80})));
    for (const FileProblem& problem : board.problems) EXPECT_EQ(Printable(problem.text), problem.text);
    EXPECT_FALSE(Dump(BoardJson(board)).empty());
  }
}

TEST(HostileText, InAConfigurationFileIsShownHarmlessly) {
  std::mt19937 random(3);
  const std::string sample = "# temperature log for blackbox\ntemp=/ffs/t\n# alarm log for blackbox\nalarm=/ffs/a\n";
  for (int i = 0; i < kFiles; ++i) {
    const ConfigFile config = ParseConfigFile(Damaged(sample, random));
    EXPECT_TRUE(IsHarmless(ConfigLines(config)));
    for (const FileProblem& problem : config.problems) EXPECT_EQ(Printable(problem.text), problem.text);
    EXPECT_FALSE(Dump(ConfigJson(config)).empty());
  }
}

}  // namespace
}  // namespace clmctl
