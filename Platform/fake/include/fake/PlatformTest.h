/// @file
/// The fixture of tests that use the recording platform.
#pragma once

#include "fake/Board.h"
#include "fake/Config.h"
#include "fake/Expect.h"
#include "fake/Failures.h"
#include "fake/Files.h"
#include "fake/Hardware.h"
#include "fake/Log.h"
#include "fake/Messages.h"
#include "fake/Platform.h"
#include "fake/Recorder.h"
#include "fake/Semaphores.h"
#include "fake/Service.h"
#include "fake/Threads.h"
#include "fake/Time.h"
#include "fake/Trbl.h"

#include <gtest/gtest.h>

namespace fake {

/// Starts every test with a fresh platform, and fails it when it broke the contract or left a message or a tag's memory
/// behind.
class PlatformTest : public testing::Test {
 protected:
  PlatformTest() { Reset(); }

  void TearDown() override {
    for (const std::string& violation : Violations()) ADD_FAILURE() << violation;
    if (!m_checkLeaks) return;
    EXPECT_EQ(LiveMessages(), 0u) << "messages neither sent nor destroyed";
    EXPECT_EQ(LiveMemory(), 0u) << "references of AaConfigTagGet that were not released";
  }

  /// For tests that keep messages on purpose.
  void AllowLeaks() { m_checkLeaks = false; }

 private:
  bool m_checkLeaks = true;
};

}  // namespace fake
