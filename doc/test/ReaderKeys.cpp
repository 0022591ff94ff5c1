#include "ReaderKeys.h"

#include "BoardDescription.h"
#include "TestBoard.h"

#include <sstream>

namespace page {
namespace {

constexpr const char* kUnknown = "zzzzzzzz";

/// A table of a description: where it stands, and what may be written into it.
struct Table {
  std::string name;     ///< as in ReaderTables
  std::string opening;  ///< of a description that holds nothing but this table
  std::string closing;

  std::string With(const std::string& entry) const { return opening + entry + closing; }
};

std::vector<std::string> Split(const std::string& list) {
  std::vector<std::string> names;
  std::stringstream stream(list);
  for (std::string name; std::getline(stream >> std::ws, name, ',');) names.push_back(name);
  return names;
}

/// @return what stands behind @p words in @p text; empty without them
std::string Behind(const std::string& text, const std::string& words) {
  const std::size_t at = text.find(words);
  return at == text.npos ? "" : text.substr(at + words.size());
}

/// @return the error about a key in a description; empty when there is none
std::string ErrorAbout(const std::string& key, const std::string& toml) {
  for (const std::string& error : ErrorsOf(toml)) {
    if (error.find('"' + key + "\" in ") != error.npos) return error;
  }
  return "";
}

/// @return the keys that a table may have; none when this is no such table
std::vector<std::string> KeysOf(const Table& table) {
  const std::string error = ErrorAbout(kUnknown, table.With(std::string(kUnknown) + " = 1"));
  return error.find("unknown key") != error.npos ? Split(Behind(error, "Allowed: ")) : std::vector<std::string>{};
}

KeyRule RuleOf(const Table& table, const std::string& key) {
  KeyRule rule;
  rule.type = Behind(ErrorAbout(key, table.With(key + " = 1979-05-27")), "it must be ");
  for (const char* extreme : {"9223372036854775807", "1e300"}) {
    const std::string range = Behind(ErrorAbout(key, table.With(key + " = " + extreme)), "it must be ");
    if (range.find(" to ") != range.npos) rule.range = range;
  }
  const std::string names = Behind(ErrorAbout(key, table.With(key + " = '" + kUnknown + "'")), "Allowed: ");
  if (!names.empty()) rule.range = names;
  rule.needed = ErrorAbout(key, table.With("")).find("is missing") != std::string::npos;
  return rule;
}

/// Adds a table, and those that are in it.
void Add(std::map<std::string, TableRules>& tables, const Table& table, const std::vector<std::string>& keys) {
  TableRules& rules = tables[table.name];
  for (const std::string& key : keys) {
    rules[key] = RuleOf(table, key);
    const Table inner{
        .name = table.name + " " + key, .opening = table.opening + key + " = { ", .closing = " }" + table.closing};
    if (const auto innerKeys = KeysOf(inner); !innerKeys.empty()) Add(tables, inner, innerKeys);
  }
}

}  // namespace

std::map<std::string, TableRules> ReaderTables() {
  std::map<std::string, TableRules> tables;
  for (const std::string& name : KeysOf({.name = "", .opening = "", .closing = ""})) {
    const std::string single = "[" + name + "]", repeated = "[[" + name + "]]";
    const Table one{.name = single, .opening = single + "\n", .closing = "\n"};
    const Table several{.name = repeated, .opening = repeated + "\n", .closing = "\n"};
    const auto keys = KeysOf(several);
    Add(tables, keys.empty() ? one : several, keys.empty() ? KeysOf(one) : keys);
  }
  return tables;
}

std::vector<std::string> ErrorsOf(const std::string& toml) {
  static const TestBoard board;
  std::filesystem::remove(board.Description());  // many small files are written faster than one again and again
  board.Describe(toml);
  std::vector<std::string> errors;
  try {
    hwapi::board::Load(board.Description());
  } catch (const hwapi::board::DescriptionError& error) {
    std::stringstream lines(error.what());
    for (std::string line; std::getline(lines, line);) errors.push_back(Behind(line, board.Description() + ':'));
  }
  return errors;
}

}  // namespace page
