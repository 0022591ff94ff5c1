/// @file
/// A line of the log.
#pragma once

#include "AaSysLog.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace hwapi::qis {

/// One line: its prefix, its text, its line feed. What does not fit is cut with "...".
class LogLine {
 public:
  /// Longest line with its line feed; a pipe takes as much in one piece.
  static constexpr std::size_t kMaxSize = 4096;

  /// Begins the line with its prefix: the kernel's priority in a supervised process, else time, level and feature.
  LogLine(EAaSysLogSeverityLevel level, u32 feature);

  /// Appends a text; control characters in it are shown, not written, and a trailing line feed is left out.
  void Print(const char* format, ...) __attribute__((format(printf, 2, 3)));
  /// As Print.
  void PrintV(const char* format, std::va_list arguments) __attribute__((format(printf, 2, 0)));
  /// Ends the line.
  /// @return the whole of it, valid as long as this object
  std::string_view End();

 private:
  void Append(std::string_view text);
  void AppendShown(std::string_view text);
  void AppendByte(char c);
  void AppendControl(unsigned char byte);

  std::array<char, kMaxSize> m_bytes;
  std::size_t m_size = 0;
  bool m_cut = false;
};

}  // namespace hwapi::qis
