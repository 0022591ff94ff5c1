// The entry of every test program. Each test runs in a process of its own, as ctest would give it one, but forked: a
// program is loaded and linked once for all of its tests. In a debugger: `set follow-fork-mode child`, with
// --gtest_filter.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>

#include "OwnProcess.h"

namespace {

/// Whether GoogleTest has to see to it itself: it only lists, or started this process for a death test.
bool IsForGoogleTest(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    for (const char* flag : {"--gtest_list_tests", "--gtest_internal_run_death_test", "--help"}) {
      if (std::strncmp(argv[i], flag, std::strlen(flag)) == 0) return true;
    }
  }
  return false;
}

/// How long one test may take: long enough for the slowest on a busy machine; emulators get more (cmake/Testing.cmake).
std::chrono::seconds Limit() {
  const char* const seconds = std::getenv("CLM_TEST_SECONDS");
  return std::chrono::seconds(seconds == nullptr ? 120 : std::atoi(seconds));
}

}  // namespace

int main(int argc, char** argv) try {
  const bool isForGoogleTest = IsForGoogleTest(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return isForGoogleTest ? RUN_ALL_TESTS() : clm::testing::RunEachInOwnProcess(Limit());
} catch (const std::exception& error) {
  std::cerr << argv[0] << ": " << error.what() << '\n';
  return 1;
}
