/// The texts of reset types and categories as tables: which are found again.
#include "ResetTexts.h"

#include <gtest/gtest.h>

namespace ps::hwapi::common::climate {
namespace {

/// @return number of the category with that text; -1 when there is none
int CategoryWith(const std::string& text) {
  auto category = EResetCategory_Unknown;
  return FindResetCategory(text, category) ? static_cast<int>(category) : -1;
}

TEST(ResetCategoryText, IsFoundAgainByAllOfItsCharacters) {
  const char* const texts[] = {"User",
                               "Network",
                               "SwActivation",
                               "Recovery",
                               "Commissioning change",
                               "Reconfiguration",
                               "Selfdiagnostic",
                               "Selfdiagnosticready"};
  int number = 1;
  for (const char* text : texts) EXPECT_EQ(CategoryWith(text), number++) << text;
}

TEST(ResetCategoryText, IsNotFoundByAnyOther) {
  for (const char* text : {"", "Unknown", "user", "User ", "Commissioning", "Self", "Selfdiagnosticreadyy"}) {
    EXPECT_EQ(CategoryWith(text), -1) << text;
  }
}

TEST(ResetTypeText, OfAColdResetTellsTheFpgasOne) {
  EXPECT_STREQ(ResetTypeText(4, 0xD4), "FPGA reconfiguration / Cold reset");
  EXPECT_STREQ(ResetTypeText(4, 1), "Cold reset");
  EXPECT_STREQ(ResetTypeText(7, 0xD4), "Warm reset");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
