/// @file
/// The trace file of the black box: temperatures and fan speeds, a row a minute. Its grammar: doc/trace-file.md.
#pragma once

#include "FileLines.h"
#include "GloTypes.h"
#include "UtcTime.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace clmctl {

/// What a column holds.
enum class Quantity : std::uint8_t {
  Temperature,  ///< thousandths of a degree Celsius
  FanSpeed,     ///< revolutions a minute
};

struct TraceColumn {
  std::string name;
  Quantity quantity;
  std::optional<i32> minimum;  ///< since the service started; temperatures that were measured only
  std::optional<i32> maximum;  ///< likewise
};

enum class ReadingState : std::uint8_t {
  Good,
  Failed,
  NotYet,  ///< a sensor that was not measured since the service started stands there with a zero
};

struct TraceReading {
  ReadingState state = ReadingState::Failed;
  i32 value = 0;  ///< as it stands in the file; 0 of a failed one

  /// @return the value of a good reading
  std::optional<i32> Value() const { return state == ReadingState::Good ? std::optional(value) : std::nullopt; }
  bool operator==(const TraceReading&) const = default;
};

enum class RowState : std::uint8_t {
  Good,
  OtherColumns,  ///< restored from an earlier set of sensors or fans: nobody knows which values are whose
  Damaged,       ///< nothing but its text can be trusted
};

struct TraceRow {
  std::size_t line;
  RowState state;
  UtcTime time;                        ///< not of a damaged row
  std::vector<TraceReading> readings;  ///< those of a good row are the columns'
  std::string text;                    ///< as it stands in the file, without its line end
};

struct TraceFile {
  std::vector<TraceColumn> columns;  ///< temperatures, then fan speeds; empty where the head is damaged
  std::vector<TraceRow> rows;        ///< in the order of the file: oldest first
  std::vector<FileProblem> problems;
};

/// Reads what can be read of any text. A row with another number of values than there are columns is never attributed
/// to them; one of an earlier set of the same size cannot be told apart.
TraceFile ParseTraceFile(std::string_view text);

}  // namespace clmctl
