/// @file
/// The board that is measured or attacked: a Kela whose sensors are hwmon attributes in a folder of its own.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// What a board has beside its sensors.
struct BoardExtras {
  bool fans = false;        ///< both fans of a Kela
  unsigned clockSpeed = 1;  ///< board seconds a second
  bool chips = false;       ///< whether a sensor of the control board and the second fan have a chip of their own each
};

/// A board's files in a fresh folder, removed with this object. This process's own platform libraries use it, too.
class BenchBoard {
 public:
  explicit BenchBoard(const BoardExtras& extras = {});
  BenchBoard(const BenchBoard&) = delete;
  BenchBoard& operator=(const BenchBoard&) = delete;
  ~BenchBoard();

  /// What a program of this board needs in its environment.
  const std::map<std::string, std::string>& Environment() const { return m_environment; }
  const std::filesystem::path& Folder() const { return m_folder; }
  /// Paths of the sensors' attributes.
  const std::vector<std::string>& SensorFiles() const { return m_sensorFiles; }
  /// Folders of the chips that BoardExtras::chips asks for.
  std::filesystem::path SensorChip() const { return ChipFolder(1); }
  std::filesystem::path FanChip() const { return ChipFolder(2); }

 private:
  std::filesystem::path ChipFolder(unsigned chip) const;
  std::string MakeSensors(const BoardExtras& extras);
  std::string MakeFans(const BoardExtras& extras) const;

  std::filesystem::path m_folder;
  std::map<std::string, std::string> m_environment;
  std::vector<std::string> m_sensorFiles;
};

}  // namespace bench
