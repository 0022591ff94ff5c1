/// @file
/// Takes the values of one table out, checks them, and finds what does not belong there.
#pragma once

#include "TomlTree.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hwapi::board {

/// Reads one table. A value that is absent or wrong gives no result; what is wrong is added to the problems.
class TableReader {
 public:
  /// @param table null: every key is absent
  /// @param place what the table is called in errors, e.g. "[unit]"
  TableReader(const TomlValue* table, std::string place, Problems& problems);
  TableReader(const TableReader&) = delete;
  TableReader& operator=(const TableReader&) = delete;
  /// Finds the keys that nobody asked for.
  ~TableReader();

  std::optional<std::string> Text(std::string_view key);
  std::optional<bool> Flag(std::string_view key);
  std::optional<std::int64_t> DateTime(std::string_view key);
  std::optional<double> Real(std::string_view key, double least, double most);
  /// @tparam Number a type that holds @p least and @p most
  template <typename Number>
  std::optional<Number> Integer(std::string_view key, std::int64_t least = std::numeric_limits<Number>::min(),
                                std::int64_t most = std::numeric_limits<Number>::max()) {
    const auto value = IntegerBetween(key, least, most);
    return value ? std::optional(static_cast<Number>(*value)) : std::nullopt;
  }
  /// Reads a text that is one of the names of @p choices.
  template <typename Value, std::size_t Count>
  std::optional<Value> Choice(std::string_view key, const std::pair<std::string_view, Value> (&choices)[Count]) {
    std::vector<std::string_view> names;
    for (const auto& choice : choices) names.push_back(choice.first);
    const auto index = IndexOfName(key, names);
    return index ? std::optional(choices[*index].second) : std::nullopt;
  }
  /// @return the table under @p key; null when there is none
  const TomlValue* Table(std::string_view key);
  /// @return the members of the list under @p key that are of the kind; the others are problems
  std::vector<const TomlValue*> List(std::string_view key, TomlValue::Kind kind);

  /// Adds a problem for an absent key, unless the whole table is absent.
  /// @param example "base = 41.0"
  void Require(std::string_view key, std::string_view example);
  /// Adds a problem in the line of @p key, or of the table where it is absent.
  void Reject(std::string_view key, const std::string& text);

 private:
  /// @return the value under @p key when it is of the kind
  const TomlValue* Find(std::string_view key, TomlValue::Kind kind);
  const TomlValue* Member(std::string_view key) const;
  std::optional<std::int64_t> IntegerBetween(std::string_view key, std::int64_t least, std::int64_t most);
  std::optional<std::size_t> IndexOfName(std::string_view key, const std::vector<std::string_view>& names);

  const TomlValue* const m_table;
  const std::string m_place;
  Problems& m_problems;
  std::vector<std::string_view> m_known;  ///< keys asked for; all are literals
};

}  // namespace hwapi::board
