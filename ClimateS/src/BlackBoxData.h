/// @file
/// The board's black box.
///
/// This build keeps no black box yet: `init` is not called, nothing is recorded and no file is written. What the
/// service feeds it is accepted, as on a board without one.
#pragma once

#include "HwapiUnit.h"

#include <string>

namespace ps::hwapi::common::climate {

/// Recorder of temperatures, fan speeds, reset reasons and files: one a process. Sensors and fans are known by name;
/// values are kept exactly as they are reported.
class BlackBoxData {
 public:
  BlackBoxData(const BlackBoxData&) = delete;
  BlackBoxData& operator=(const BlackBoxData&) = delete;

  /// @return the recorder, created with the first call and never destroyed
  static BlackBoxData* getInstance();

  /// @return 1 once the recorder is in use, else 0
  u32 isInitialized() const { return 0; }
  /// @return 1 while readings are recorded, else 0
  u32 isTemperatureTraceEnabled() const { return 0; }
  /// Begins to record readings, when the recorder is in use.
  /// @return 1, or 0 when that failed
  u32 enableTemperatureTrace() { return 1; }

  void addSensor(std::string /*sensorName*/) {}
  void removeSensor(std::string /*sensorName*/) {}
  /// @param temperature thousandths of a degree Celsius
  void addTemperature(std::string /*sensorName*/, int /*temperature*/) {}
  void addTemperatureError(std::string /*sensorName*/) {}
  void addFan(std::string /*fanName*/) {}
  /// @param speed revolutions a minute
  void addFanSpeed(std::string /*fanName*/, int /*speed*/) {}
  void addFanSpeedError(std::string /*fanName*/) {}

  /// Writes the black-box files, when the recorder is in use.
  void createDataFiles() {}
  /// Stores a copy of a file.
  /// @return 1 when it is stored, else 0
  u32 copyFile(u32 /*maxFiles*/, const std::string& /*sourceFile*/, const std::string& /*targetFile*/) { return 0; }

 private:
  BlackBoxData() = default;
};

}  // namespace ps::hwapi::common::climate
