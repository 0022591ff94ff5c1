/// @file
/// clmctl blackbox plot: the trace as a picture.
#include "BlackBoxCommands.h"
#include "BlackBoxSource.h"
#include "BoardFile.h"
#include "CommandError.h"
#include "Gnuplot.h"
#include "Output.h"
#include "PictureFile.h"
#include "PlotColumns.h"
#include "PlotLegend.h"
#include "Screen.h"
#include "TerminalPlot.h"
#include "TracePlot.h"
#include "Values.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace clmctl {
namespace {

constexpr unsigned kLeastPixels = 300, kMostPixels = 16384;
constexpr unsigned kLeastCharacters = 20, kMostCharacters = 1000;

/// @return the size of one side; 0 when none is given
unsigned Side(const std::string& text, const char* option, unsigned least, unsigned most) {
  if (text.empty()) return 0;
  const u32 side = ParseNumber(text, std::string("size for ") + option);
  if (side >= least && side <= most) return side;
  throw CommandError(ExitCode::Usage, std::string(option) + " is " + std::to_string(least) + " to " +
                                          std::to_string(most) + ", not " + text);
}

std::string BoardTitle() {
  try {
    const BoardFile board = ParseBoardFile(ReadBlackBoxFile("", kBoardFileTag).text);
    std::string title;
    for (const BoardValue& value : board.values) {
      const bool named = value.label->key == "product_code" || value.label->key == "serial_number";
      if (value.label->section != BoardSection::Board || !named || !value.value) continue;
      title += (title.empty() ? "" : "  ") + *value.value;
    }
    return title;
  } catch (const CommandError&) {
    return "";  // a trace without a board file is a trace nevertheless
  }
}

std::string TitleOf(const PlotArguments& arguments, const BlackBoxSource& source) {
  if (!arguments.title.empty()) return arguments.title;
  const std::string board = arguments.file.empty() ? BoardTitle() : "";
  return board.empty() ? source.path : board;
}

void PrintPicture(const std::string& path, const char* format, const PictureSettings& settings,
                  const TraceStatistics& statistics, bool json) {
  if (!json) {
    WriteLine(Printable(path) + ": " + std::to_string(settings.size.width) + " x " +
              std::to_string(settings.size.height) + ", " + Counted(settings.columns.size(), "column") + ", " +
              Counted(statistics.good, "row"));
    return;
  }
  WriteJson({{"file", path},
             {"format", format},
             {"width_pixels", settings.size.width},
             {"height_pixels", settings.size.height},
             {"columns", settings.columns.size()},
             {"rows", statistics.good},
             {"rows_left_out", statistics.otherColumns + statistics.damaged + statistics.clockNotSet},
             {"gaps", statistics.gaps.size()}});
}

void DrawPicture(const PlotArguments& arguments, const TraceFile& trace, const TraceStatistics& statistics,
                 PictureSettings settings, bool json) {
  const bool png = !arguments.png.empty();
  const std::string& path = png ? arguments.png : arguments.svg;
  settings.format = png ? PictureFormat::Png : PictureFormat::Svg;
  const auto sensors =
      static_cast<std::size_t>(std::count_if(settings.columns.begin(), settings.columns.end(), [&](std::size_t column) {
        return trace.columns[column].quantity == Quantity::Temperature;
      }));
  settings.size = ReadableSize(sensors, settings.columns.size() - sensors);
  const unsigned width = Side(arguments.width, "--width", kLeastPixels, kMostPixels);
  const unsigned height = Side(arguments.height, "--height", kLeastPixels, kMostPixels);
  if (width != 0) settings.size.width = width;
  if (height != 0) settings.size.height = height;
  WritePicture(path, RunGnuplot(TracePlotScript(trace, statistics, settings)));
  PrintPicture(path, png ? "png" : "svg", settings, statistics, json);
}

void DrawOnTerminal(const PlotArguments& arguments, const TraceFile& trace, const TraceStatistics& statistics,
                    const PictureSettings& settings) {
  Screen screen = CurrentScreen();
  const unsigned width = Side(arguments.width, "--width", kLeastCharacters, kMostCharacters);
  const unsigned height = Side(arguments.height, "--height", kLeastCharacters, kMostCharacters);
  if (width != 0) screen.columns = width;
  if (height != 0) screen.rows = height;
  const std::vector<std::size_t> columns =
      arguments.sensors.empty() ? HottestColumns(trace, statistics) : settings.columns;
  const TerminalPlot plot(trace, statistics, columns, screen);
  WriteRaw(plot.Text(settings.title, RunGnuplot(plot.Script())));
  if (columns.size() < settings.columns.size()) {
    Diagnose("note: " + Counted(settings.columns.size() - columns.size(), "cooler sensor") +
             " not drawn; --sensors NAME,... chooses, --png and --svg draw all");
  }
}

/// @throw CommandError (refused) when there is nothing to draw
void RequireDrawable(const BlackBoxSource& source, const TraceFile& trace, const TraceStatistics& statistics) {
  if (CanBeDrawn(trace, statistics)) return;
  const std::string nothing = ": there is nothing to draw";
  const std::string others = OtherRowsText(statistics);
  std::string why = " has no rows" + nothing +
                    "; once temperatures are measured (`clmctl temp watch` does), the service keeps a row a minute, "
                    "and `clmctl blackbox store` has it write them";
  if (!others.empty()) why = " has no row that can be drawn (" + others + ")" + nothing;
  if (trace.columns.empty()) why = " has no columns" + nothing + "; is it a trace file?";
  throw CommandError(ExitCode::Refused, Printable(source.path) + why);
}

}  // namespace

void RunPlot(const PlotArguments& arguments, const Settings& settings) {
  const bool toFile = !arguments.png.empty() || !arguments.svg.empty();
  if (settings.json && !toFile) {
    throw CommandError(ExitCode::Usage, "--json tells of a picture in a file: give --png FILE or --svg FILE");
  }
  const BlackBoxSource source = ReadBlackBoxFile(arguments.file, kTraceFileTag);
  const TraceFile trace = ParseTraceFile(source.text);
  Diagnose(source.path, trace.problems);
  const TraceStatistics statistics = StatisticsOf(trace);
  RequireDrawable(source, trace, statistics);
  const PictureSettings picture{
      .format = PictureFormat::Png,
      .size = {},
      .title = TitleOf(arguments, source),
      .columns = arguments.sensors.empty() ? AllColumns(trace) : ColumnsNamed(trace, arguments.sensors)};
  if (toFile) {
    DrawPicture(arguments, trace, statistics, picture, settings.json);
  } else {
    DrawOnTerminal(arguments, trace, statistics, picture);
  }
  RequireNone(source.path, trace.problems);
}

}  // namespace clmctl
