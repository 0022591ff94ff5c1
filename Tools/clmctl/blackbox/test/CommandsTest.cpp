#include "BlackBoxCommands.h"
#include "BoardSample.h"
#include "CommandError.h"
#include "TraceSample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace clmctl {
namespace {

namespace fs = std::filesystem;

ShowArguments Show(const std::string& kind, const std::string& file) {
  ShowArguments arguments;
  arguments.kind = kind;
  arguments.file = file;
  return arguments;
}

PlotArguments Plot(const std::string& file) {
  PlotArguments arguments;
  arguments.file = file;
  return arguments;
}

/// Commands on files of a folder of their own, and what they write.
class Commands : public testing::Test {
 protected:
  Commands() {
    char name[] = "/tmp/commands_XXXXXX";
    m_folder = mkdtemp(name);
  }
  ~Commands() override { fs::remove_all(m_folder); }

  std::string File(const std::string& text) const {
    std::ofstream(m_folder + "/file") << text;
    return m_folder + "/file";
  }

  /// @return how the command ends
  template <typename Run, typename Arguments>
  ExitCode End(Run run, const Arguments& arguments, bool json = false) {
    Settings settings;
    settings.json = json;
    ExitCode end = ExitCode::Done;
    std::string why;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    try {
      run(arguments, settings);
    } catch (const CommandError& error) {
      end = error.Code();
      why = error.what();
    }
    m_out = testing::internal::GetCapturedStdout();
    m_errors = testing::internal::GetCapturedStderr() + why;
    return end;
  }

