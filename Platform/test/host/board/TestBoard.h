/// @file
/// A board of its own for one test: a fresh folder with a description, a run folder and a made-up device tree.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

/// Sets HWAPI_RUN, HWAPI_BOARD and HWAPI_SYSFS to its folder, which it removes in the end.
class TestBoard {
 public:
  TestBoard() {
    std::string folder = std::filesystem::temp_directory_path() / "board-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder");
    m_folder = folder;
    std::filesystem::create_directories(m_folder / "run");
    std::filesystem::create_directories(HwmonClass());
    setenv("HWAPI_RUN", (m_folder / "run").c_str(), 1);
    setenv("HWAPI_BOARD", Description().c_str(), 1);
    setenv("HWAPI_SYSFS", (m_folder / "sys").c_str(), 1);
  }
  TestBoard(const TestBoard&) = delete;
  TestBoard& operator=(const TestBoard&) = delete;
  ~TestBoard() { std::filesystem::remove_all(m_folder); }

  std::filesystem::path Folder() const { return m_folder; }
  std::string Description() const { return m_folder / "board.toml"; }
  /// Writes the description.
  void Describe(const std::string& toml) const { Write(Description(), toml); }

  /// Binds a chip as hwmonN at a device; @p at "" is a chip without one.
  void BindChip(int number, const std::string& name, const std::string& at) const {
    const auto folder = Hwmon(number);
    std::filesystem::create_directories(folder);
    Write(folder / "name", name + '\n');
    if (!at.empty()) std::filesystem::create_directory_symlink("../../../" + at, folder / "device");
  }
  /// Lets an attribute of a chip show a text.
  void Show(int number, const std::string& attribute, const std::string& text) const {
    Write(Hwmon(number) / attribute, text + '\n');
  }
  /// Takes a chip away. What is open of it shows nothing any more.
  void UnbindChip(int number) const {
    for (const auto& entry : std::filesystem::directory_iterator(Hwmon(number))) {
      if (entry.is_regular_file()) std::filesystem::resize_file(entry.path(), 0);
    }
    std::filesystem::remove_all(Hwmon(number));
  }
  std::filesystem::path Hwmon(int number) const { return HwmonClass() / ("hwmon" + std::to_string(number)); }

  /// Replaces a file's contents.
  static void Write(const std::filesystem::path& path, const std::string& contents) { std::ofstream(path) << contents; }

 private:
  std::filesystem::path HwmonClass() const { return m_folder / "sys/class/hwmon"; }

  std::filesystem::path m_folder;
};
