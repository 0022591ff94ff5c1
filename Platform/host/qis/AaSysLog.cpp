// The log: one line a call on standard error.
#include "AaSysLog.h"

#include "AaSysTime.h"
#include "Clock.h"
#include "Export.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

/// Longest line with its line feed; so much goes into a pipe in one piece.
constexpr std::size_t kLongestLine = 4096;
constexpr std::string_view kCut = "...";

constinit std::atomic<u32> g_threshold{EAaSysLogSeverityLevel_Info};

/// A line being put together; what does not fit is cut with "...".
class Line {
 public:
  void Append(std::string_view text) {
    for (const char c : text) {
      AppendByte(c);
    }
  }
  /// Appends text from outside: control characters are shown, not written.
  void AppendShown(std::string_view text) {
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte >= 0x20 && byte != 0x7F) {
        AppendByte(c);
      } else {
        AppendControl(byte);
      }
    }
  }
  void Write() {
    if (m_cut) {
      m_size = kLongestLine - 1 - kCut.size();
      m_cut = false;
      Append(kCut);
    }
    m_bytes[m_size++] = '\n';
    while (::write(STDERR_FILENO, m_bytes.data(), m_size) < 0 && errno == EINTR) {
    }
  }

 private:
  void AppendByte(char c) {
    if (m_size < kLongestLine - 1) {
      m_bytes[m_size++] = c;
    } else {
      m_cut = true;
    }
  }
  void AppendControl(unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const std::array<char, 4> shown{'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
    switch (byte) {
      case '\n':
        return Append("\\n");
      case '\t':
        return Append("\\t");
      default:
        return Append({shown.data(), shown.size()});
    }
  }

  std::array<char, kLongestLine> m_bytes;
  std::size_t m_size = 0;
  bool m_cut = false;
};

struct LevelText {
  int priority;  ///< the kernel's
  const char* name;
};

LevelText TextOf(EAaSysLogSeverityLevel level) {
  switch (level) {
    case EAaSysLogSeverityLevel_Error:
      return {3, "ERROR  "};
    case EAaSysLogSeverityLevel_Warning:
      return {4, "WARNING"};
    case EAaSysLogSeverityLevel_Info:
      return {6, "INFO   "};
    case EAaSysLogSeverityLevel_Debug:
      break;
  }
  return {7, "DEBUG  "};
}

bool IsSupervised() {
  static const bool supervised = std::getenv("JOURNAL_STREAM") != nullptr || std::getenv("NOTIFY_SOCKET") != nullptr;
  return supervised;
}

void AppendPrefix(Line& line, EAaSysLogSeverityLevel level, u32 feature) {
  const LevelText text = TextOf(level);
  std::array<char, 80> prefix{};
  if (IsSupervised()) {
    std::snprintf(prefix.data(), prefix.size(), "<%d>", text.priority);
  } else {
    SAaTime now{};
    if (!hwapi::qis::Clock::IsBeingMade()) {
      AaLocalTimeGet(&now);
    }
    std::snprintf(prefix.data(), prefix.size(), "%04u-%02u-%02u %02u:%02u:%02u.%03u %s 0x%X ", now.year, now.month,
                  now.day, now.hour, now.minute, now.second, now.millisec, text.name, feature);
  }
  line.Append(prefix.data());
}

}  // namespace

QIS_EXPORT void AaSysLogPrintE(EAaSysLogSeverityLevel level, u32 feature, const char* format, ...) {
  if (level < g_threshold.load(std::memory_order_relaxed)) {
    return;
  }
  const int before = errno;  // callers print it, and look at it afterwards
  Line line;
  AppendPrefix(line, level, feature);
  std::array<char, kLongestLine + 1> text;
  std::va_list arguments;
  va_start(arguments, format);
  errno = before;
  const int size = std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  std::string_view shown(text.data(), size < 0 ? 0 : std::min(static_cast<std::size_t>(size), kLongestLine));
  if (shown.ends_with('\n')) {
    shown.remove_suffix(1);
  }
  line.AppendShown(shown);
  line.Write();
  errno = before;
}

QIS_EXPORT void AaSysLogSetThreshold(EAaSysLogSeverityLevel lowest) {
  g_threshold.store(lowest, std::memory_order_relaxed);
}

QIS_EXPORT void AaErrorAssertion(const char* expression, const char* file, u32 line) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 0, "Assertion failed: %s (file: %s, line: %u)", expression, file, line);
  std::abort();
}
