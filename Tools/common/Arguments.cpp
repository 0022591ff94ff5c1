#include "Arguments.h"

#include <charconv>

namespace commandline {
namespace {

/// @return the number that the whole text is
template <typename Number>
std::optional<Number> Whole(std::string_view text, int base) {
  Number value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<u32> NumberFrom(std::string_view text) {
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  if (hex) text.remove_prefix(2);
  return Whole<u32>(text, hex ? 16 : 10);
}

std::optional<i32> SignedFrom(std::string_view text) { return Whole<i32>(text, 10); }

std::optional<std::string> TagBytes(std::string_view text) {
  constexpr std::string_view kForced = "text:";
  if (text.starts_with(kForced)) return std::string(text.substr(kForced.size()));
  if (const std::optional<u32> number = NumberFrom(text)) {
    return std::string(reinterpret_cast<const char*>(&*number), sizeof *number);
  }
  const bool digitsOnly = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
  return digitsOnly ? std::nullopt : std::optional(std::string(text));
}

std::string TagBytesRefusal(std::string_view text) {
  const std::string given(text);
  return "'" + given + "' does not fit 4 bytes: give at most 4294967295, or text:" + given + " to set the characters";
}

}  // namespace commandline
