#include "LogLine.h"

#include "AaSysTime.h"
#include "Clock.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace hwapi::qis {
namespace {

constexpr std::string_view kCut = "...";

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

}  // namespace

LogLine::LogLine(EAaSysLogSeverityLevel level, u32 feature) {
  const LevelText text = TextOf(level);
  std::array<char, 80> prefix{};
  if (IsSupervised()) {
    std::snprintf(prefix.data(), prefix.size(), "<%d>", text.priority);
  } else {
    SAaTime now{};
    if (!Clock::IsBeingMade()) {
      AaLocalTimeGet(&now);
    }
    std::snprintf(prefix.data(), prefix.size(), "%04u-%02u-%02u %02u:%02u:%02u.%03u %s 0x%X ", now.year, now.month,
                  now.day, now.hour, now.minute, now.second, now.millisec, text.name, feature);
  }
  Append(prefix.data());
}

void LogLine::Print(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  PrintV(format, arguments);
  va_end(arguments);
}

void LogLine::PrintV(const char* format, std::va_list arguments) {
  std::array<char, kMaxSize + 1> text;
  const int size = std::vsnprintf(text.data(), text.size(), format, arguments);
  std::string_view shown(text.data(), size < 0 ? 0 : std::min(static_cast<std::size_t>(size), kMaxSize));
  if (shown.ends_with('\n')) {
    shown.remove_suffix(1);
  }
  AppendShown(shown);
}

std::string_view LogLine::End() {
  if (m_cut) {
    m_size = kMaxSize - 1 - kCut.size();
    m_cut = false;
    Append(kCut);
  }
  m_bytes[m_size++] = '\n';
  return {m_bytes.data(), m_size};
}

void LogLine::Append(std::string_view text) {
  for (const char c : text) {
    AppendByte(c);
  }
}

void LogLine::AppendShown(std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      AppendByte(c);
    } else {
      AppendControl(byte);
    }
  }
}

void LogLine::AppendByte(char c) {
  if (m_size < kMaxSize - 1) {
    m_bytes[m_size++] = c;
  } else {
    m_cut = true;
  }
}

void LogLine::AppendControl(unsigned char byte) {
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

}  // namespace hwapi::qis
