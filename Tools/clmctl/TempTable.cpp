#include "TempTable.h"

#include "TempView.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace clmctl {
namespace {

constexpr std::size_t kCourseLength = 60;
/// Columns of the name and the temperature, which are always there.
constexpr unsigned kBaseWidth = 18 + 13;
/// Columns of the extremes, and the terminal's width from which they are shown.
constexpr unsigned kExtremesWidth = 11 + 11;
constexpr unsigned kExtremesFrom = 72;
/// "ok" before the trend.
constexpr unsigned kStateWidth = 4;
/// A course that moves less than this looks flat: noise is no trend.
constexpr double kSmallestSpan = 1.0;

constexpr std::array<std::string_view, 8> kBars = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::array<std::string_view, 8> kAsciiBars = {"_", ".", "-", "~", "=", "+", "*", "#"};

std::string Celsius(double value) {
  char text[48];
  std::snprintf(text, sizeof text, "%.3f", value);
  return text;
}

std::string Padded(const std::string& text, unsigned width, bool right) {
  if (text.size() >= width) return text;
  const std::string space(width - text.size(), ' ');
  return right ? space + text : text + space;
}

std::string Coloured(const std::string& text, std::string_view code, const Canvas& canvas) {
  return canvas.colours ? "\x1b[" + std::string(code) + "m" + text + "\x1b[0m" : text;
}

std::string Cut(const std::string& text, unsigned width) { return text.substr(0, width); }

std::string Trend(const std::deque<double>& course, unsigned width, bool utf8) {
  const auto& bars = utf8 ? kBars : kAsciiBars;
  const std::size_t shown = std::min<std::size_t>(course.size(), width);
  std::string text;
  if (shown != 0) {
    const auto first = course.end() - static_cast<std::ptrdiff_t>(shown);
    const auto [low, high] = std::minmax_element(first, course.end());
    const double span = std::max(*high - *low, kSmallestSpan);
    const double floor = (*high + *low - span) / 2;
    for (auto value = first; value != course.end(); ++value) {
      const auto level = static_cast<std::size_t>((*value - floor) / span * static_cast<double>(bars.size()));
      text += bars[std::min(level, bars.size() - 1)];
    }
  }
  return text;
}

/// @return columns behind the numbers: a good sensor's state and trend, or a failed one's words
unsigned RoomForState(const Canvas& canvas) {
  const unsigned used = kBaseWidth + (canvas.columns >= kExtremesFrom ? kExtremesWidth : 0) + 2;
  return canvas.columns > used ? canvas.columns - used : 0;
}

std::string Header(const Canvas& canvas) {
  std::string text = Padded("SENSOR", 18, false) + Padded("NOW", 11, true) + "  ";
  if (canvas.columns >= kExtremesFrom) text += Padded("LOWEST", 11, true) + Padded("HIGHEST", 11, true);
  return Cut(text + "  STATE, TREND", canvas.columns);
}

}  // namespace

void TempTable::Add(const Indication& indication, const std::string& time) {
  ++m_count;
  m_lastTime = time;
  m_note.clear();
  m_rows.resize(indication.readings.size());
  for (std::size_t i = 0; i < m_rows.size(); ++i) {
    Row& row = m_rows[i];
    const Reading& reading = indication.readings[i];
    if (row.last.name != reading.name) row = Row{};
    row.last = reading;
    if (!reading.valid) continue;
    row.lowest = row.course.empty() ? reading.celsius : std::min(row.lowest, reading.celsius);
    row.highest = row.course.empty() ? reading.celsius : std::max(row.highest, reading.celsius);
    row.course.push_back(reading.celsius);
    if (row.course.size() > kCourseLength) row.course.pop_front();
  }
}

std::string TempTable::DrawRow(const Row& row, const Canvas& canvas) const {
  const bool known = !row.course.empty();
  const std::string now = row.last.valid ? Celsius(row.last.celsius) : "-";
  if (canvas.columns < kBaseWidth) return Cut(SensorText(row.last.name) + " " + now, canvas.columns);
  std::string text = Padded(Cut(SensorText(row.last.name), 17), 18, false);
  const std::string unit = !row.last.valid ? "   " : canvas.utf8 ? " °C" : "  C";
  text += Padded(now, 10, true) + unit;
  if (canvas.columns >= kExtremesFrom) {
    text += Padded(known ? Celsius(row.lowest) : "-", 11, true) + Padded(known ? Celsius(row.highest) : "-", 11, true);
  }
  const unsigned room = RoomForState(canvas);
  if (room < 2) return text;
  if (!row.last.valid) return text + "  " + Coloured(Cut(StateText(row.last), room), "1;31", canvas);
  text += "  " + Coloured("ok", "32", canvas);
  if (room <= kStateWidth) return text;
  return text + "  " + Coloured(Trend(row.course, room - kStateWidth, canvas.utf8), "36", canvas);
}

std::vector<std::string> TempTable::Draw(const Canvas& canvas) const {
  std::string status = m_count == 0 ? "waiting for the first indication"
                                    : std::to_string(m_count) + (m_count == 1 ? " indication" : " indications") +
                                          ", last at " + m_lastTime;
  std::vector<std::string> lines;
  lines.push_back(Coloured(Cut(m_title, canvas.columns), "1", canvas));
  lines.push_back(Cut(status + "   (^C stops)", canvas.columns));
  lines.push_back("");
  lines.push_back(Coloured(Header(canvas), "4", canvas));
  const std::size_t room = canvas.rows > lines.size() + 2 ? canvas.rows - lines.size() - 2 : 0;
  const std::size_t shown = m_rows.size() <= room ? m_rows.size() : room;
  for (std::size_t i = 0; i < shown; ++i) lines.push_back(DrawRow(m_rows[i], canvas));
  if (shown < m_rows.size()) {
    lines.push_back(Cut("... and " + std::to_string(m_rows.size() - shown) + " more", canvas.columns));
  }
  if (!m_note.empty()) lines.push_back(Coloured(Cut(m_note, canvas.columns), "33", canvas));
  if (lines.size() > canvas.rows) lines.resize(canvas.rows);
  return lines;
}

}  // namespace clmctl
