/// @file
/// Processing units of the simulated board: from requests to hardware and autodetection.
#pragma once

#include "AutodetNeighbour.h"
#include "BoardDescription.h"
#include "SimulatedHardware.h"
#include "UnitMessages.h"
#include "UnitSlots.h"

namespace boardsim {

/// Plugs and unplugs units: their sensors appear or vanish, and the autodetection service tells its clients. Lets that
/// service come and go. Used by the simulator's thread.
class UnitControl {
 public:
  /// All arguments outlive the control. The board's slots are empty at first.
  UnitControl(ps::hwapi::common::Service& service, const hwapi::board::BoardDescription& board,
              SimulatedHardware& hardware, UnitSlots& slots, AutodetNeighbour& autodet);
  UnitControl(const UnitControl&) = delete;
  UnitControl& operator=(const UnitControl&) = delete;

 private:
  void HandlePlugReq(void* msg);
  void HandleUnplugReq(void* msg);
  void HandleAutodetControlReq(void* msg);
  void HandleSlotsReq(void* msg);

  PlugResp Change(u32 slot, const UnitInSlot& unit);
  /// Lets the sensors of a slot's unit be there, with nothing the matter, and no others.
  void SetSensors(std::size_t slot);

  ps::hwapi::common::Service& m_service;
  const hwapi::board::BoardDescription& m_board;
  SimulatedHardware& m_hardware;
  UnitSlots& m_slots;
  AutodetNeighbour& m_autodet;
};

}  // namespace boardsim
