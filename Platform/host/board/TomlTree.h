/// @file
/// A TOML document as a small tree of values with their lines. Keeps the TOML library out of everything else.
#pragma once

#include "Problems.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hwapi::board {

/// A value of the document.
struct TomlValue {
  enum class Kind { Text, Integer, Real, Flag, DateTime, Table, Array, Other };

  Kind kind = Kind::Other;
  std::string key;                 ///< in its table; empty in an array
  unsigned line = 0;               ///< of its key, or of the value where it has none
  std::string text;                ///< Text
  std::int64_t integer = 0;        ///< Integer; Flag: 0 or 1; DateTime: milliseconds since 1970 UTC
  double real = 0;                 ///< Real and Integer
  std::vector<TomlValue> members;  ///< Table and Array, in the order of the lines
};

/// @return what a value of @p kind is called in an error
std::string_view KindName(TomlValue::Kind kind);

/// Parses a document. A syntax error is added to @p problems and an empty table returned.
TomlValue ParseToml(std::string_view document, Problems& problems);

}  // namespace hwapi::board
