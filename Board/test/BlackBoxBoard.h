/// @file
/// A board whose black box a test looks at.
#pragma once

#include "TestBoard.h"

namespace boardtest {

/// The board Kela. What the black box waits for takes board time; the pace of each test leaves the other services
/// enough of it.
class BlackBoxBoard : public BoardTest {
 protected:
  /// So that the ten seconds in which the reset service has to answer are real ones.
  static constexpr unsigned kRealTime = 1;
  /// An hour takes three seconds.
  static constexpr unsigned kHoursInSeconds = 1200;

  /// @param settings more lines of the board description's clock
  void UpAtSpeed(unsigned speed, const std::vector<std::string>& options = {}, const std::string& settings = "") {
    std::string text = "[clock]\nspeed = " + std::to_string(speed) + "\n" + settings + "[rad]\n\"0x200B5\" = 1\n";
    text += FileText(std::filesystem::path(BOARDS_FOLDER) / "kela.toml");
    UpWith(Write("kela.toml", text), options);
  }
  /// @return the host's path of a file in a file system of the flash
  std::filesystem::path OnFlash(unsigned fileSystem, const std::string& file) const {
    return std::filesystem::path(StateFolder()) / "ffs" / ("fs" + std::to_string(fileSystem)) / file;
  }
  /// @return the host's path of a file in the first file system, which runs unless a test changes that
  std::filesystem::path Running(const std::string& file) const { return OnFlash(1, file); }
  std::filesystem::path Lifedata(const std::string& file) const { return Running("config/lifedata") / file; }

  /// Waits until a file's text holds @p part.
  static bool WaitForText(const std::filesystem::path& file, const std::string& part) {
    return Eventually([&] { return FileText(file).find(part) != std::string::npos; });
  }
};

}  // namespace boardtest
