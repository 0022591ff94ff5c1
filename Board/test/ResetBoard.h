/// @file
/// A board that is reset.
#pragma once

#include "BlackBoxBoard.h"

#include <sstream>

namespace boardtest {

/// Speaks of resets and of what the black box tells of them.
class ResetBoard : public BlackBoxBoard {
 protected:
  /// The service looks at its clock every ten board seconds and waits as long for the reset service.
  static constexpr unsigned kResetSpeed = 4;
  static constexpr const char* kUnsetClock = "start = 1970-01-01T00:00:00Z\n";

  void UpWithClock() { UpAtSpeed(kResetSpeed); }
  void UpWithoutClock() { UpAtSpeed(kResetSpeed, {}, kUnsetClock); }

  /// Announces a reset, as the reset service does. @return what clmctl said
  Result Announce(const std::string& type, const std::string& category, const std::vector<std::string>& options = {}) {
    std::vector<std::string> command = {"reset", type, "--category", category, "--timeout", "20s"};
    command.insert(command.end(), options.begin(), options.end());
    return Clmctl(command);
  }

  std::filesystem::path BoardFile(unsigned fileSystem) const { return OnFlash(fileSystem, "config/lifedata/blackbox"); }
  /// @return the reset history of a file system's board file, oldest first
  std::vector<std::string> History(unsigned fileSystem = 1) const {
    std::istringstream text(FileText(BoardFile(fileSystem)));
    std::vector<std::string> entries;
    bool inside = false;
    for (std::string line; std::getline(text, line);) {
      if (line.find("SW VERSION:") != std::string::npos) inside = false;
      if (inside) entries.push_back(line);
      if (line.starts_with("RESET Reason and timestamp:")) inside = true;
    }
    return entries;
  }
  /// @return the entries without their times
  std::vector<std::string> Reasons(unsigned fileSystem = 1) const {
    std::vector<std::string> reasons;
    for (const std::string& entry : History(fileSystem))
      reasons.push_back(entry.substr(std::min(kTimeSize, entry.size())));
    return reasons;
  }
  /// Waits until a file system's history holds so many entries.
  bool WaitForEntries(std::size_t count, unsigned fileSystem = 1) const {
    return Eventually([&] { return History(fileSystem).size() == count; });
  }

 private:
  static constexpr std::size_t kTimeSize = 25;
};

}  // namespace boardtest
