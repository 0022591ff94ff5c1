#include "TomlTree.h"

#define TOML_HEADER_ONLY 1
#define TOML_ENABLE_FORMATTERS 0
#define TOML_ENABLE_WINDOWS_COMPAT 0
#include <toml++/toml.h>

#include <algorithm>
#include <chrono>

namespace hwapi::board {
namespace {

using Kind = TomlValue::Kind;

/// Times without an offset stay Kind::Other: whose time they are is not told.
void SetDateTime(TomlValue& value, const toml::date_time& time) {
  if (!time.offset) return;
  const std::chrono::sys_days day =
      std::chrono::year(time.date.year) / std::chrono::month(time.date.month) / std::chrono::day(time.date.day);
  const auto instant = day + std::chrono::hours(time.time.hour) + std::chrono::minutes(time.time.minute) +
                       std::chrono::seconds(time.time.second) - std::chrono::minutes(time.offset->minutes);
  value.kind = Kind::DateTime;
  value.integer = std::chrono::duration_cast<std::chrono::milliseconds>(instant.time_since_epoch()).count() +
                  time.time.nanosecond / 1'000'000;
}

TomlValue Convert(const toml::node& node);

void AddMembers(TomlValue& value, const toml::table& table) {
  value.kind = Kind::Table;
  for (const auto& [key, member] : table) {
    TomlValue converted = Convert(member);
    converted.key = key.str();
    if (key.source().begin) converted.line = static_cast<unsigned>(key.source().begin.line);
    value.members.push_back(std::move(converted));
  }
  std::stable_sort(value.members.begin(), value.members.end(),
                   [](const TomlValue& a, const TomlValue& b) { return a.line < b.line; });
}

TomlValue Convert(const toml::node& node) {
  TomlValue value;
  value.line = static_cast<unsigned>(node.source().begin.line);
  if (const auto* table = node.as_table()) {
    AddMembers(value, *table);
  } else if (const auto* array = node.as_array()) {
    value.kind = Kind::Array;
    for (const toml::node& member : *array) value.members.push_back(Convert(member));
  } else if (const auto* text = node.as_string()) {
    value.kind = Kind::Text;
    value.text = text->get();
  } else if (const auto* integer = node.as_integer()) {
    value.kind = Kind::Integer;
    value.integer = integer->get();
    value.real = static_cast<double>(value.integer);
  } else if (const auto* real = node.as_floating_point()) {
    value.kind = Kind::Real;
    value.real = real->get();
  } else if (const auto* flag = node.as_boolean()) {
    value.kind = Kind::Flag;
    value.integer = flag->get() ? 1 : 0;
  } else if (const auto* time = node.as_date_time()) {
    SetDateTime(value, time->get());
  }
  return value;
}

}  // namespace

std::string_view KindName(Kind kind) {
  switch (kind) {
    case Kind::Text:
      return "a text in quotes";
    case Kind::Integer:
      return "a whole number";
    case Kind::Real:
      return "a number";
    case Kind::Flag:
      return "true or false";
    case Kind::DateTime:
      return "a date and time with offset, such as 2024-01-31T09:30:00Z, without quotes";
    case Kind::Table:
      return "a table";
    case Kind::Array:
      return "a list, such as [\"root\"], or of tables as [[fan]]";
    case Kind::Other:
      break;
  }
  return "a date or time without offset";
}

TomlValue ParseToml(std::string_view document, Problems& problems) {
  try {
    return Convert(toml::parse(document));
  } catch (const toml::parse_error& error) {
    problems.Add(static_cast<unsigned>(error.source().begin.line),
                 "this is no TOML: " + std::string(error.description()));
  }
  TomlValue empty;
  empty.kind = Kind::Table;
  return empty;
}

}  // namespace hwapi::board
