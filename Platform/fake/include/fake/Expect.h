/// @file
/// Expectations for GoogleTest in few words.
#pragma once

#include "fake/Log.h"
#include "fake/Recorder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace fake {

/// EXPECT_TRUE(fake::CalledInOrder({{"AaSemWait"}, {"AaFileOpen", "/a"}, {"AaSemPost"}})): these calls came in this
/// order, others may lie between. An expected call needs only its first arguments.
inline testing::AssertionResult CalledInOrder(const std::vector<Call>& expected) {
  const std::string mismatch = OrderMismatch(expected);
  return mismatch.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << mismatch;
}

/// EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info, "text")): a line with that level and exactly that text exists.
inline testing::AssertionResult Logged(EAaSysLogSeverityLevel level, const std::string& text) {
  if (HasLogLine(level, text)) return testing::AssertionSuccess();
  auto failure = testing::AssertionFailure() << "not logged: " << LogLine{level, 0, text} << "\nlogged:\n";
  for (const LogLine& line : LogLines()) failure << "  " << line << "\n";
  return failure;
}

}  // namespace fake
