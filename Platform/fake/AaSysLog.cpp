#include "AaSysLog.h"

#include "Internal.h"
#include "fake/Log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ostream>

namespace fake {
namespace {

using namespace internal;

std::vector<LogLine>& TheLog() {
  static auto& log = *new std::vector<LogLine>;
  return log;
}

__attribute__((format(printf, 1, 0))) std::string Format(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

const char* NameOf(EAaSysLogSeverityLevel level) {
  switch (level) {
    case EAaSysLogSeverityLevel_Debug:
      return "Debug";
    case EAaSysLogSeverityLevel_Info:
      return "Info";
    case EAaSysLogSeverityLevel_Warning:
      return "Warning";
    case EAaSysLogSeverityLevel_Error:
      return "Error";
  }
  return "unknown level";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << NameOf(line.level) << " \"" << line.text << '"';
}

std::vector<LogLine> LogLines() {
  const Lock lock;
  return TheLog();
}

std::vector<std::string> LogTexts(EAaSysLogSeverityLevel level) {
  std::vector<std::string> texts;
  for (LogLine& line : LogLines()) {
    if (line.level == level) texts.push_back(std::move(line.text));
  }
  return texts;
}

bool HasLogLine(EAaSysLogSeverityLevel level, const std::string& text) {
  const Lock lock;
  return std::ranges::any_of(TheLog(), [&](const LogLine& line) { return line.level == level && line.text == text; });
}

void ClearLog() {
  const Lock lock;
  TheLog().clear();
}

void internal::LogError(const std::string& text) {
  const Lock lock;
  TheLog().push_back({EAaSysLogSeverityLevel_Error, 0, text});
}

void internal::ResetLog() { ClearLog(); }

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

void AaSysLogPrintE(EAaSysLogSeverityLevel level, u32 feature, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = Format(format, arguments);
  va_end(arguments);
  const Lock lock;
  Record({"AaSysLogPrintE", level, feature, text});
  if (text.ends_with('\n')) text.pop_back();
  TheLog().push_back({level, feature, std::move(text)});
}

void AaSysLogSetThreshold(EAaSysLogSeverityLevel lowest) { Record({"AaSysLogSetThreshold", lowest}); }

void AaErrorAssertion(const char* expression, const char* file, u32 line) {
  Record({"AaErrorAssertion", expression});
  throw AssertionFailed{expression, file, line};
}

}  // extern "C"
