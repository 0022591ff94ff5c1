/// @file
/// A trace as a picture.
#pragma once

#include "TraceFile.h"
#include "TraceStatistics.h"

#include <string>
#include <vector>

namespace clmctl {

enum class PictureFormat : std::uint8_t { Png, Svg };

/// In pixels.
struct PictureSize {
  unsigned width = 0;
  unsigned height = 0;
};

struct PictureSettings {
  PictureFormat format = PictureFormat::Png;
  PictureSize size;
  std::string title;                 ///< what was traced: the board or the file
  std::vector<std::size_t> columns;  ///< of the trace, those that are drawn; one at least
};

/// @return a size in which so many sensors and fans are readable
PictureSize ReadableSize(std::size_t sensors, std::size_t fans);
/// @return gnuplot's script: temperatures in one panel, fan speeds in one below it, over time. What was not read is not
///         drawn; marks at the bottom tell of failed readings, shades of minutes without rows.
std::string TracePlotScript(const TraceFile& trace, const TraceStatistics& statistics, const PictureSettings& settings);

}  // namespace clmctl
