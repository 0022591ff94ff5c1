#include "Fans.h"

#include <gtest/gtest.h>

#include <set>

namespace commandline {
namespace {

TEST(Fans, HaveNamesAndNumbersOfTheirOwn) {
  std::set<std::string_view> names;
  std::set<u32> units;
  for (const NamedFan& fan : kFans) {
    names.insert(fan.name);
    units.insert(fan.unit);
  }
  EXPECT_EQ(names.size(), kFans.size());
  EXPECT_EQ(units.size(), kFans.size());
}

TEST(Fans, ThatAreServedGoByTheDriversNumbersToo) {
  for (const NamedFan& fan : kServedFans) {
    ASSERT_TRUE(fan.id.has_value()) << fan.name;
    EXPECT_EQ(FanNameOf(*fan.id), fan.name);
  }
}

TEST(Fans, WithoutANameHaveNone) { EXPECT_EQ(FanNameOf(3), ""); }

}  // namespace
}  // namespace commandline
