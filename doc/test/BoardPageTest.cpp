// The page of the board description, held against its reader.
#include "BoardDescription.h"
#include "Page.h"
#include "ReaderKeys.h"
#include "TestBoard.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace hwapi::board;

namespace {

constexpr const char* kPage = "board-description.md";

/// Columns of the tables of keys.
enum Column : std::size_t { Key, Type, Range, Default, Meaning };

/// @return the name of the table that a section of the page is about; empty for other sections
std::string TableOf(const page::Section& section) {
  return section.heading.starts_with("`[") ? page::Replaced(section.heading, "`", "") : "";
}

std::map<std::string, page::Section> PageTables() {
  std::map<std::string, page::Section> tables;
  for (const page::Section& section : page::Sections(kPage)) {
    if (const std::string table = TableOf(section); !table.empty()) tables[table] = section;
  }
  return tables;
}

template <typename Map>
std::set<std::string> NamesOf(const Map& map) {
  std::set<std::string> names;
  for (const auto& [name, value] : map) names.insert(name);
  return names;
}

std::string KeyOf(const page::Row& row) { return page::Replaced(row.at(Key), "`", ""); }

BoardDescription LoadText(const std::string& toml) {
  const TestBoard board;
  board.Describe(toml);
  return Load(board.Description());
}

std::string Text(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", number);
  return text;
}

TEST(BoardDescriptionPage, HasTheTablesThatTheReaderKnows) {
  EXPECT_EQ(NamesOf(PageTables()), NamesOf(page::ReaderTables()))
      << "a table has a section \"### `[name]`\" of its own in doc/" << kPage;
}

TEST(BoardDescriptionPage, HasTheKeysOfEachTable) {
  const auto pages = PageTables();
  for (const auto& [table, rules] : page::ReaderTables()) {
    ASSERT_TRUE(pages.contains(table)) << table;
    std::set<std::string> named;
    for (const page::Row& row : pages.at(table).rows) named.insert(KeyOf(row));
    EXPECT_EQ(named, NamesOf(rules)) << table;
  }
}

TEST(BoardDescriptionPage, HasTheTypeAndRangeOfEachKey) {
  const auto rules = page::ReaderTables();
  for (const auto& [table, section] : PageTables()) {
    for (const page::Row& row : section.rows) {
      ASSERT_TRUE(rules.contains(table) && rules.at(table).contains(KeyOf(row))) << table << ' ' << KeyOf(row);
      const page::KeyRule& rule = rules.at(table).at(KeyOf(row));
      EXPECT_TRUE(("a " + rule.type).find("a " + row.at(Type)) == 0 || rule.type.find("a " + row.at(Type)) == 0)
          << table << ' ' << KeyOf(row) << " is " << rule.type << " and not " << row.at(Type);
      EXPECT_EQ(row.at(Range), rule.range) << table << ' ' << KeyOf(row);
      EXPECT_EQ(row.at(Default) == "*needed*", rule.needed) << table << ' ' << KeyOf(row);
    }
  }
}

TEST(BoardDescriptionPage, HasTheDefaultsOfTheReader) {
  const BoardDescription empty = LoadText("");
  EXPECT_EQ(empty.unit.type, EUnitType_Unknown);
  EXPECT_EQ(empty.unit.version, EUnitVersion_Unallocated);
  const std::map<std::string, std::string> defaults = {
      {"[unit] type", "Unknown"},
      {"[unit] version", "Unallocated"},
      {"[node] board", Text(empty.node.board)},
      {"[node] cpu", Text(empty.node.cpu)},
      {"[clock] speed", Text(empty.clock.speed)},
      {"[[temperature]] optional", Temperature{}.optional ? "true" : "false"},
      {"[[temperature]] hwmon deadline_ms", Text(HwmonTemperature{}.deadlineMs)},
      {"[[temperature]] sim load", Text(SimTemperature{}.load)},
      {"[[temperature]] sim cooling", Text(SimTemperature{}.cooling)},
      {"[[temperature]] sim noise", Text(SimTemperature{}.noise)},
      {"[[temperature]] sim inertia", Text(SimTemperature{}.inertia)},
      {"[[fan]] optional", Fan{}.optional ? "true" : "false"},
      {"[[fan]] hwmon deadline_ms", Text(HwmonFan{}.deadlineMs)},
      {"[[fan]] sim max_rpm", Text(SimFan{}.maxRpm)},
      {"[[fan]] sim inertia", Text(SimFan{}.inertia)},
      {"[[rf]] register", Text(Rf{}.registerValue)},
      {"[[rf]] chain", Text(Rf{}.chainStatus)},
  };
  std::map<std::string, std::string> told;
  for (const auto& [table, section] : PageTables()) {
    for (const page::Row& row : section.rows) {
      if (row.at(Default) != "" && row.at(Default) != "*needed*") told[table + ' ' + KeyOf(row)] = row.at(Default);
    }
  }
  EXPECT_EQ(told, defaults);
}

TEST(BoardDescriptionPage, ExampleIsTheBoardThatItExplains) {
  const BoardDescription board = LoadText(page::SectionOf(kPage, "Example").Block());
  EXPECT_EQ(board.unit.version, EUnitVersion_Kela);
  EXPECT_EQ(board.clock.speed, 60u);
  EXPECT_EQ(board.clock.startMs, 1'709'820'309'000);
  EXPECT_EQ(board.tags.at("app.hwapi.online.4b2"), std::string("\6\0\0\0", 4));
  EXPECT_EQ(board.rad.at(0x200B5), 4u);
  EXPECT_EQ(board.boot.resetType, 2u);
  ASSERT_EQ(board.temperatures.size(), 2u);
  EXPECT_EQ(std::get<HwmonTemperature>(board.temperatures[0].source).at, "coretemp.0");
  ASSERT_EQ(board.fans.size(), 2u);
  EXPECT_EQ(std::get<SimFan>(board.fans[1].source).maxRpm, 6000u);
}

TEST(BoardDescriptionPage, WhatIsRefusedIsToldAsThePageSays) {
  const page::Section section = page::SectionOf(kPage, "Refused");
  std::string told;
  for (const std::string& error : page::ErrorsOf(section.Block(0))) told += "board.toml:" + error + "\n";
  EXPECT_EQ(told, section.Block(1));
}

}  // namespace
