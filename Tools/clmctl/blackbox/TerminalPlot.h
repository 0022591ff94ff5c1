/// @file
/// A trace as characters on a terminal.
#pragma once

#include "Screen.h"
#include "TraceFile.h"
#include "TraceStatistics.h"

#include <string>
#include <vector>

namespace clmctl {

/// A plot whose curves are points of one letter each: gnuplot draws the panels, the rest is text.
class TerminalPlot {
 public:
  /// @param columns of the trace, those that are drawn; one at least
  TerminalPlot(const TraceFile& trace, const TraceStatistics& statistics, const std::vector<std::size_t>& columns,
               const Screen& screen);

  /// @return gnuplot's script
  const std::string& Script() const { return m_script; }
  /// @return the whole plot: title, the panels that gnuplot drew, legend and notes
  std::string Text(const std::string& title, const std::string& panels) const;

 private:
  std::string m_script;
  std::string m_span;
  std::vector<std::string> m_legend;
};

}  // namespace clmctl
