/// @file
/// The live table of a measurement: its content, and how it is laid out as text.
#pragma once

#include "Screen.h"
#include "TempRequest.h"

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace clmctl {

/// The last reading of each sensor, its extremes and its course. No output, no clock: a plain value.
class TempTable {
 public:
  /// @param title what is measured, e.g. "Kel every 1s"
  explicit TempTable(std::string title) : m_title(std::move(title)) {}

  /// Takes an indication in that came at @p time.
  void Add(const TempIndication& indication, const std::string& time);
  /// @return the lines, none wider than the screen and no more of them than its rows
  std::vector<std::string> Draw(const Screen& screen) const;

 private:
  struct Row {
    TempReading last;
    double lowest = 0;
    double highest = 0;
    std::deque<double> course;  ///< valid readings, oldest first
  };

  /// @return the row of a sensor, taken from where it was; sensors come and go with their units
  Row TakeRow(u32 name, std::size_t index);
  std::string DrawRow(const Row& row, const Screen& screen) const;

  std::string m_title;
  std::string m_lastTime;
  u32 m_count = 0;
  std::vector<Row> m_rows;
};

}  // namespace clmctl
