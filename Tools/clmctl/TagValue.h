/// @file
/// The value of a tag as people write and read it.
#pragma once

#include "GloTypes.h"

#include <optional>
#include <string>
#include <string_view>

namespace clmctl {

/// A few bytes that may be a number, a text, or both.
class TagValue {
 public:
  explicit TagValue(std::string bytes) : m_bytes(std::move(bytes)) {}
  /// A decimal or 0x number gives its 4 bytes, anything else its characters; "text:" in front forces characters.
  /// @throw CommandError (usage) for a number that 4 bytes cannot hold
  static TagValue FromArgument(std::string_view argument);

  const std::string& Bytes() const { return m_bytes; }
  /// @return the number, when the value has 4 bytes
  std::optional<u32> Number() const;
  /// @return the characters, when all are printable ones and there is at least one
  std::optional<std::string> Readable() const;
  /// "6", "\"/rom/log\"", both for four printable characters, or the bytes in hexadecimal
  std::string Text() const;

 private:
  std::string m_bytes;
};

}  // namespace clmctl