  std::string m_folder;
  std::string m_out;
  std::string m_errors;
};

TEST_F(Commands, ShowABoardFile) {
  EXPECT_EQ(End(RunShow, Show("board", File(kBoardFile))), ExitCode::Done);
  EXPECT_NE(m_out.find("472573A.101"), std::string::npos);
  EXPECT_EQ(m_errors, "");
}

TEST_F(Commands, ShowWhatCanBeReadOfADamagedFileAndEndAsRefused) {
  const std::string file = File(With(kBoardFile, "ISTI: 3", "rubbish"));
  EXPECT_EQ(End(RunShow, Show("board", file)), ExitCode::Refused);
  EXPECT_NE(m_out.find("472573A.101"), std::string::npos);
  EXPECT_NE(m_errors.find(file + ":4: is no line of a board file"), std::string::npos) << m_errors;
}

TEST_F(Commands, TellNoMoreThanTenProblems) {
  std::string text;
  for (int i = 0; i < 30; ++i) text += "rubbish\n";
  EXPECT_EQ(End(RunShow, Show("board", File(text))), ExitCode::Refused);
  EXPECT_EQ(std::count(m_errors.begin(), m_errors.end(), '\n'), 11);
  EXPECT_NE(m_errors.find("... and "), std::string::npos) << m_errors;
}

TEST_F(Commands, ShowTheNewestRowsOfATrace) {
  const std::string file = File(kTraceHead + Row(5, "1\t2\t3\t") + Row(6, "41500\t2\t3\t"));
  ShowArguments arguments = Show("trace", file);
  arguments.last = "1";
  arguments.rows = true;
  EXPECT_EQ(End(RunShow, arguments), ExitCode::Done);
  EXPECT_EQ(m_out.find("14:05"), std::string::npos);
  EXPECT_NE(m_out.find("14:06:09  41.500"), std::string::npos) << m_out;
}

TEST_F(Commands, ShowATraceAsOneObjectALine) {
  const std::string file = File(kTraceHead + Row(5, "1\t2\t3\t") + Row(6, "41500\t2\t3\t"));
  EXPECT_EQ(End(RunShow, Show("trace", file), true), ExitCode::Done);
  EXPECT_EQ(std::count(m_out.begin(), m_out.end(), '\n'), 3);
  ShowArguments rows = Show("trace", file);
  rows.rows = true;
  EXPECT_EQ(End(RunShow, rows, true), ExitCode::Done);
  EXPECT_EQ(std::count(m_out.begin(), m_out.end(), '\n'), 2);
}

TEST_F(Commands, RefuseToShowNoRows) {
  for (const char* const last : {"0", ""}) {
    ShowArguments arguments = Show("trace", File(kTraceHead + Row(5, "1\t2\t3\t")));
    arguments.last = last;
    EXPECT_EQ(End(RunShow, arguments), ExitCode::Usage);
    EXPECT_NE(m_errors.find("1 or more"), std::string::npos) << m_errors;
  }
}

TEST_F(Commands, RefuseRowsOfWhatHasNone) {
  for (const char* const kind : {"board", "config"}) {
    ShowArguments rows = Show(kind, File(kBoardFile)), last = rows;
    rows.rows = true;
    last.last = "1";
    for (const ShowArguments& arguments : {rows, last}) {
      EXPECT_EQ(End(RunShow, arguments), ExitCode::Usage) << kind;
      EXPECT_NE(m_errors.find("show trace"), std::string::npos) << m_errors;
    }
  }
}

TEST_F(Commands, RefuseAnUnknownKindAndAMissingFile) {
  EXPECT_EQ(End(RunShow, Show("tr", File(""))), ExitCode::Usage);
  EXPECT_EQ(End(RunShow, Show("board", m_folder + "/missing")), ExitCode::Usage);
}

TEST_F(Commands, NeedABoardWhereNoFileIsNamed) {
  unsetenv("HWAPI_BOARD");
  setenv("HWAPI_RUN", m_folder.c_str(), 1);
  if (fs::exists("/etc/hwapi/board.toml")) GTEST_SKIP() << "this machine is a board";
  EXPECT_EQ(End(RunShow, ShowArguments{}), ExitCode::Unreachable);
}

TEST_F(Commands, PlotRefusesImpossibleSizes) {
  PlotArguments arguments = Plot(File(kTraceHead + Row(5, "1\t2\t3\t")));
  arguments.png = m_folder + "/p.png";
  for (const char* const width : {"0", "299", "16385", "x", "-1"}) {
    arguments.width = width;
    EXPECT_EQ(End(RunPlot, arguments), ExitCode::Usage);
  }
  EXPECT_FALSE(fs::exists(arguments.png));
}

TEST_F(Commands, PlotTellsOfAPictureOnlyWhereThereIsOne) {
  EXPECT_EQ(End(RunPlot, Plot(File(kTraceHead)), true), ExitCode::Usage);
}

TEST_F(Commands, PlotOfATraceWithoutColumnsSaysSo) {
  std::string rowsOnly = kTraceHead + Row(1, "");
  for (const char* const column : {"KEL_MCU\t", "KEL\t", "FAN_1\t", "39000\t", "43500\t", "-\t"}) {
    for (std::size_t at; (at = rowsOnly.find(column)) != std::string::npos;) rowsOnly.erase(at, std::strlen(column));
  }
  for (const std::string& text : {std::string("rubbish\n"), rowsOnly}) {
    EXPECT_EQ(End(RunPlot, Plot(File(text))), ExitCode::Refused) << text;
    EXPECT_NE(m_errors.find("has no columns: there is nothing to draw"), std::string::npos) << m_errors;
  }
}

TEST_F(Commands, PlotOfATraceWithoutRowsSaysSoWhereverItWouldBeDrawn) {
  PlotArguments terminal = Plot(File(kTraceHead)), png = terminal, svg = terminal;
  png.png = m_folder + "/p.png";
  svg.svg = m_folder + "/p.svg";
  for (const PlotArguments& arguments : {terminal, png, svg}) {
    EXPECT_EQ(End(RunPlot, arguments), ExitCode::Refused);
    EXPECT_EQ(m_out, "");
    EXPECT_NE(m_errors.find("has no rows: there is nothing to draw"), std::string::npos) << m_errors;
  }
  EXPECT_FALSE(fs::exists(png.png) || fs::exists(svg.svg));
}

TEST_F(Commands, PlotOfATraceWithoutAGoodRowSaysWhatTheRowsAre) {
  EXPECT_EQ(End(RunPlot, Plot(File(kTraceHead + Row(1, "1\t") + Row(2, "1\t")))), ExitCode::Refused);
  EXPECT_NE(m_errors.find("2 rows of an earlier set of sensors"), std::string::npos) << m_errors;
}

}  // namespace
}  // namespace clmctl
