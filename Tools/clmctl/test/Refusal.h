/// @file
/// Wrong input, and what is said of it.
#pragma once

#include "CommandError.h"

#include <gtest/gtest.h>

#include <string>

namespace clmctl {

/// @return what a call says when it refuses its input as a wrong command line; "" when it takes it
template <typename Call>
std::string Refusal(Call call) {
  try {
    call();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Usage);
    return error.what();
  }
  return "";
}

}  // namespace clmctl
