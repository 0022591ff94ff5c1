/// @file
/// clmctl blackbox show: the files of the black box, readable.
#include "BlackBoxCommands.h"
#include "BlackBoxJson.h"
#include "BlackBoxSource.h"
#include "BoardText.h"
#include "CommandError.h"
#include "Output.h"
#include "Screen.h"
#include "TraceText.h"
#include "Values.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace clmctl {
namespace {

void WriteLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  WriteRaw(text);
}

void ShowBoard(const BlackBoxSource& source, bool json) {
  const BoardFile board = ParseBoardFile(source.text);
  Diagnose(source.path, board.problems);
  if (json) {
    WriteJson(BoardJson(board));
  } else {
    WriteLines(BoardLines(board, CurrentScreen()));
  }
  RequireNone(source.path, board.problems);
}

void ShowConfig(const BlackBoxSource& source, bool json) {
  const ConfigFile config = ParseConfigFile(source.text);
  Diagnose(source.path, config.problems);
  if (json) {
    WriteJson(ConfigJson(config));
  } else {
    WriteLines(ConfigLines(config));
  }
  RequireNone(source.path, config.problems);
}

void WriteTraceJson(const TraceFile& trace, const TraceStatistics& statistics, bool rows) {
  for (std::size_t i = 0; !rows && i < trace.columns.size(); ++i) {
    if (!WriteJson(TraceColumnJson(trace.columns[i], statistics.columns[i]))) return;
  }
  for (std::size_t i = 0; rows && i < trace.rows.size(); ++i) {
    if (!WriteJson(TraceRowJson(trace, trace.rows[i]))) return;
  }
}

void ShowTrace(const BlackBoxSource& source, const ShowArguments& arguments, bool json) {
  TraceFile trace = ParseTraceFile(source.text);
  Diagnose(source.path, trace.problems);
  if (arguments.last) {
    const std::size_t last = ParseCount(*arguments.last, "--last");
    trace.rows.erase(trace.rows.begin(),
                     trace.rows.end() - static_cast<std::ptrdiff_t>(std::min(last, trace.rows.size())));
  }
  const TraceStatistics statistics = StatisticsOf(trace);
  if (json) {
    WriteTraceJson(trace, statistics, arguments.rows);
  } else {
    const Screen screen = CurrentScreen();
    WriteLines(TraceHeadLines(trace, statistics));
    WriteLine("");
    WriteLines(arguments.rows ? TraceRowLines(trace, screen) : TraceSummaryLines(trace, statistics, screen));
  }
  RequireNone(source.path, trace.problems);
}

}  // namespace

void RunShow(const ShowArguments& arguments, const Settings& settings) {
  if (arguments.kind != "trace" && (arguments.rows || arguments.last)) {
    throw CommandError(ExitCode::Usage, std::string(arguments.rows ? "--rows" : "--last") +
                                            " is about the rows of a trace: give it to `clmctl blackbox show trace`");
  }
  if (arguments.kind == "board") {
    ShowBoard(ReadBlackBoxFile(arguments.file, kBoardFileTag), settings.json);
  } else if (arguments.kind == "config") {
    ShowConfig(ReadBlackBoxFile(arguments.file, kConfigFileTag), settings.json);
  } else if (arguments.kind == "trace") {
    ShowTrace(ReadBlackBoxFile(arguments.file, kTraceFileTag), arguments, settings.json);
  } else {
    throw CommandError(ExitCode::Usage, "'" + Printable(arguments.kind) + "' is no file: give board, trace or config");
  }
}

}  // namespace clmctl
