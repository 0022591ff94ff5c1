#include "FanTable.h"

#include "FanNames.h"
#include "FanText.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr unsigned kNameWidth = 18;
constexpr unsigned kSpeedWidth = 13;
constexpr unsigned kFrequencyWidth = 11;
constexpr unsigned kAgeWidth = 11;
/// Columns before the state, and the two blanks that set it off.
constexpr unsigned kBaseWidth = kNameWidth + kSpeedWidth + kFrequencyWidth + kAgeWidth + 2;

std::string AgeText(std::chrono::seconds age) {
  const std::int64_t minutes = age.count() / 60;
  const std::string seconds = std::to_string(age.count() % 60) + " s";
  return minutes == 0 ? seconds : std::to_string(minutes) + " min " + seconds;
}

std::string Header() {
  return PaddedRight("FAN", kNameWidth) + PaddedLeft("SPEED", kSpeedWidth) + PaddedLeft("PWM", kFrequencyWidth) +
         PaddedLeft("AGE", kAgeWidth) + "  STATE";
}

std::string DrawRow(const FanReading& reading, const std::string& age, const Canvas& canvas) {
  const std::string text = PaddedRight(FanText(reading.fan), kNameWidth) +
                           PaddedLeft(std::to_string(reading.rpm) + " rpm", kSpeedWidth) +
                           PaddedLeft(FrequencyText(reading.frequency), kFrequencyWidth) + PaddedLeft(age, kAgeWidth);
  if (canvas.columns <= kBaseWidth) return Cut(text, canvas.columns);
  const unsigned room = canvas.columns - kBaseWidth;
  if (Turns(reading)) return text + "  " + Coloured(Cut("ok", room), "32", canvas);
  return text + "  " + Coloured(Cut("stands still, or cannot be read", room), "1;31", canvas);
}

}  // namespace

void FanTable::Add(const FanIndication& indication, const std::string& time, Clock::time_point now) {
  ++m_count;
  m_lastTime = time;
  m_last = now;
  m_readings = indication.readings;
}

std::vector<std::string> FanTable::Draw(const Canvas& canvas, Clock::time_point now) const {
  std::vector<std::string> lines = TableHead(m_title, CountText(m_count, m_lastTime), Header(), canvas);
  const std::string age = AgeText(std::chrono::duration_cast<std::chrono::seconds>(now - m_last));
  for (const FanReading& reading : m_readings) lines.push_back(DrawRow(reading, age, canvas));
  if (lines.size() > canvas.rows) lines.resize(canvas.rows);
  return lines;
}

}  // namespace clmctl
