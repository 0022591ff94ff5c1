/// @file
/// A whole board for one test: a fresh state folder, everything ended and removed at the end.
#pragma once

#include "Program.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace boardtest {

/// Base of the tests. The board's clock runs faster than the host's, so that a second's interval takes a moment.
class BoardTest : public testing::Test {
 protected:
  static constexpr unsigned kClockSpeed = 20;

  BoardTest();
  ~BoardTest() override;

  /// Brings the board up and stays attached to it. Fails the test when that does not work.
  void Up(const std::vector<std::string>& options = {});
  void UpWith(const std::string& description, const std::vector<std::string>& options = {});
  /// Brings the board down again.
  void Down();

  Result Boardsim(std::vector<std::string> arguments) const;
  Result Clmctl(std::vector<std::string> arguments) const;
  std::unique_ptr<Program> StartBoardsim(std::vector<std::string> arguments) const;
  std::unique_ptr<Program> StartClmctl(std::vector<std::string> arguments) const;
  /// The daemon on this board, outside boardsim's care.
  Result Daemon() const;
  /// @return the daemon's process id as `boardsim status` tells it; 0 when it does not run
  pid_t DaemonPid() const;
  /// Ends the daemon; boardsim starts it anew. Returns once that one is online.
  void RestartDaemon() const;
  /// Resets the board itself, with the options of `boardsim reset`. Returns once the daemon has come back.
  void Reset(const std::vector<std::string>& options) const;
  /// Waits for what no line and no tag tells. @return whether it came before the deadline
  static bool Eventually(const std::function<bool()>& isTrue);

  /// Writes a file into the test's folder. @return its path
  std::string Write(const std::string& name, const std::string& text) const;
  std::string StateFolder() const { return m_folder / "state"; }
  const std::filesystem::path& Folder() const { return m_folder; }
  /// Sets a variable for all programs of this test.
  void SetVariable(const std::string& name, const std::string& value) { m_environment[name] = value; }

 private:
  std::filesystem::path m_folder;
  std::map<std::string, std::string> m_environment;
  std::unique_ptr<Program> m_board;
};

/// @return the objects of an output of one JSON object a line
std::vector<nlohmann::json> JsonLines(const std::string& text);
/// @return the text of a file
std::string FileText(const std::filesystem::path& path);
/// @return the descriptions that come with the boards
std::vector<std::string> BoardFiles();

}  // namespace boardtest
