/// @file
/// The process that plays the rest of the board: neighbouring services, hardware, and the init that keeps the daemon.
#pragma once

#include "AutodetNeighbour.h"
#include "BoardDescription.h"
#include "DaemonKeeper.h"
#include "ResetNeighbour.h"
#include "Service.h"
#include "SimulatedHardware.h"
#include "StateDirectory.h"
#include "SwdlNeighbour.h"
#include "UnitControl.h"
#include "UnitSlots.h"

#include <atomic>
#include <memory>
#include <string>

namespace boardsim {

/// A service among the others: its messages are the neighbours' and those of ControlMessages.h.
class Simulator : public ps::hwapi::common::Service {
 public:
  /// @param daemon program file of the daemon; empty: the board runs without one
  Simulator(StateDirectory state, std::string daemon);

  void Init() override;
  void Exit() override;

  /// @return whether the board went down because the daemon cannot use it
  bool BoardRefused() const { return m_boardRefused; }

 private:
  void StartTicks();
  void HandleTick(void* msg);
  void HandleTempReq(void* msg);
  void HandleFanReq(void* msg);
  void HandleResetReq(void* msg);
  void HandleStatusReq(void* msg);
  /// While the daemon is down. @return 0, DDAL_ERR_INVALID for a wrong clock, or why the rest could not be changed
  i32 ChangeForReset(const ResetReq& wanted) const;
  i32 RunFileSystem(u32 running) const;

  const StateDirectory m_state;
  const std::string m_daemon;
  unsigned m_stepsPerTick = 1;
  unsigned m_stepMs = 0;
  std::unique_ptr<SimulatedHardware> m_hardware;
  ResetNeighbour m_reset;
  UnitSlots m_slots;
  AutodetNeighbour m_autodet{m_slots};
  std::unique_ptr<UnitControl> m_units;
  SwdlNeighbour m_swdl;
  std::atomic<bool> m_boardRefused = false;  ///< set by the keeper's thread
  std::unique_ptr<DaemonKeeper> m_keeper;
};

/// Runs the simulator of a state folder until SIGTERM. HWAPI_RUN and HWAPI_BOARD must be set.
/// @throw SimError (unreachable) when it does not start; (usage) when the daemon cannot use the board
void Simulate(const StateDirectory& state, const std::string& daemon);

}  // namespace boardsim
