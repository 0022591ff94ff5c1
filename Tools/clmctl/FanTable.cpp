#include "FanTable.h"

#include "FanNames.h"
#include "FanText.h"
#include "TableHead.h"

namespace clmctl {
namespace {

constexpr std::size_t kNameWidth = 18;
constexpr std::size_t kSpeedWidth = 13;
constexpr std::size_t kFrequencyWidth = 11;
constexpr std::size_t kAgeWidth = 11;
/// Columns before the state, and the two blanks that set it off.
constexpr std::size_t kBaseWidth = kNameWidth + kSpeedWidth + kFrequencyWidth + kAgeWidth + 2;

std::string AgeText(std::chrono::seconds age) {
  const std::int64_t minutes = age.count() / 60;
  const std::string seconds = std::to_string(age.count() % 60) + " s";
  return minutes == 0 ? seconds : std::to_string(minutes) + " min " + seconds;
}

std::string Header() {
  return LeftAligned("FAN", kNameWidth) + RightAligned("SPEED", kSpeedWidth) + RightAligned("PWM", kFrequencyWidth) +
         RightAligned("AGE", kAgeWidth) + "  STATE";
}

std::string DrawRow(const FanReading& reading, const std::string& age, const Screen& screen) {
  const std::string text =
      LeftAligned(FanText(reading.fan), kNameWidth) + RightAligned(std::to_string(reading.rpm) + " rpm", kSpeedWidth) +
      RightAligned(FrequencyText(reading.frequency), kFrequencyWidth) + RightAligned(age, kAgeWidth);
  if (screen.columns <= kBaseWidth) return Cut(text, screen.columns);
  const std::size_t room = screen.columns - kBaseWidth;
  return text + "  " + Coloured(Cut(StateText(reading), room), HasSpeed(reading) ? "32" : "1;31", screen);
}

}  // namespace

void FanTable::Add(const FanIndication& indication, const std::string& time, Clock::time_point now) {
  ++m_count;
  m_lastTime = time;
  m_last = now;
  m_readings = indication.readings;
}

std::vector<std::string> FanTable::Draw(const Screen& screen, Clock::time_point now) const {
  std::vector<std::string> lines = TableHead(m_title, CountText(m_count, m_lastTime), Header(), screen);
  const std::string age = AgeText(std::chrono::duration_cast<std::chrono::seconds>(now - m_last));
  for (const FanReading& reading : m_readings) lines.push_back(DrawRow(reading, age, screen));
  if (lines.size() > screen.rows) lines.resize(screen.rows);
  return lines;
}

}  // namespace clmctl
