/// @file
/// The fixture of tests with stored files.
#pragma once

#include "BlackBoxTest.h"

#include <string>
#include <vector>

namespace ps::hwapi::common::climate {

/// A black box, a file to be stored, and a clock that shows 14:05:09.
class StoredFilesTest : public BlackBoxTest {
 protected:
  static inline const std::string kSource = "/tmp/results/selftest.txt";
  static inline const std::string kKey = "selftest.txt";

  StoredFilesTest() {
    fake::SetFile(kSource, "result 1");
    fake::SetUtc({.year = 2016, .month = 3, .day = 7, .hour = 14, .minute = 5, .second = 9, .millisec = 42});
    Init();
  }

  /// Stores the file under its own name.
  u32 Store(u32 maxFiles) { return m_blackBox.copyFile(maxFiles, kSource.c_str(), nullptr); }

  /// Stores the file some times, a second between, and forgets what that did.
  void StoreTimes(unsigned times) {
    for (unsigned i = 0; i < times; ++i) {
      EXPECT_EQ(Store(2), 1u);
      fake::AdvanceTime(1'000'000);
    }
    Forget();
  }

  /// @return the name of the copy of a store, when they are made a second after the other
  static std::string Name(unsigned store) {
    return "blackbox_201603071405" + std::string(store < 2 ? "0" : "") + std::to_string(8 + store) + "_" + kKey;
  }
  /// @return its full path
  static std::string Path(unsigned store) { return kLifedata + Name(store); }

  /// @return the paths of all copies on the flash
  static std::vector<std::string> StoredPaths() {
    std::vector<std::string> paths = fake::FilePaths();
    std::erase_if(paths, [](const std::string& path) { return !path.starts_with(kLifedata + "blackbox_2016"); });
    return paths;
  }

  /// @return the names of all registered copies
  static std::vector<std::string> StoredNames() {
    std::vector<std::string> names;
    for (const fake::TrblFile& file : fake::TrblFiles()) {
      if (file.name.starts_with("blackbox_2016")) names.push_back(file.name);
    }
    return names;
  }
};

}  // namespace ps::hwapi::common::climate
