#include "DescriptionReader.h"

#include <algorithm>
#include <cstdio>

namespace hwapi::board {
namespace {

using Kind = TomlValue::Kind;

constexpr double kHottest = 1000;     // degrees Celsius
constexpr double kColdest = -273.15;  // degrees Celsius
constexpr double kLongest = 3600;     // seconds
constexpr u32 kLongestDeadlineMs = 10'000;
constexpr u32 kFans = 16;
constexpr u32 kRfParts = 3;

std::string Hexadecimal(u32 number) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", number);
  return text;
}

/// Whether @p name is @p stem and a number from 1, as attributes of the kernel are called.
bool Numbered(std::string_view name, std::string_view stem) {
  return name.size() > stem.size() && name.size() < stem.size() + 4 && name.starts_with(stem) &&
         name[stem.size()] != '0' &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(stem.size()), name.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

/// Reads a text that becomes part of a path or is compared with one.
std::string PathPart(TableReader& table, std::string_view key, std::string_view example) {
  table.Require(key, example);
  const auto text = table.Text(key);
  if (!text) return {};
  if (text->empty() || text->find('/') != text->npos) {
    table.Reject(key, "is \"" + *text + "\"; it must be one part of a path, for example " + std::string(example));
  }
  return *text;
}

std::string Optional(TableReader& table, std::string_view key) { return table.Text(key).value_or(std::string()); }

u32 Deadline(TableReader& table) {
  return table.Integer<u32>("deadline_ms", 1, kLongestDeadlineMs).value_or(kUsualDeadlineMs);
}

HwmonTemperature ReadHwmonTemperature(const TomlValue* value, const std::string& place, Problems& problems) {
  TableReader table(value, "hwmon of " + place, problems);
  HwmonTemperature hwmon;
  hwmon.chip = PathPart(table, "chip", "chip = \"lm75\"");
  hwmon.at = Optional(table, "at");
  table.Require("input", "input = \"temp1\"");
  hwmon.input = Optional(table, "input");
  hwmon.deadlineMs = Deadline(table);
  return hwmon;
}

SimTemperature ReadSimTemperature(const TomlValue* value, const std::string& place, Problems& problems) {
  TableReader table(value, "sim of " + place, problems);
  SimTemperature sim;
  table.Require("base", "base = 41.0");
  sim.base = table.Real("base", kColdest, kHottest).value_or(sim.base);
  sim.load = table.Real("load", -kHottest, kHottest).value_or(sim.load);
  sim.cooling = table.Real("cooling", 0, kHottest).value_or(sim.cooling);
  sim.noise = table.Real("noise", 0, kHottest).value_or(sim.noise);
  sim.inertia = table.Real("inertia", 0, kLongest).value_or(sim.inertia);
  sim.seed = table.Integer<u32>("seed");
  return sim;
}

HwmonFan ReadHwmonFan(const TomlValue* value, const std::string& place, Problems& problems) {
  TableReader table(value, "hwmon of " + place, problems);
  HwmonFan hwmon;
  hwmon.chip = PathPart(table, "chip", "chip = \"max31785\"");
  hwmon.at = Optional(table, "at");
  hwmon.fan = PathPart(table, "fan", "fan = \"fan1\"");
  hwmon.pwm = PathPart(table, "pwm", "pwm = \"pwm1\"");
  hwmon.deadlineMs = Deadline(table);
  if (!hwmon.fan.empty() && !Numbered(hwmon.fan, "fan")) table.Reject("fan", "must be \"fan1\", \"fan2\", ...");
  if (!hwmon.pwm.empty() && !Numbered(hwmon.pwm, "pwm")) table.Reject("pwm", "must be \"pwm1\", \"pwm2\", ...");
  return hwmon;
}

SimFan ReadSimFan(const TomlValue* value, const std::string& place, Problems& problems) {
  TableReader table(value, "sim of " + place, problems);
  SimFan sim;
  sim.maxRpm = table.Integer<u32>("max_rpm", 1, 1'000'000).value_or(sim.maxRpm);
  sim.inertia = table.Real("inertia", 0, kLongest).value_or(sim.inertia);
  return sim;
}

/// Reads the one of `hwmon` and `sim` that a device has.
template <typename Source, typename ReadHwmon, typename ReadSim>
Source ReadSource(TableReader& table, const TomlValue& entry, const std::string& place, const char* example,
                  ReadHwmon readHwmon, ReadSim readSim, Problems& problems) {
  const TomlValue* hwmon = table.Table("hwmon");
  const TomlValue* sim = table.Table("sim");
  const bool has[] = {std::any_of(entry.members.begin(), entry.members.end(), [](auto& m) { return m.key == "hwmon"; }),
                      std::any_of(entry.members.begin(), entry.members.end(), [](auto& m) { return m.key == "sim"; })};
  if (has[0] == has[1]) {
    problems.Add(entry.line, place +
                                 (has[0] ? " has both hwmon and sim; keep one of them"
                                         : " has neither hwmon nor sim; write for example ") +
                                 (has[0] ? "" : example));
  }
  if (hwmon != nullptr) return readHwmon(hwmon, place, problems);
  return readSim(sim, place, problems);
}

/// Adds a problem when another device of @p list has the same number.
template <typename List, typename Member>
void RefuseTwice(const List& list, Member member, u32 number, const std::string& place, unsigned line,
                 Problems& problems) {
  const auto same = std::find_if(list.begin(), list.end(), [&](const auto& other) { return other.*member == number; });
  if (same == list.end()) return;
  problems.Add(line, place + " is described twice; line " + std::to_string(same->line) + " has it already");
}

void ReadTemperature(const TomlValue& entry, std::vector<Temperature>& sensors, Problems& problems) {
  TableReader table(&entry, "[[temperature]]", problems);
  Temperature sensor;
  sensor.line = entry.line;
  table.Require("device", "device = 0x10000");
  const auto device = table.Integer<u32>("device");
  sensor.device = device.value_or(0);
  const std::string place = device ? "temperature " + Hexadecimal(*device) : "this temperature";
  if (device) RefuseTwice(sensors, &Temperature::device, *device, place, entry.line, problems);
  sensor.source = ReadSource<decltype(sensor.source)>(table, entry, place, "sim = { base = 41.0, load = 12.0 }",
                                                      ReadHwmonTemperature, ReadSimTemperature, problems);
  sensor.optional = table.Flag("optional").value_or(false);
  if (device) sensors.push_back(std::move(sensor));
}

void ReadFan(const TomlValue& entry, std::vector<Fan>& fans, Problems& problems) {
  TableReader table(&entry, "[[fan]]", problems);
  Fan fan;
  fan.line = entry.line;
  table.Require("id", "id = 0");
  const auto id = table.Integer<u32>("id", 0, kFans - 1);
  fan.id = id.value_or(0);
  const std::string place = id ? "fan " + std::to_string(*id) : "this fan";
  if (id) RefuseTwice(fans, &Fan::id, *id, place, entry.line, problems);
  fan.source = ReadSource<decltype(fan.source)>(table, entry, place, "sim = { max_rpm = 6000 }", ReadHwmonFan,
                                                ReadSimFan, problems);
  fan.optional = table.Flag("optional").value_or(false);
  if (id) fans.push_back(std::move(fan));
}

void ReadRf(const TomlValue& entry, std::vector<Rf>& parts, Problems& problems) {
  TableReader table(&entry, "[[rf]]", problems);
  Rf rf;
  rf.line = entry.line;
  table.Require("index", "index = 0");
  const auto index = table.Integer<u32>("index", 0, kRfParts - 1);
  rf.index = index.value_or(0);
  if (index) RefuseTwice(parts, &Rf::index, *index, "rf " + std::to_string(*index), entry.line, problems);
  rf.registerValue = table.Integer<u32>("register").value_or(rf.registerValue);
  rf.chainStatus = table.Integer<u32>("chain").value_or(rf.chainStatus);
  if (index) parts.push_back(rf);
}

}  // namespace

void ReadDevices(TableReader& root, BoardDescription& description, Problems& problems) {
  for (const TomlValue* entry : root.List("temperature", Kind::Table)) {
    ReadTemperature(*entry, description.temperatures, problems);
  }
  for (const TomlValue* entry : root.List("fan", Kind::Table)) ReadFan(*entry, description.fans, problems);
  for (const TomlValue* entry : root.List("rf", Kind::Table)) ReadRf(*entry, description.rf, problems);
}

}  // namespace hwapi::board
