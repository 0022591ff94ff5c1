#include "KelDaxAdetHandler.h"

#include "BlackBoxData.h"
#include "KelDaxUnitTables.h"
#include "Log.h"
#include "messages/Autodet.h"

#include <algorithm>
#include <iterator>

namespace ps::hwapi::common::climate {
namespace {

/// The hardware variant in a unit's hw_sw_id.
constexpr unsigned int Variant(unsigned int hw_sw_id) { return (hw_sw_id >> 12) & 0xFFu; }

constexpr unsigned int kMVariant = 0x0C;
constexpr unsigned int kPVariants[] = {0x11, 0x16};

/// The ids of a slot's unit differ in the high digit, 1 to 6; the low digit is the slot.
constexpr unsigned int kFirstHighDigit = 1;
constexpr unsigned int kLastHighDigit = 6;

struct Slot {
  unsigned int lowDigit;
  KelDaxUnit* (KelDaxAdetHandler::*init)(unsigned int hw_sw_id);
};
constexpr Slot kSlots[] = {
    {.lowDigit = 2, .init = &KelDaxAdetHandler::InitDax1Unit},
    {.lowDigit = 3, .init = &KelDaxAdetHandler::InitDax2Unit},
    {.lowDigit = 4, .init = &KelDaxAdetHandler::InitDax3Unit},
};

const Slot* FindSlot(unsigned int unit_id) {
  const unsigned int highDigit = unit_id >> 4;
  if (highDigit < kFirstHighDigit || highDigit > kLastHighDigit) return nullptr;
  const auto* found = std::find_if(std::begin(kSlots), std::end(kSlots),
                                   [unit_id](const Slot& slot) { return slot.lowDigit == (unit_id & 0xFu); });
  return found != std::end(kSlots) ? found : nullptr;
}

}  // namespace

void KelDaxAdetHandler::HandleAutodetUnitInd(unsigned int hw_sw_id, unsigned int unit_id, unsigned int state) {
  KelDaxUnit* const unit = ResolveAndInitUnit(hw_sw_id, unit_id);
  if (unit != nullptr) ChangeDaxStatus(unit, unit_id, state);
}

KelDaxUnit* KelDaxAdetHandler::ResolveAndInitUnit(unsigned int hw_sw_id, unsigned int unit_id) {
  const Slot* const slot = FindSlot(unit_id);
  if (slot == nullptr) {
    CLM_LOG(Info, "Undetermined unit_id: %d", static_cast<int>(unit_id));
    return nullptr;
  }
  return (this->*slot->init)(hw_sw_id);
}

void KelDaxAdetHandler::ChangeDaxStatus(KelDaxUnit* unit, unsigned int unit_id, unsigned int state) {
  if (state != EAdetState_UnPlugged) return;
  for (const Sensor& sensor : unit->Sensors()) BlackBoxData::getInstance()->removeSensor(sensor.text);
  unit->Unload();
  CLM_LOG(Info, "Unit 0x%x unplugged", unit_id);
}

KelDaxUnit* KelDaxAdetHandler::InitDax1Unit(unsigned int hw_sw_id) { return Init(m_dax1, kDax1Tables, hw_sw_id); }

KelDaxUnit* KelDaxAdetHandler::InitDax2Unit(unsigned int hw_sw_id) { return Init(m_dax2, kDax2Tables, hw_sw_id); }

KelDaxUnit* KelDaxAdetHandler::InitDax3Unit(unsigned int hw_sw_id) { return Init(m_dax3, kDax3Tables, hw_sw_id); }

KelDaxUnit* KelDaxAdetHandler::Init(KelDaxUnit* unit, const DaxTables& tables, unsigned int hw_sw_id) {
  if (!tables.p.empty() && IsDaxpHwSwId(hw_sw_id)) {
    unit->Load(tables.p);
    CLM_LOG(Debug, "%s DAXP", tables.text);
  } else if (IsDaxmHwSwId(hw_sw_id)) {
    unit->Load(tables.m);
    CLM_LOG(Debug, "%s DAXM", tables.text);
  } else {
    unit->Load(tables.basic);
    CLM_LOG(Debug, "%s", tables.text);
  }
  return unit;
}

bool KelDaxAdetHandler::IsDaxpHwSwId(unsigned int hw_sw_id) {
  return std::find(std::begin(kPVariants), std::end(kPVariants), Variant(hw_sw_id)) != std::end(kPVariants);
}

bool KelDaxAdetHandler::IsDaxmHwSwId(unsigned int hw_sw_id) { return Variant(hw_sw_id) == kMVariant; }

}  // namespace ps::hwapi::common::climate
