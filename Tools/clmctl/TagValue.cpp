#include "TagValue.h"

#include "CommandError.h"
#include "Values.h"

#include <algorithm>
#include <cstring>

namespace clmctl {

TagValue TagValue::FromArgument(std::string_view argument) {
  constexpr std::string_view kForced = "text:";
  if (argument.starts_with(kForced)) return TagValue(std::string(argument.substr(kForced.size())));
  if (const std::optional<u32> number = NumberFrom(argument)) {
    return TagValue(std::string(reinterpret_cast<const char*>(&*number), sizeof *number));
  }
  if (!argument.empty() && argument.find_first_not_of("0123456789") == std::string_view::npos) {
    throw CommandError(ExitCode::Usage, "'" + std::string(argument) +
                                            "' does not fit 4 bytes: give at most 4294967295, or text:" +
                                            std::string(argument) + " to set the characters");
  }
  return TagValue(std::string(argument));
}

std::optional<u32> TagValue::Number() const {
  u32 number = 0;
  if (m_bytes.size() != sizeof number) return std::nullopt;
  std::memcpy(&number, m_bytes.data(), sizeof number);
  return number;
}

std::optional<std::string> TagValue::Readable() const {
  const auto printable = [](char character) {
    return static_cast<unsigned char>(character) >= 0x20 && character != 0x7F;
  };
  if (m_bytes.empty() || !std::all_of(m_bytes.begin(), m_bytes.end(), printable)) return std::nullopt;
  return m_bytes;
}

std::string TagValue::Text() const {
  if (m_bytes.empty()) return "\"\"";
  const std::optional<std::string> readable = Readable();
  std::string text;
  if (const std::optional<u32> number = Number()) text = std::to_string(*number);
  if (readable) text += (text.empty() ? "\"" : " \"") + *readable + "\"";
  if (text.empty()) text = "0x" + FormatHex(m_bytes.data(), static_cast<u32>(m_bytes.size()));
  return text;
}

}  // namespace clmctl
