#include "TraceFile.h"

#include "Arguments.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr std::string_view kMinMaxHeading = "#MINMAX: Minimum and maximum measured temperatures";
constexpr std::string_view kTraceMark = "#TEMPANDSPEED";
constexpr std::string_view kTraceHeading = "#TEMPANDSPEED: temperatures and fan speeds";
constexpr std::string_view kSensorNames = "#\t";
constexpr std::string_view kMinimums = "MIN:\t";
constexpr std::string_view kMaximums = "MAX:\t";
constexpr std::string_view kColumnNames = "#                  \t";
constexpr std::string_view kFailedReading = "error";
constexpr std::string_view kNeverMeasured = "-";
/// Lines before the trace's heading.
constexpr std::size_t kLinesBeforeTrace = 5;

using Fields = std::vector<std::string_view>;

/// @return the fields of a line that ends each of them with a tab; nothing for another line
std::optional<Fields> FieldsOf(std::string_view line) {
  if (!line.empty() && line.back() != '\t') return std::nullopt;
  Fields fields;
  for (std::size_t end = 0; !line.empty(); line.remove_prefix(end + 1)) {
    end = line.find('\t');
    fields.push_back(line.substr(0, end));
  }
  return fields;
}

class TraceParser {
 public:
  explicit TraceParser(std::string_view text) : m_source(text) {}

  TraceFile Parse() {
    const auto& lines = m_source.lines;
    const auto mark = static_cast<std::size_t>(
        std::find_if(lines.begin(), lines.end(), [](auto line) { return line.starts_with(kTraceMark); }) -
        lines.begin());
    if (mark == lines.size()) {
      Problem(0, "is no trace file: no line begins with " + std::string(kTraceMark));
      return m_trace;
    }
    ParseHead(mark);
    for (std::size_t i = mark + 2; i < lines.size(); ++i) m_trace.rows.push_back(ParseRow(i));
    return m_trace;
  }

 private:
  std::string_view Line(std::size_t index) const {
    return index < m_source.lines.size() ? m_source.lines[index] : std::string_view();
  }
  void Problem(std::size_t index, std::string text) { m_trace.problems.push_back({index + 1, std::move(text)}); }

  void Expect(std::size_t index, std::string_view text) {
    if (Line(index) == text) return;
    Problem(index, "should be " + (text.empty() ? "empty" : Quoted(text)) + ", is " + Quoted(Line(index)));
  }

  /// @return the fields behind the line's beginning; nothing, and a problem, when it is another line
  std::optional<Fields> Row(std::size_t index, std::string_view beginning, std::string_view what) {
    if (!Line(index).starts_with(beginning)) {
      Problem(index, "should be the " + std::string(what) + ", is " + Quoted(Line(index)));
      return std::nullopt;
    }
    auto fields = FieldsOf(Line(index).substr(beginning.size()));
    if (!fields) Problem(index, "the " + std::string(what) + " do not end with a tab");
    return fields;
  }

  void ParseHead(std::size_t mark) {
    Expect(mark, kTraceHeading);
    const auto columns = Row(mark + 1, kColumnNames, "names of the columns");
    if (mark != kLinesBeforeTrace) {
      Problem(mark, "the trace begins here, not in line 6: the head is damaged, the columns are not known");
      return;
    }
    Expect(0, kMinMaxHeading);
    Expect(4, "");
    const auto sensors = Row(1, kSensorNames, "names of the sensors");
    if (!columns || !sensors) return;
    if (columns->size() < sensors->size() || !std::equal(sensors->begin(), sensors->end(), columns->begin())) {
      Problem(mark + 1, "the columns do not begin with the sensors of line 2: they are not known");
      return;
    }
    for (std::size_t i = 0; i < columns->size(); ++i) {
      const auto quantity = i < sensors->size() ? Quantity::Temperature : Quantity::FanSpeed;
      m_trace.columns.push_back(
          {.name = std::string((*columns)[i]), .quantity = quantity, .minimum = {}, .maximum = {}});
    }
    ParseExtremes(2, kMinimums, "minimums", sensors->size(), &TraceColumn::minimum);
    ParseExtremes(3, kMaximums, "maximums", sensors->size(), &TraceColumn::maximum);
  }

  void ParseExtremes(std::size_t index, std::string_view beginning, std::string_view what, std::size_t count,
                     std::optional<i32> TraceColumn::*member) {
    const auto fields = Row(index, beginning, what);
    if (!fields) return;
    if (fields->size() != count) {
      Problem(index, "has " + std::to_string(fields->size()) + " " + std::string(what) + " for " +
                         std::to_string(count) + " sensors");
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {
      TraceColumn& column = m_trace.columns[i];
      column.*member = commandline::SignedFrom((*fields)[i]);
      if (!(column.*member) && (*fields)[i] != kNeverMeasured) {
        Problem(index, Quoted((*fields)[i]) + " of " + Quoted(column.name) + " is neither a number nor '-'");
      }
    }
  }

  TraceRow Damaged(std::size_t index, std::string why) {
    Problem(index, std::move(why));
    return {
        .line = index + 1, .state = RowState::Damaged, .time = {}, .readings = {}, .text = std::string(Line(index))};
  }

  TraceRow ParseRow(std::size_t index) {
    const std::string_view line = Line(index);
    if (m_source.cut && index + 1 == m_source.lines.size()) return Damaged(index, "is cut off");
    const std::optional<UtcTime> time = ParseUtcTime(line.substr(0, kUtcTimeLength));
    if (!time) return Damaged(index, "does not begin with a time: " + Quoted(line.substr(0, kUtcTimeLength)));
    if (!line.substr(kUtcTimeLength).starts_with('\t')) return Damaged(index, "has no tab behind its time");
    const auto fields = FieldsOf(line.substr(kUtcTimeLength + 1));
    if (!fields) return Damaged(index, "does not end with a tab");
    TraceRow row{.line = index + 1, .state = RowState::Good, .time = *time, .readings = {}, .text = std::string(line)};
    for (const std::string_view field : *fields) {
      const std::optional<i32> value = commandline::SignedFrom(field);
      row.readings.push_back({.state = value ? ReadingState::Good : ReadingState::Failed, .value = value.value_or(0)});
      if (value || field == kFailedReading) continue;
      return Damaged(index, "value " + std::to_string(row.readings.size()) + ", " + Quoted(field) +
                                ", is neither a number nor 'error'");
    }
    if (row.readings.size() != m_trace.columns.size()) {
      row.state = RowState::OtherColumns;
      return row;
    }
    for (std::size_t i = 0; i < row.readings.size(); ++i) {
      if (IsBeforeFirstMeasurement(row.readings[i], m_trace.columns[i])) row.readings[i].state = ReadingState::NotYet;
    }
    return row;
  }

  /// A sensor starts as zero; where its extremes leave zero out, nobody has measured that.
  static bool IsBeforeFirstMeasurement(const TraceReading& reading, const TraceColumn& column) {
    if (column.quantity != Quantity::Temperature || reading.state != ReadingState::Good || reading.value != 0) {
      return false;
    }
    return !column.minimum || !column.maximum || *column.minimum > 0 || *column.maximum < 0;
  }

  FileLines m_source;
  TraceFile m_trace;
};

}  // namespace

TraceFile ParseTraceFile(std::string_view text) { return TraceParser(text).Parse(); }

}  // namespace clmctl
