/// @file
/// Log lines. Every line is kept, whatever the threshold, formatted and without a line feed at its end; the recorded
/// call has the text as it was given.
#pragma once

#include "AaSysLog.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace fake {

/// One line.
struct LogLine {
  EAaSysLogSeverityLevel level;
  u32 feature;
  std::string text;

  bool operator==(const LogLine&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const LogLine& line);
};

/// @return all lines, in order
std::vector<LogLine> LogLines();
/// @return the texts of all lines of one level, in order
std::vector<std::string> LogTexts(EAaSysLogSeverityLevel level);
/// @return whether there is a line with that level and exactly that text
bool HasLogLine(EAaSysLogSeverityLevel level, const std::string& text);
/// Forgets the lines so far.
void ClearLog();

/// What AaErrorAssertion throws in place of ending the process. Of no standard exception type, so that no handler for
/// those takes it.
struct AssertionFailed {
  std::string expression;
  std::string file;
  u32 line;
};

}  // namespace fake
