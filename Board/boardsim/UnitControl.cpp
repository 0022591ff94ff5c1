#include "UnitControl.h"

#include "AaSysLog.h"
#include "ControlMessages.h"
#include "Msg.h"
#include "ddal_error.h"

#include <cstddef>
#include <optional>

namespace boardsim {

using ps::hwapi::common::Msg;
using ps::hwapi::common::Service;

UnitControl::UnitControl(Service& service, const hwapi::board::BoardDescription& board, SimulatedHardware& hardware,
                         UnitSlots& slots, AutodetNeighbour& autodet)
    : m_service(service), m_board(board), m_hardware(hardware), m_slots(slots), m_autodet(autodet) {
  static constexpr Route<UnitControl> kRoutes[] = {
      {.id = BOARDSIM_PLUG_REQ_MSG, .handler = &UnitControl::HandlePlugReq},
      {.id = BOARDSIM_UNPLUG_REQ_MSG, .handler = &UnitControl::HandleUnplugReq},
      {.id = BOARDSIM_AUTODET_REQ_MSG, .handler = &UnitControl::HandleAutodetControlReq},
      {.id = BOARDSIM_SLOTS_REQ_MSG, .handler = &UnitControl::HandleSlotsReq},
  };
  AddRoutes(service, this, kRoutes);
  if (!HasUnitSlots(m_board)) return;
  for (std::size_t slot = 0; slot < kUnitSlots.size(); ++slot) SetSensors(slot);
}

void UnitControl::HandlePlugReq(void* msg) {
  const Msg<PlugReq, BOARDSIM_PLUG_REQ_MSG> request(msg);
  const PlugReq wanted = request.Record();
  auto response = request.CreateReply<Msg<PlugResp, BOARDSIM_PLUG_RESP_MSG>>(0);
  if (response.payload == nullptr) return;
  *response.payload = Change(wanted.slot, {.hwSwId = wanted.hwSwId, .state = wanted.state});
  response.Send();
}

void UnitControl::HandleUnplugReq(void* msg) {
  const Msg<UnplugReq, BOARDSIM_UNPLUG_REQ_MSG> request(msg);
  const u32 slot = request.Record().slot;
  auto response = request.CreateReply<Msg<PlugResp, BOARDSIM_UNPLUG_RESP_MSG>>(0);
  if (response.payload == nullptr) return;
  const std::optional<UnitInSlot> unit = slot < kUnitSlots.size() ? m_slots.Unit(slot) : std::nullopt;
  if (unit && unit->Present()) {
    *response.payload = Change(slot, {.hwSwId = unit->hwSwId, .state = EAdetState_UnPlugged});
  } else {
    response->error = DDAL_ERR_NO_DEVICE;
  }
  response.Send();
}

PlugResp UnitControl::Change(u32 slot, const UnitInSlot& unit) {
  if (!HasUnitSlots(m_board) || slot >= kUnitSlots.size()) {
    return {.error = DDAL_ERR_NO_DEVICE, .told = 0, .isOnline = 0};
  }
  const std::optional<UnitInSlot> before = m_slots.Unit(slot);
  m_slots.Set(slot, unit);
  const bool isSame = before && before->Present() && unit.Present() && before->hwSwId == unit.hwSwId;
  if (!isSame) SetSensors(slot);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0, "slot %s: unit %s is %s", kUnitSlots[slot].name.data(),
                 UnitText(unit.hwSwId).c_str(), UnitStateText(unit.state).c_str());
  return {.error = DDAL_OK, .told = m_autodet.TellClients(slot), .isOnline = m_autodet.Online() ? 1u : 0u};
}

void UnitControl::SetSensors(std::size_t slot) {
  const std::optional<UnitInSlot>& unit = m_slots.Unit(slot);
  for (u32 index = 0; index < kUnitSensors; ++index) {
    const u32 device = kUnitSlots[slot].driverBoard << 16 | index;
    // A sensor that the board does not simulate comes and goes by itself.
    if (unit && unit->Present() && VariantOf(unit->hwSwId).HasSensor(index)) {
      m_hardware.InsertSensor(device);
    } else {
      m_hardware.RemoveSensor(device);
    }
  }
}

void UnitControl::HandleAutodetControlReq(void* msg) {
  const Msg<AutodetControlReq, BOARDSIM_AUTODET_REQ_MSG> request(msg);
  auto response = request.CreateReply<Msg<ChangeResp, BOARDSIM_AUTODET_RESP_MSG>>(0);
  if (response.payload == nullptr) return;
  try {
    if (request.Record().online != 0) {
      m_autodet.GoOnline(m_service);
    } else {
      m_autodet.GoOffline();
    }
  } catch (const Service::InitFailedException&) {
    response->error = DDAL_ERR_BUSY;
  }
  response.Send();
}

void UnitControl::HandleSlotsReq(void* msg) {
  const Msg<char, BOARDSIM_SLOTS_REQ_MSG> request(msg);
  auto response = request.CreateReply<Msg<SlotsResp, BOARDSIM_SLOTS_RESP_MSG>>(0);
  if (response.payload == nullptr) return;
  for (std::size_t slot = 0; slot < kUnitSlots.size(); ++slot) {
    const std::optional<UnitInSlot>& unit = m_slots.Unit(slot);
    if (!unit || !unit->Present()) continue;
    response->slots[slot] = {.present = 1, .hwSwId = unit->hwSwId, .state = unit->state};
  }
  response.Send();
}

}  // namespace boardsim
