#include "UnitValues.h"

#include "SimError.h"
#include "messages/Autodet.h"

#include <gtest/gtest.h>

#include <string>

namespace boardsim {
namespace {

TEST(SlotArgument, IsANameOrANumber) {
  EXPECT_EQ(ParseSlot("Dax1"), 0u);
  EXPECT_EQ(ParseSlot("DAX2"), 1u);
  EXPECT_EQ(ParseSlot("dax3"), 2u);
  EXPECT_EQ(ParseSlot("1"), 0u);
  EXPECT_EQ(ParseSlot("3"), 2u);
}

TEST(SlotArgument, OfAnotherSlotIsRefused) {
  for (const char* slot : {"", "0", "4", "Dax", "Dax0", "Dax4", "Dax11", "DaxAll", "-1", "1 "}) {
    EXPECT_THROW(ParseSlot(slot), SimError) << slot;
  }
}

TEST(VariantArgument, IsANameOrAnId) {
  EXPECT_EQ(ParseVariant("m"), 0x0C000u);
  EXPECT_EQ(ParseVariant("P"), 0x11000u);
  EXPECT_EQ(ParseVariant("0x16000"), 0x16000u);
  const u32 field = ParseVariant("basic") >> 12;
  EXPECT_TRUE(field != 0x0C && field != 0x11 && field != 0x16) << field;
}

TEST(VariantArgument, OfNonsenseIsRefused) {
  for (const char* variant : {"", "q", "mm", "large", "0x", "-1", "4294967296"}) {
    EXPECT_THROW(ParseVariant(variant), SimError) << variant;
  }
}

TEST(UnitStateArgument, IsANameOrANumber) {
  EXPECT_EQ(ParseUnitState("Ready"), u32{EAdetState_Ready});
  EXPECT_EQ(ParseUnitState("uninitialized"), u32{EAdetState_UnInitialized});
  EXPECT_EQ(ParseUnitState("UnPlugged"), u32{EAdetState_UnPlugged});
  EXPECT_EQ(ParseUnitState("SwUpgrade"), u32{EAdetState_SwUpgrade});
  EXPECT_EQ(ParseUnitState("Timeout"), u32{EAdetState_Timeout});
  EXPECT_EQ(ParseUnitState("Hiz"), u32{EAdetState_Hiz});
  EXPECT_EQ(ParseUnitState("Sleep"), u32{EAdetState_Sleep});
  EXPECT_EQ(ParseUnitState("Plugged"), u32{EAdetState_Plugged});
  EXPECT_EQ(ParseUnitState("Unknown"), u32{EAdetState_Unknown});
  EXPECT_EQ(ParseUnitState("99"), 99u);
}

TEST(UnitStateArgument, OfNonsenseIsRefusedWithAllNames) {
  try {
    ParseUnitState("gone");
    FAIL() << "not refused";
  } catch (const SimError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Usage);
    for (const char* name : {"Ready", "UnPlugged", "Unknown"}) {
      EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace boardsim
