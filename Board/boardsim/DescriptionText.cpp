#include "DescriptionText.h"

#include "Fans.h"
#include "SensorNames.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace boardsim {
namespace {

/// A fixed sensor of the unit, and what it is like where no chip stands in for it.
struct UnitSensor {
  u32 device;
  double base;  ///< degrees Celsius at rest
  double load;  ///< degrees added at full activity
};

constexpr std::array kKelaSensors = {
    UnitSensor{.device = 0x10000, .base = 46, .load = 14}, UnitSensor{.device = 0x10001, .base = 38, .load = 8},
    UnitSensor{.device = 0x10002, .base = 34, .load = 6},  UnitSensor{.device = 0x10003, .base = 43, .load = 11},
    UnitSensor{.device = 0x10004, .base = 24, .load = 2},  UnitSensor{.device = 0x10005, .base = 68, .load = 1},
    UnitSensor{.device = 0x50000, .base = 46, .load = 14}, UnitSensor{.device = 0x50001, .base = 40, .load = 9},
};

constexpr const char* kHead =
    "# A board description for this machine, as found now. Change what does not fit.\n"
    "\n"
    "[unit]\n"
    "type = \"Kel\"  # family: Kel, Pivo, Vyd, Vyg or Zun\n"
    "version = \"Kela\"  # decides which sensors the service asks for\n"
    "product_code = \"000000A.000\"  # made up, like the number; the black box tells both\n"
    "serial_number = \"LINUX\"\n"
    "\n"
    "[node]  # address of this processor\n"
    "board = 1\n"
    "cpu = 1\n"
    "\n"
    "[access]  # who may send messages: users, or \"group:NAME\"\n";

constexpr const char* kForBoardsim =
    "send = [\"root\"]\n"
    "\n"
    "# Files of the black box, which tell after a failure what went on before. With them the service's start waits\n"
    "# for the board's reset service, as long as it takes. `boardsim up` plays that service; where the climate\n"
    "# service runs without boardsim, use the description that `boardsim detect --service-alone` writes.\n"
    "[tags]\n"
    "\"app.hwapi.blackbox.config.file\" = \"/ffs/run/config/lifedata/blackbox_config\"\n"
    "\"app.hwapi.blackbox.file\" = \"/ffs/run/config/lifedata/blackbox\"\n"
    "\"app.hwapi.blackbox.temperature.file\" = \"/ffs/run/config/lifedata/blackbox_temperature\"\n"
    "\"app.hwapi.blackbox.alarms.file\" = \"/ffs/run/config/lifedata/blackbox_alarms\"\n"
    "\"app.hwapi.blackbox.oam.alarms.file\" = \"/ffs/run/logs/alarms\"\n"
    "\"app.hwapi.blackbox.sfp.file\" = \"/ffs/run/config/lifedata/blackbox_sfp\"\n"
    "\"app.hwapi.blackbox.oam.sfp.file\" = \"/ffs/run/logs/sfp\"\n"
    "\n"
    "[boot]  # what the boot logic tells; the black box records it\n"
    "active = 53  # file system of the active image: 53 is /ffs/fs1, 54 is /ffs/fs2\n"
    "image = 0  # which image runs: 0 the active, 1 the passive one\n"
    "reset_loop_count = 0  # resets in a row\n";

constexpr const char* kForServiceAlone =
    "send = [\"root\", \"group:hwapi\"]  # the group of the installed service and of its clients\n"
    "\n"
    "# There is no black box, whose files [tags] would name and whose boot data [boot] would have: with one the\n"
    "# service's start would wait, without end, for a reset service that is missing here. `boardsim detect` without\n"
    "# an option writes a description with both, for `boardsim up`, which plays that service.\n";

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char character : text) {
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
      char escape[16];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
      quoted += escape;
      continue;
    }
    if (character == '"' || character == '\\') quoted += '\\';
    quoted += character;
  }
  return quoted + "\"";
}

std::string Printable(std::string text) {
  for (char& character : text) {
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) character = '?';
  }
  return text;
}

std::string Chip(const FoundSensor& sensor) {
  return "hwmon = { chip = " + Quoted(sensor.chip) + (sensor.at.empty() ? "" : ", at = " + Quoted(sensor.at));
}

std::string Binding(const FoundSensor& sensor) { return Chip(sensor) + ", input = " + Quoted(sensor.input) + " }\n"; }

/// The fans that the service serves, as comments.
std::string FanTables(const std::vector<FoundSensor>& fans) {
  if (fans.empty()) return "";
  std::string text =
      "\n# Fans of the kernel. Without the signs in front the service sets them when it is asked to, and hands them "
      "back at\n"
      "# its end as they were.\n";
  for (std::size_t i = 0; i < fans.size() && i < commandline::kServedFans.size(); ++i) {
    const commandline::NamedFan& fan = commandline::kServedFans[i];
    const std::string control = "pwm" + fans[i].input.substr(std::string_view("fan").size());
    text += "# [[fan]]  # " + std::string(fan.name) + "\n# id = " + std::to_string(*fan.id) + "\n# " + Chip(fans[i]) +
            ", fan = " + Quoted(fans[i].input) + ", pwm = " + Quoted(control) + " }\n";
  }
  return text;
}

std::string SensorTable(const UnitSensor& sensor, const FoundSensor* found) {
  char head[96];
  std::snprintf(head, sizeof head, "\n[[temperature]]  # %s", SensorNameOf(sensor.device).c_str());
  std::string text = head;
  if (found != nullptr && !found->label.empty()) text += ", the chip calls it " + Printable(found->label);
  char body[96];
  std::snprintf(body, sizeof body, "\ndevice = 0x%x\n", sensor.device);
  text += body;
  if (found != nullptr) return text + Binding(*found);
  std::snprintf(body, sizeof body, "sim = { base = %.1f, load = %.1f }\n", sensor.base, sensor.load);
  return text + body;
}

}  // namespace

std::string DescribeMachine(const std::vector<FoundSensor>& found, const std::vector<FoundSensor>& fans, RunBy runBy) {
  std::string text = kHead;
  text += runBy == RunBy::Boardsim ? kForBoardsim : kForServiceAlone;
  text += found.empty() ? "\n# The kernel offers no temperature sensor here, so all sensors are simulated.\n"
                        : "\n# Sensors of the kernel stand in for the unit's; those that are left are simulated.\n"
                          "# With `optional = true` the board starts without a sensor.\n";
  for (std::size_t i = 0; i < kKelaSensors.size(); ++i) {
    text += SensorTable(kKelaSensors[i], i < found.size() ? &found[i] : nullptr);
  }
  if (found.size() > kKelaSensors.size()) text += "\n# Found as well:\n";
  for (std::size_t i = kKelaSensors.size(); i < found.size(); ++i) text += "# " + Binding(found[i]);
  return text + FanTables(fans);
}

}  // namespace boardsim
