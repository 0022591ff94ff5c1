/// @file
/// What the reader of board descriptions knows, as it tells itself: each mistake that it is shown makes it name what
/// would be right.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace page {

/// What the reader says of one key.
struct KeyRule {
  std::string type;     ///< "a whole number"
  std::string range;    ///< "0 to 255", "Kel, Pivo"; empty when it tells none
  bool needed = false;  ///< its table is refused without it
  bool operator==(const KeyRule&) const = default;
};

/// Keys of one table by name.
using TableRules = std::map<std::string, KeyRule>;

/// @return the tables that the reader knows, called "[unit]", "[[temperature]]" and "[[temperature]] hwmon"; one whose
///         keys may have any name has none here
std::map<std::string, TableRules> ReaderTables();

/// Lets the reader read a description.
/// @return its errors, each without the file's name; none when it takes the description
std::vector<std::string> ErrorsOf(const std::string& toml);

}  // namespace page
