/// @file
/// A made-up tree of kernel temperature chips, removed at the end.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace boardsim {

class MadeUpSysfs {
 public:
  MadeUpSysfs() {
    char name[] = "/tmp/boardsim-sysfs-XXXXXX";
    m_root = mkdtemp(name);
    std::filesystem::create_directories(m_root / "class" / "hwmon");
  }
  ~MadeUpSysfs() { std::filesystem::remove_all(m_root); }
  MadeUpSysfs(const MadeUpSysfs&) = delete;
  MadeUpSysfs& operator=(const MadeUpSysfs&) = delete;

  std::string Root() const { return m_root; }

  /// @param at last part of the device path; empty: the chip has none
  void AddChip(const std::string& folder, const std::string& name, const std::string& at,
               const std::map<std::string, std::string>& files) const {
    const std::filesystem::path chip = m_root / "class" / "hwmon" / folder;
    std::filesystem::create_directories(chip);
    std::ofstream(chip / "name") << name << "\n";
    if (!at.empty()) {
      std::filesystem::create_directories(m_root / "devices" / at);
      std::filesystem::create_directory_symlink(m_root / "devices" / at, chip / "device");
    }
    for (const auto& [file, text] : files) std::ofstream(chip / file) << text << (text.empty() ? "" : "\n");
  }

 private:
  std::filesystem::path m_root;
};

}  // namespace boardsim
