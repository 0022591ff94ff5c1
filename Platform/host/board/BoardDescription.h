/// @file
/// The board description: what hardware this board has, where it is found, and how its platform is set up.
/// Every function may be called from every thread.
#pragma once

#include "GloTypes.h"
#include "HwapiUnit.h"

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#define HWBOARD_API __attribute__((visibility("default")))

namespace hwapi::board {

/// What the unit tells about itself.
struct Unit {
  EUnitType type = EUnitType_Unknown;
  EUnitVersion version = EUnitVersion_Unallocated;
  std::string productCode;
  std::string serialNumber;
};

/// Address of the processor in the base station.
struct Node {
  u8 board = 1;
  u8 cpu = 1;
};

/// The board's clock.
struct Clock {
  unsigned speed = 1;                   ///< board seconds a second, to 86400; 0: stands still until it is set
  std::optional<std::int64_t> startMs;  ///< time at the board's start, milliseconds since 1970 UTC; none: the host's
};

/// Who may send messages besides root and the receiver's own user, and what may be stored for them.
struct Access {
  std::vector<std::string> send;   ///< "USER" or "group:GROUP"
  std::vector<std::string> store;  ///< absolute paths of folders whose files may be copied; none: those of every folder
};

/// How long a chip of the kernel has to answer, unless the description says otherwise.
inline constexpr u32 kUsualDeadlineMs = 100;

/// A temperature attribute of the kernel.
struct HwmonTemperature {
  std::string chip;   ///< contents of the chip's `name`
  std::string at;     ///< last part of its device path, e.g. "3-0048"; empty: the only chip of that name
  std::string input;  ///< "temp1", or the contents of a `temp*_label`
  u32 deadlineMs = kUsualDeadlineMs;  ///< of each read
};

/// A simulated temperature, in degrees Celsius.
struct SimTemperature {
  double base = 0;            ///< at rest
  double load = 0;            ///< added at full activity
  double cooling = 0;         ///< taken away at full fan speed
  double noise = 0.05;        ///< largest deviation
  double inertia = 30;        ///< time constant in seconds
  std::optional<u32> seed{};  ///< of the noise; none: the device id
};

/// A temperature sensor.
struct Temperature {
  u32 device = 0;  ///< (board id << 16) | sensor index
  std::variant<HwmonTemperature, SimTemperature> source;
  bool optional = false;  ///< the board starts without it
  unsigned line = 0;      ///< where the description has it
};

/// A fan of the kernel.
struct HwmonFan {
  std::string chip;                   ///< as in HwmonTemperature
  std::string at;                     ///< as in HwmonTemperature
  std::string fan;                    ///< e.g. "fan1"
  std::string pwm;                    ///< e.g. "pwm1"
  u32 deadlineMs = kUsualDeadlineMs;  ///< of each read and write
};

/// A simulated fan.
struct SimFan {
  u32 maxRpm = 6000;   ///< revolutions a minute at 100 per cent
  double inertia = 2;  ///< time constant in seconds
};

/// A fan.
struct Fan {
  u32 id = 0;
  std::variant<HwmonFan, SimFan> source;
  bool optional = false;  ///< the board starts without it
  unsigned line = 0;      ///< where the description has it
};

/// A simulated RF part: ASIC and chain of one number.
struct Rf {
  u32 index = 0;
  u32 registerValue = 1;  ///< of every register; 0 is disabled
  u32 chainStatus = 1;    ///< 1 is enabled
  unsigned line = 0;
};

/// What the boot logic tells.
struct Boot {
  std::optional<u32> active;  ///< file system of the active image, 53 or 54
  std::optional<u32> image;   ///< image that runs: 0 active, 1 passive
  std::optional<i32> resetLoopCount;
  std::optional<u32> resetType;         ///< how the board was last reset, as the reset service tells (ERPresetType)
  std::optional<std::string> fs1Build;  ///< software build that each file system holds
  std::optional<std::string> fs2Build;
};

/// Mount states (EDdalMountState) that replace those of the mount table.
struct Mounts {
  std::optional<u32> fs1;
  std::optional<u32> fs2;
};

/// Values of the device tree and of the memory controller.
struct DeviceTree {
  std::optional<i32> isti;
  std::optional<i32> eccSingle;
  std::optional<i32> eccDouble;
};

/// Product data of the power supply.
struct Psu {
  std::optional<std::string> serialNumber;
  std::optional<std::string> hwswid;
  std::optional<std::string> productCode;
  std::optional<std::string> vendor;
};

/// Product data of the filter.
struct Filter {
  std::optional<std::string> productCode;
  std::optional<std::string> serialNumber;
  std::optional<std::string> vendor;
  std::optional<std::string> hwVersion;
  std::optional<i32> hwswid;
};

/// A whole board. What the description does not tell has its default or is absent.
struct BoardDescription {
  std::string path;  ///< the file it was read from
  Unit unit;
  Node node;
  Clock clock;
  Access access;
  std::map<std::string, std::string> tags;  ///< first values of public tags, as bytes
  std::map<u32, u32> rad;                   ///< debug-configuration values
  std::vector<Temperature> temperatures;    ///< device ids are unique
  std::vector<Fan> fans;                    ///< ids are unique
  std::vector<Rf> rf;                       ///< indexes are unique
  std::optional<i32> backplaneType;
  Boot boot;
  Mounts mounts;
  DeviceTree deviceTree;
  Psu psu;
  Filter filter;
};

/// A description is wrong. The text has one line an error: "FILE:LINE: what is wrong; what would be right" (no line
/// where the file cannot be read).
class HWBOARD_API DescriptionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// @return the description of this process's board, read from DescriptionPath() at the first call and kept for ever.
/// A wrong or missing one is told on standard error and ends the process with status 2.
HWBOARD_API const BoardDescription& OwnBoard();

/// Reads a description.
/// @throw DescriptionError
HWBOARD_API BoardDescription Load(const std::string& path);

/// @return folder of the running board: HWAPI_RUN, or /run/hwapi
HWBOARD_API std::string RunDirectory();
/// @return the own board's description: HWAPI_BOARD, else board.toml in RunDirectory() if it exists, else
/// /etc/hwapi/board.toml
HWBOARD_API std::string DescriptionPath();

}  // namespace hwapi::board
