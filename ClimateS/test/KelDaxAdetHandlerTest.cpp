/// From autodetection indications to the sensor tables of the processing units.
#include "KelDaxAdetHandler.h"
#include "ServiceOnBoard.h"

#include <algorithm>
#include <ostream>
#include <tuple>
#include <type_traits>

namespace ps::hwapi::common::climate {
namespace {

using Row = std::tuple<std::string, u32, u32>;  ///< name, code, device
using Rows = std::vector<Row>;

const Rows kDax1Basic = {{"DAX1_MCU", 12, 0x20000},  {"DAX1_DSP1", 13, 0x20001}, {"DAX1_DSP2", 14, 0x20002},
                         {"DAX1_DSP3", 15, 0x20003}, {"DAX1_DSP4", 16, 0x20004}, {"DAX1_DSP5", 17, 0x20005},
                         {"DAX1_DSP6", 18, 0x20006}};
const Rows kDax2Basic = {{"DAX2_MCU", 19, 0x30000},  {"DAX2_DSP1", 20, 0x30001}, {"DAX2_DSP2", 21, 0x30002},
                         {"DAX2_DSP3", 22, 0x30003}, {"DAX2_DSP4", 23, 0x30004}, {"DAX2_DSP5", 24, 0x30005},
                         {"DAX2_DSP6", 25, 0x30006}};
const Rows kDax3Basic = {{"DAX3_MCU", 26, 0x40000},  {"DAX3_DSP1", 27, 0x40001}, {"DAX3_DSP2", 28, 0x40002},
                         {"DAX3_DSP3", 29, 0x40003}, {"DAX3_DSP4", 30, 0x40004}, {"DAX3_DSP5", 31, 0x40005},
                         {"DAX3_DSP6", 32, 0x40006}};

Rows operator+(Rows rows, const Rows& more) {
  rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

const Rows kDax1M = kDax1Basic + Rows{{"DAX1_DSP7", 58, 0x20007},
                                      {"DAX1_DSP8", 59, 0x20008},
                                      {"DAX1_DSP9", 60, 0x20009},
                                      {"DAX1_VORNIK", 67, 0x2000A}};
const Rows kDax2M = kDax2Basic + Rows{{"DAX2_DSP7", 61, 0x30007},
                                      {"DAX2_DSP8", 62, 0x30008},
                                      {"DAX2_DSP9", 63, 0x30009},
                                      {"DAX2_VORNIK", 68, 0x3000A}};
const Rows kDax3M = kDax3Basic + Rows{{"DAX3_DSP7", 64, 0x40007},
                                      {"DAX3_DSP8", 65, 0x40008},
                                      {"DAX3_DSP9", 66, 0x40009},
                                      {"DAX3_VORNIK", 69, 0x4000A}};
const Rows kDax2P = kDax2Basic + Rows{{"DAX2_VORNIK", 68, 0x3000A}};
const Rows kDax3P = kDax3Basic + Rows{{"DAX3_VORNIK", 69, 0x4000A}};

Rows RowsOf(const KelDaxUnit& unit) {
  Rows rows;
  for (const Sensor& sensor : unit.Sensors()) rows.emplace_back(sensor.text, sensor.name, sensor.device);
  return rows;
}

static_assert(std::is_polymorphic_v<KelDaxAdetHandler> && std::has_virtual_destructor_v<KelDaxAdetHandler>);

constexpr u32 kReady = 0;
constexpr u32 kUnPlugged = 2;

class KelDaxAdetHandlerTest : public fake::PlatformTest {
 protected:
  /// Number of sensors of the units in the slots Dax1, Dax2 and Dax3.
  std::vector<u32> Counts() const { return {m_units[0].Count(), m_units[1].Count(), m_units[2].Count()}; }

  KelDaxUnit m_units[3];
  KelDaxAdetHandler m_handler{&m_units[0], &m_units[1], &m_units[2]};
};

struct Variant {
  const char* name;
  u32 hwSwId;
  u32 unitId;
  std::size_t slot;
  const char* line;
  const Rows& rows;

  friend std::ostream& operator<<(std::ostream& out, const Variant& variant) { return out << variant.name; }
};

class UnitVariantTest : public KelDaxAdetHandlerTest, public testing::WithParamInterface<Variant> {};

TEST_P(UnitVariantTest, LoadsItsTable) {
  m_handler.HandleAutodetUnitInd(GetParam().hwSwId, GetParam().unitId, kReady);
  EXPECT_EQ(RowsOf(m_units[GetParam().slot]), GetParam().rows);
}

TEST_P(UnitVariantTest, IsLogged) {
  m_handler.HandleAutodetUnitInd(GetParam().hwSwId, GetParam().unitId, kReady);
  EXPECT_EQ(fake::LogLines(), (std::vector<fake::LogLine>{{EAaSysLogSeverityLevel_Debug, 131143, GetParam().line}}));
}

TEST_P(UnitVariantTest, LeavesTheOtherSlots) {
  m_handler.HandleAutodetUnitInd(GetParam().hwSwId, GetParam().unitId, kReady);
  for (std::size_t slot = 0; slot < 3; ++slot) {
    EXPECT_TRUE(slot == GetParam().slot || m_units[slot].Count() == 0) << slot;
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, UnitVariantTest,
                         testing::Values(Variant{"Dax1Basic", 0x00000, 0x12, 0, "Dax1", kDax1Basic},
                                         Variant{"Dax1M", 0x0C000, 0x12, 0, "Dax1 DAXM", kDax1M},
                                         Variant{"Dax1WithThePField11", 0x11000, 0x12, 0, "Dax1", kDax1Basic},
                                         Variant{"Dax1WithThePField16", 0x16000, 0x12, 0, "Dax1", kDax1Basic},
                                         Variant{"Dax2Basic", 0x12000, 0x13, 1, "Dax2", kDax2Basic},
                                         Variant{"Dax2M", 0x0C000, 0x13, 1, "Dax2 DAXM", kDax2M},
                                         Variant{"Dax2P11", 0x11000, 0x13, 1, "Dax2 DAXP", kDax2P},
                                         Variant{"Dax2P16", 0x16000, 0x13, 1, "Dax2 DAXP", kDax2P},
                                         Variant{"Dax3Basic", 0x0D000, 0x14, 2, "Dax3", kDax3Basic},
                                         Variant{"Dax3M", 0x0C000, 0x14, 2, "Dax3 DAXM", kDax3M},
                                         Variant{"Dax3P11", 0x11000, 0x14, 2, "Dax3 DAXP", kDax3P},
                                         Variant{"Dax3P16", 0x16000, 0x14, 2, "Dax3 DAXP", kDax3P}),
                         [](const auto& test) { return test.param.name; });

TEST_F(KelDaxAdetHandlerTest, VariantIsTheByteFromBit12OfTheId) {
  for (const u32 field : {0x0Cu, 0x11u, 0x16u}) {
    const u32 id = 0xFFF00FFF | field << 12;
    EXPECT_EQ(KelDaxAdetHandler::IsDaxmHwSwId(id), field == 0x0C) << field;
    EXPECT_EQ(KelDaxAdetHandler::IsDaxpHwSwId(id), field != 0x0C) << field;
  }
}

TEST_F(KelDaxAdetHandlerTest, OtherFieldsAreNeitherVariant) {
  for (u32 field = 0; field <= 0xFF; ++field) {
    if (field == 0x0C || field == 0x11 || field == 0x16) continue;
    EXPECT_FALSE(KelDaxAdetHandler::IsDaxmHwSwId(field << 12)) << field;
    EXPECT_FALSE(KelDaxAdetHandler::IsDaxpHwSwId(field << 12)) << field;
  }
}

TEST_F(KelDaxAdetHandlerTest, SlotFollowsFromTheUnitId) {
  for (const u32 cabinet : {0x10u, 0x20u, 0x30u, 0x40u, 0x50u, 0x60u}) {
    EXPECT_EQ(m_handler.ResolveAndInitUnit(0, cabinet + 2), &m_units[0]) << cabinet;
    EXPECT_EQ(m_handler.ResolveAndInitUnit(0, cabinet + 3), &m_units[1]) << cabinet;
    EXPECT_EQ(m_handler.ResolveAndInitUnit(0, cabinet + 4), &m_units[2]) << cabinet;
  }
}

TEST_F(KelDaxAdetHandlerTest, ExactlyEighteenUnitIdsHaveASlot) {
  int withSlot = 0;
  for (u32 unitId = 0; unitId < 0x1000; ++unitId) withSlot += m_handler.ResolveAndInitUnit(0, unitId) != nullptr;
  EXPECT_EQ(withSlot, 18);
}

TEST_F(KelDaxAdetHandlerTest, OtherUnitIdsAreUndetermined) {
  EXPECT_EQ(m_handler.ResolveAndInitUnit(0, 0x15), nullptr);
  EXPECT_EQ(m_handler.ResolveAndInitUnit(0, 0x72), nullptr);
  EXPECT_EQ(m_handler.ResolveAndInitUnit(0, 0xFFFFFFFF), nullptr);
  EXPECT_EQ(
      fake::LogTexts(EAaSysLogSeverityLevel_Info),
      (std::vector<std::string>{"Undetermined unit_id: 21", "Undetermined unit_id: 114", "Undetermined unit_id: -1"}));
}

TEST_F(KelDaxAdetHandlerTest, UndeterminedUnitChangesNoSlot) {
  m_handler.HandleAutodetUnitInd(0, 0x13, kReady);
  m_handler.HandleAutodetUnitInd(0, 0x15, kUnPlugged);
  EXPECT_EQ(Counts(), (std::vector<u32>{0, 7, 0}));
}

TEST_F(KelDaxAdetHandlerTest, EveryStateButUnPluggedLeavesTheTable) {
  for (const u32 state : {0u, 1u, 3u, 4u, 5u, 6u, 7u, 8u, 99u}) {
    m_units[1].Unload();
    m_handler.HandleAutodetUnitInd(0, 0x23, state);
    EXPECT_EQ(m_units[1].Count(), 7u) << "state " << state;
  }
}

TEST_F(KelDaxAdetHandlerTest, UnPluggedEmptiesTheSlotAndIsLogged) {
  m_handler.HandleAutodetUnitInd(0, 0x23, kReady);
  fake::ClearLog();
  m_handler.HandleAutodetUnitInd(0, 0x23, kUnPlugged);
  EXPECT_EQ(Counts(), (std::vector<u32>{0, 0, 0}));
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Info), std::vector<std::string>{"Unit 0x23 unplugged"});
}

TEST_F(KelDaxAdetHandlerTest, UnPluggedLeavesTheOtherSlots) {
  for (const u32 unitId : {0x12u, 0x13u, 0x14u}) m_handler.HandleAutodetUnitInd(0, unitId, kReady);
  m_handler.HandleAutodetUnitInd(0, 0x13, kUnPlugged);
  EXPECT_EQ(Counts(), (std::vector<u32>{7, 0, 7}));
}

TEST_F(KelDaxAdetHandlerTest, UnPluggedOfAnEmptySlotLoadsItsTableFirst) {
  m_handler.HandleAutodetUnitInd(0x0C000, 0x12, kUnPlugged);
  EXPECT_EQ(m_units[0].Count(), 0u);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "Dax1 DAXM"));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info, "Unit 0x12 unplugged"));
}

TEST_F(KelDaxAdetHandlerTest, EveryIndicationLoadsTheTableAnew) {
  m_handler.HandleAutodetUnitInd(0x0C000, 0x13, kReady);
  m_handler.HandleAutodetUnitInd(0x11000, 0x63, kReady);
  EXPECT_EQ(RowsOf(m_units[1]), kDax2P);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
