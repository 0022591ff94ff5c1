#include "PlotColumns.h"

#include "CommandError.h"
#include "Screen.h"

#include <algorithm>
#include <numeric>

namespace clmctl {
namespace {

std::string NamesOf(const TraceFile& trace) {
  std::string names;
  for (const TraceColumn& column : trace.columns) names += (names.empty() ? "" : ", ") + Printable(column.name);
  return names.empty() ? "none" : names;
}

}  // namespace

bool CanBeDrawn(const TraceFile& trace, const TraceStatistics& statistics) {
  return !trace.columns.empty() && statistics.good != 0;
}

std::vector<std::size_t> AllColumns(const TraceFile& trace) {
  std::vector<std::size_t> columns(trace.columns.size());
  std::iota(columns.begin(), columns.end(), std::size_t{0});
  return columns;
}

std::vector<std::size_t> ColumnsNamed(const TraceFile& trace, const std::string& names) {
  std::vector<std::size_t> columns;
  for (std::size_t begin = 0; begin <= names.size();) {
    const std::size_t end = std::min(names.find(',', begin), names.size());
    const std::string name = names.substr(begin, end - begin);
    const std::size_t before = columns.size();
    for (std::size_t i = 0; i < trace.columns.size(); ++i) {
      if (trace.columns[i].name == name) columns.push_back(i);
    }
    if (columns.size() == before) {
      throw CommandError(ExitCode::Usage,
                         "the trace has no column '" + Printable(name) + "'; its columns are " + NamesOf(trace));
    }
    begin = end + 1;
  }
  std::sort(columns.begin(), columns.end());
  columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
  return columns;
}

std::vector<std::size_t> HottestColumns(const TraceFile& trace, const TraceStatistics& statistics) {
  std::vector<std::size_t> sensors, columns;
  for (std::size_t i = 0; i < trace.columns.size(); ++i) {
    (trace.columns[i].quantity == Quantity::Temperature ? sensors : columns).push_back(i);
  }
  std::stable_sort(sensors.begin(), sensors.end(), [&](std::size_t a, std::size_t b) {
    return statistics.columns[a].maximum > statistics.columns[b].maximum;
  });
  sensors.resize(std::min(sensors.size(), kReadableSensors));
  columns.insert(columns.begin(), sensors.begin(), sensors.end());
  return columns;
}

}  // namespace clmctl
