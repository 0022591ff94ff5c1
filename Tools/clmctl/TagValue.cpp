#include "TagValue.h"

#include "Arguments.h"
#include "CommandError.h"
#include "Values.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace clmctl {

TagValue TagValue::FromArgument(std::string_view argument) {
  std::optional<std::string> bytes = commandline::TagBytes(argument);
  if (!bytes) throw CommandError(ExitCode::Usage, commandline::TagBytesRefusal(argument));
  return TagValue(std::move(*bytes));
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
