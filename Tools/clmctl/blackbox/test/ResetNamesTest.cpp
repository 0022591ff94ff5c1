#include "ResetNames.h"

#include "CommandError.h"

#include <gtest/gtest.h>

#include <set>

namespace clmctl {
namespace {

TEST(ResetName, IsKnownInAnyCase) {
  EXPECT_EQ(ParseResetName(ResetTypes(), "coldreset", "type"), 4u);
  EXPECT_EQ(ParseResetName(ResetCategories(), "SELFDIAGNOSTICREADY", "category"), 8u);
}

TEST(ResetName, IsANumberToo) {
  EXPECT_EQ(ParseResetName(ResetTypes(), "18", "type"), 18u);
  EXPECT_EQ(ParseResetName(ResetTypes(), "0xffffffff", "type"), 0xFFFFFFFFu);
}

TEST(ResetName, ThatIsUnknownIsRefusedWithTheKnownOnes) {
  try {
    ParseResetName(ResetCategories(), "Weather", "category");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Usage);
    EXPECT_NE(std::string(error.what()).find("CommissioningChange"), std::string::npos);
  }
}

TEST(ResetName, ReadsBackAsItIsShown) {
  for (const auto names : {ResetTypes(), ResetCategories()}) {
    for (const ResetName& row : names) {
      EXPECT_EQ(ParseResetName(names, ResetNameText(names, row.number), "name"), row.number);
    }
  }
  EXPECT_EQ(ResetNameText(ResetTypes(), 99), "99");
}

TEST(ResetName, StandsForEachTypeAndCategoryOnce) {
  std::set<u32> types, categories;
  for (const ResetName& row : ResetTypes()) types.insert(row.number);
  for (const ResetName& row : ResetCategories()) categories.insert(row.number);
  EXPECT_EQ(types.size(), 21u);
  EXPECT_EQ(*types.begin(), 1u);
  EXPECT_EQ(*types.rbegin(), 21u);
  EXPECT_EQ(categories.size(), 9u);
  EXPECT_EQ(*categories.rbegin(), 8u);
}

}  // namespace
}  // namespace clmctl
