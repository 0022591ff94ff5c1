/// @file
/// The live table of the fans: its content, and how it is laid out as text.
#pragma once

#include "FanRequest.h"
#include "Screen.h"

#include <chrono>
#include <string>
#include <vector>

namespace clmctl {

/// The last reading of each fan. No output, no clock: a plain value.
class FanTable {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param title what is shown, e.g. "fans, reported to 1/1/0x8000"
  explicit FanTable(std::string title) : m_title(std::move(title)) {}

  /// Takes an indication in that came at @p time, on the host's clock at @p now.
  void Add(const FanIndication& indication, const std::string& time, Clock::time_point now);
  /// @param now what the age of the readings is counted to
  /// @return the lines, none wider than the screen and no more of them than its rows
  std::vector<std::string> Draw(const Screen& screen, Clock::time_point now) const;

 private:
  std::string m_title;
  std::string m_lastTime;
  Clock::time_point m_last;
  unsigned m_count = 0;
  std::vector<FanReading> m_readings;
};

}  // namespace clmctl
