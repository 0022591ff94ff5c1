#include "ddal_error.h"

#include <gtest/gtest.h>

#include <array>

namespace contract {
namespace {

TEST(Drivers, FindEveryDeviceOfTheBoard) {
  std::array<char, 256> problem;
  problem.fill('x');
  EXPECT_EQ(ddal_init(problem.data(), problem.size()), DDAL_OK);
  EXPECT_STREQ(problem.data(), "");
}

}  // namespace
}  // namespace contract
