#include "UnitSlots.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace boardsim {
namespace {

using Indexes = std::set<u32>;

Indexes SensorsOf(u32 hwSwId) {
  Indexes indexes;
  for (u32 index = 0; index < 0x10000; ++index) {
    if (VariantOf(hwSwId).HasSensor(index)) indexes.insert(index);
  }
  return indexes;
}

TEST(ProcessingUnit, HasTheSensorsOfItsVariant) {
  EXPECT_EQ(SensorsOf(kBasicUnit.hwSwId), (Indexes{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(SensorsOf(kMUnit.hwSwId), (Indexes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(SensorsOf(kPUnit.hwSwId), (Indexes{0, 1, 2, 3, 4, 5, 6, 10}));
}

TEST(ProcessingUnit, IsOfTheVariantThatItsIdTells) {
  for (u32 field = 0; field <= 0xFF; ++field) {
    const std::string_view expected = field == 0x0C ? "m" : field == 0x11 || field == 0x16 ? "p" : "basic";
    EXPECT_EQ(VariantOf(field << 12).name, expected) << field;
    EXPECT_EQ(VariantOf(0xFFF00FFF | field << 12).name, expected) << field;
  }
}

TEST(ProcessingUnit, IsWrittenAsVariantAndId) {
  EXPECT_EQ(UnitText(0x16000), "p (0x16000)");
  EXPECT_EQ(UnitStateText(EAdetState_Hiz), "Hiz");
  EXPECT_EQ(UnitStateText(9), "9");
}

TEST(UnitSlots, AreOfControlBoardsOnly) {
  hwapi::board::BoardDescription board;
  board.unit.type = EUnitType_Kel;
  ASSERT_NE(SlotOfSensor(board, 0x3000A), nullptr);
  EXPECT_EQ(SlotOfSensor(board, 0x3000A)->name, "Dax2");
  EXPECT_EQ(SlotOfSensor(board, 0x10000), nullptr);
  EXPECT_EQ(SlotOfSensor(board, 0x50000), nullptr);
  board.unit.type = EUnitType_Pivo;
  EXPECT_EQ(SlotOfSensor(board, 0x3000A), nullptr);
}

TEST(UnitSlots, TellNothingOfASlotThatNeverHadAUnit) {
  UnitSlots slots;
  slots.Set(1, {.hwSwId = kMUnit.hwSwId, .state = EAdetState_Ready});
  EXPECT_FALSE(slots.Indication(0));
  EXPECT_TRUE(slots.Indication(1));
}

TEST(UnitSlots, TellIdentityAndState) {
  UnitSlots slots;
  for (std::size_t slot = 0; slot < 3; ++slot) slots.Set(slot, {.hwSwId = 0x16000, .state = EAdetState_Sleep});
  for (u32 slot = 0; slot < 3; ++slot) {
    const SApiAutodetUnitInd indication = slots.Indication(slot).value();
    EXPECT_EQ(indication.autodetectionState, EAdetState_Sleep);
    EXPECT_EQ(indication.unitInformation.unit_id, 0x12 + slot);
    EXPECT_EQ(indication.unitInformation.hw_sw_id, 0x16000u);
  }
}

TEST(UnitSlots, RememberAUnitThatWasPulledOut) {
  UnitSlots slots;
  slots.Set(2, {.hwSwId = kMUnit.hwSwId, .state = EAdetState_Ready});
  slots.Set(2, {.hwSwId = kMUnit.hwSwId, .state = EAdetState_UnPlugged});
  EXPECT_FALSE(slots.Unit(2)->Present());
  EXPECT_EQ(slots.Indication(2)->autodetectionState, EAdetState_UnPlugged);
  EXPECT_EQ(slots.Indication(2)->unitInformation.hw_sw_id, kMUnit.hwSwId);
}

}  // namespace
}  // namespace boardsim
