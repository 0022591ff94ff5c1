#include "TempTable.h"

#include "TableHead.h"
#include "TempText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

namespace clmctl {
namespace {

constexpr std::size_t kCourseLength = 60;
/// Columns of the name and the temperature, which are always there.
constexpr std::size_t kBaseWidth = 18 + 13;
/// Columns of the extremes, and the terminal's width from which they are shown.
constexpr std::size_t kExtremesWidth = 11 + 11;
constexpr std::size_t kExtremesFrom = 72;
/// "ok" before the trend.
constexpr std::size_t kStateWidth = 4;
/// A course that moves less than this looks flat: noise is no trend.
constexpr double kSmallestSpan = 1.0;

constexpr std::array<std::string_view, 8> kBars = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::array<std::string_view, 8> kAsciiBars = {"_", ".", "-", "~", "=", "+", "*", "#"};

std::string Celsius(double value) {
  char text[48];
  std::snprintf(text, sizeof text, "%.3f", value);
  return text;
}

std::string Trend(const std::deque<double>& course, std::size_t width, bool utf8) {
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
std::size_t RoomForState(const Screen& screen) {
  const std::size_t used = kBaseWidth + (screen.columns >= kExtremesFrom ? kExtremesWidth : 0) + 2;
  return screen.columns > used ? screen.columns - used : 0;
}

std::string Header(const Screen& screen) {
  std::string text = LeftAligned("SENSOR", 18) + RightAligned("NOW", 11) + "  ";
  if (screen.columns >= kExtremesFrom) text += RightAligned("LOWEST", 11) + RightAligned("HIGHEST", 11);
  return text + "  STATE, TREND";
}

}  // namespace

void TempTable::Add(const TempIndication& indication, const std::string& time) {
  ++m_count;
  m_lastTime = time;
  std::vector<Row> rows;
  rows.reserve(indication.readings.size());
  for (const TempReading& reading : indication.readings) {
    Row& row = rows.emplace_back(TakeRow(reading.name, rows.size()));
    row.last = reading;
    if (!reading.valid) continue;
    row.lowest = row.course.empty() ? reading.celsius : std::min(row.lowest, reading.celsius);
    row.highest = row.course.empty() ? reading.celsius : std::max(row.highest, reading.celsius);
    row.course.push_back(reading.celsius);
    if (row.course.size() > kCourseLength) row.course.pop_front();
  }
  m_rows = std::move(rows);
}

TempTable::Row TempTable::TakeRow(u32 name, std::size_t index) {
  const auto isOf = [name](const Row& row) { return row.last.name == name; };
  const auto same = index < m_rows.size() && isOf(m_rows[index]) ? m_rows.begin() + static_cast<std::ptrdiff_t>(index)
                                                                 : std::find_if(m_rows.begin(), m_rows.end(), isOf);
  return same != m_rows.end() ? std::exchange(*same, Row{}) : Row{};
}

std::string TempTable::DrawRow(const Row& row, const Screen& screen) const {
  const bool known = !row.course.empty();
  const std::string now = row.last.valid ? Celsius(row.last.celsius) : "-";
  if (screen.columns < kBaseWidth) return Cut(SensorText(row.last.name) + " " + now, screen.columns);
  std::string text = LeftAligned(Cut(SensorText(row.last.name), 17), 18);
  const std::string unit = !row.last.valid ? "   " : screen.utf8 ? " °C" : "  C";
  text += RightAligned(now, 10) + unit;
  if (screen.columns >= kExtremesFrom) {
    text += RightAligned(known ? Celsius(row.lowest) : "-", 11) + RightAligned(known ? Celsius(row.highest) : "-", 11);
  }
  const std::size_t room = RoomForState(screen);
  if (room < 2) return text;
  if (!row.last.valid) return text + "  " + Coloured(Cut(StateText(row.last), room), "1;31", screen);
  text += "  " + Coloured("ok", "32", screen);
  if (room <= kStateWidth) return text;
  return text + "  " + Coloured(Trend(row.course, room - kStateWidth, screen.utf8), "36", screen);
}

std::vector<std::string> TempTable::Draw(const Screen& screen) const {
  std::vector<std::string> lines = TableHead(m_title, CountText(m_count, m_lastTime), Header(screen), screen);
  const std::size_t room = screen.rows > lines.size() ? screen.rows - lines.size() : 0;
  const std::size_t shown = m_rows.size() <= room ? m_rows.size() : std::max<std::size_t>(room, 1) - 1;
  for (std::size_t i = 0; i < shown; ++i) lines.push_back(DrawRow(m_rows[i], screen));
  if (m_count != 0 && m_rows.empty()) lines.push_back(Cut("no sensors", screen.columns));
  if (shown < m_rows.size()) {
    lines.push_back(Cut("... and " + std::to_string(m_rows.size() - shown) + " more", screen.columns));
  }
  if (lines.size() > screen.rows) lines.resize(screen.rows);
  return lines;
}

}  // namespace clmctl
