#include "TableReader.h"

#include <algorithm>
#include <cstdio>

namespace hwapi::board {
namespace {

using Kind = TomlValue::Kind;

std::string Quoted(std::string_view name) { return '"' + std::string(name) + '"'; }

std::string Decimal(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

}  // namespace

TableReader::TableReader(const TomlValue* table, std::string place, Problems& problems)
    : m_table(table), m_place(std::move(place)), m_problems(problems) {}

TableReader::~TableReader() {
  if (m_table == nullptr) return;
  for (const TomlValue& member : m_table->members) {
    if (std::find(m_known.begin(), m_known.end(), member.key) != m_known.end()) continue;
    m_problems.Add(member.line,
                   "unknown key " + Quoted(member.key) + " in " + m_place + AllowedNames(member.key, m_known));
  }
}

const TomlValue* TableReader::Member(std::string_view key) const {
  if (m_table == nullptr) return nullptr;
  const auto& members = m_table->members;
  const auto found = std::find_if(members.begin(), members.end(), [key](const auto& m) { return m.key == key; });
  return found != members.end() ? &*found : nullptr;
}

const TomlValue* TableReader::Find(std::string_view key, Kind kind) {
  if (std::find(m_known.begin(), m_known.end(), key) == m_known.end()) m_known.push_back(key);
  const TomlValue* member = Member(key);
  if (member == nullptr || member->kind == kind) return member;
  if (kind == Kind::Real && member->kind == Kind::Integer) return member;
  Reject(key, "is " + std::string(KindName(member->kind)) + "; it must be " + std::string(KindName(kind)));
  return nullptr;
}

void TableReader::Reject(std::string_view key, const std::string& text) {
  const TomlValue* member = Member(key);
  const unsigned line = member != nullptr ? member->line : m_table != nullptr ? m_table->line : 0;
  m_problems.Add(line, Quoted(key) + " in " + m_place + ' ' + text);
}

void TableReader::Require(std::string_view key, std::string_view example) {
  if (m_table == nullptr || Member(key) != nullptr) return;
  Reject(key, "is missing; write for example " + std::string(example));
}

std::optional<std::string> TableReader::Text(std::string_view key) {
  const TomlValue* value = Find(key, Kind::Text);
  return value != nullptr ? std::optional(value->text) : std::nullopt;
}

std::optional<bool> TableReader::Flag(std::string_view key) {
  const TomlValue* value = Find(key, Kind::Flag);
  return value != nullptr ? std::optional(value->integer != 0) : std::nullopt;
}

std::optional<std::int64_t> TableReader::DateTime(std::string_view key) {
  const TomlValue* value = Find(key, Kind::DateTime);
  return value != nullptr ? std::optional(value->integer) : std::nullopt;
}

std::optional<double> TableReader::Real(std::string_view key, double least, double most) {
  const TomlValue* value = Find(key, Kind::Real);
  if (value == nullptr) return std::nullopt;
  if (value->real >= least && value->real <= most) return value->real;  // false for "not a number"
  Reject(key, "is " + Decimal(value->real) + "; it must be " + Decimal(least) + " to " + Decimal(most));
  return std::nullopt;
}

std::optional<std::int64_t> TableReader::IntegerBetween(std::string_view key, std::int64_t least, std::int64_t most) {
  const TomlValue* value = Find(key, Kind::Integer);
  if (value == nullptr) return std::nullopt;
  if (value->integer >= least && value->integer <= most) return value->integer;
  Reject(key, "is " + std::to_string(value->integer) + "; it must be " + std::to_string(least) + " to " +
                  std::to_string(most));
  return std::nullopt;
}

std::optional<std::size_t> TableReader::IndexOfName(std::string_view key, const std::vector<std::string_view>& names) {
  const auto text = Text(key);
  if (!text) return std::nullopt;
  const auto found = std::find(names.begin(), names.end(), *text);
  if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
  Reject(key, "is the unknown name " + Quoted(*text) + AllowedNames(*text, names));
  return std::nullopt;
}

const TomlValue* TableReader::Table(std::string_view key) { return Find(key, Kind::Table); }

std::vector<const TomlValue*> TableReader::List(std::string_view key, Kind kind) {
  std::vector<const TomlValue*> members;
  const TomlValue* list = Find(key, Kind::Array);
  if (list == nullptr) return members;
  for (const TomlValue& member : list->members) {
    if (member.kind == kind) {
      members.push_back(&member);
    } else {
      m_problems.Add(member.line, "a member of " + Quoted(key) + " is " + std::string(KindName(member.kind)) +
                                      "; it must be " + std::string(KindName(kind)));
    }
  }
  return members;
}

}  // namespace hwapi::board
