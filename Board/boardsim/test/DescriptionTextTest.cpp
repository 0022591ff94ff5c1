#include "DescriptionText.h"

#include "BoardDescription.h"
#include "MadeUpSysfs.h"

#include <gtest/gtest.h>

#include <variant>

namespace boardsim {
namespace {

using hwapi::board::BoardDescription;
using hwapi::board::HwmonTemperature;
using hwapi::board::SimTemperature;

BoardDescription Loaded(const std::string& text) {
  const MadeUpSysfs folder;
  const std::string path = folder.Root() + "/board.toml";
  std::ofstream(path) << text;
  return hwapi::board::Load(path);
}

TEST(DescribeMachine, WithoutChipsSimulatesEverySensor) {
  const BoardDescription board = Loaded(DescribeMachine({}, {}));
  EXPECT_EQ(board.unit.version, EUnitVersion_Kela);
  ASSERT_EQ(board.temperatures.size(), 8u);
  for (const auto& sensor : board.temperatures) EXPECT_TRUE(std::holds_alternative<SimTemperature>(sensor.source));
}

TEST(DescribeMachine, HasABlackBoxWhereBoardsimRunsIt) {
  const BoardDescription board = Loaded(DescribeMachine({}, {}, RunBy::Boardsim));
  EXPECT_EQ(board.tags, hwapi::board::Load(std::string(BOARDS_FOLDER) + "/kela.toml").tags);
  EXPECT_TRUE(board.boot.active.has_value());
  EXPECT_TRUE(board.boot.image.has_value());
  EXPECT_TRUE(board.boot.resetLoopCount.has_value());
}

TEST(DescribeMachine, HasNoBlackBoxForTheServiceAlone) {
  const BoardDescription board = Loaded(DescribeMachine({}, {}, RunBy::ServiceAlone));
  EXPECT_TRUE(board.tags.empty());
  EXPECT_FALSE(board.boot.active.has_value());
}

TEST(DescribeMachine, LetsTheInstalledServiceAnswerItsClients) {
  const BoardDescription board = Loaded(DescribeMachine({}, {}, RunBy::ServiceAlone));
  EXPECT_EQ(board.access.send, (std::vector<std::string>{"root", "group:hwapi"}));
}

TEST(DescribeMachine, BindsTheFirstSensorsToTheChips) {
  const FoundSensor lm75{.chip = "lm75", .at = "3-0048", .input = "temp1", .label = ""};
  const BoardDescription board = Loaded(DescribeMachine({lm75}, {}));
  ASSERT_EQ(board.temperatures.size(), 8u);
  const auto* bound = std::get_if<HwmonTemperature>(&board.temperatures[0].source);
  ASSERT_NE(bound, nullptr);
  EXPECT_EQ(bound->chip, "lm75");
  EXPECT_EQ(bound->at, "3-0048");
  EXPECT_EQ(bound->input, "temp1");
}

TEST(DescribeMachine, LoadsWithMoreChipsThanSensors) {
  std::vector<FoundSensor> found;
  for (int i = 1; i <= 20; ++i) {
    found.push_back({.chip = "coretemp", .at = "coretemp.0", .input = "temp" + std::to_string(i), .label = "Core"});
  }
  EXPECT_EQ(Loaded(DescribeMachine(found, {})).temperatures.size(), 8u);
}

TEST(DescribeMachine, HasTheFansAsCommentsThatCanBeTakenAway) {
  const FoundSensor fan{.chip = "nct", .at = "nct.656", .input = "fan2", .label = ""};
  std::string text = DescribeMachine({}, {fan});
  EXPECT_TRUE(Loaded(text).fans.empty());
  for (const std::string line : {"[[fan]]", "id = ", "hwmon = "}) text.replace(text.find("# " + line), 2, "");
  const BoardDescription board = Loaded(text);
  ASSERT_EQ(board.fans.size(), 1u);
  EXPECT_EQ(board.fans[0].id, 0u);
  const auto& bound = std::get<hwapi::board::HwmonFan>(board.fans[0].source);
  EXPECT_EQ(bound.fan, "fan2");
  EXPECT_EQ(bound.pwm, "pwm2");
}

TEST(DescribeMachine, LoadsWithStrangeNames) {
  const FoundSensor strange{.chip = "a\"b\\c\x01", .at = "x'y", .input = "temp1", .label = "line\nbreak = 1"};
  const BoardDescription board = Loaded(DescribeMachine({strange}, {}));
  const auto* bound = std::get_if<HwmonTemperature>(&board.temperatures[0].source);
  ASSERT_NE(bound, nullptr);
  EXPECT_EQ(bound->chip, strange.chip);
}

}  // namespace
}  // namespace boardsim
