#include "Simulator.h"

#include "AaSysCom.h"
#include "AaSysLog.h"
#include "AaSysTime.h"
#include "ControlMessages.h"
#include "FlashLayout.h"
#include "Msg.h"
#include "PayloadView.h"
#include "SimError.h"
#include "ddal_board.h"
#include "ddal_error.h"
#include "ddal_sim.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <vector>

namespace boardsim {
namespace {

using ps::hwapi::common::Msg;
using ps::hwapi::common::PayloadView;
using ps::hwapi::common::Service;

/// Shortest time between two updates of the hardware, host milliseconds: a fast clock takes several steps at once.
constexpr unsigned kShortestTickMs = 50;
constexpr unsigned kStepMs = SimulatedHardware::kStepMs;
/// Most steps in an update: where the clock is faster still, the steps get longer instead.
constexpr unsigned kMostSteps = 250;
/// Longest time between two updates, board milliseconds: its microseconds fit a timer's 32 bits.
constexpr unsigned kLongestTickMs = 4'000'000;

std::string DriverText(int code) {
  char text[80];
  return ddal_strerror(code, text, sizeof text);
}

/// Puts records at @p offset, which moves behind them.
template <typename Record>
void PutRecords(PayloadView& payload, std::size_t& offset, const std::vector<Record>& records) {
  for (const Record& record : records) {
    payload.Put(offset, record);
    offset += sizeof record;
  }
}

}  // namespace

Simulator::Simulator(StateDirectory state, std::string daemon)
    : Service("boardsim", BOARDSIM_TASK, 0, 0),
      m_state(std::move(state)),
      m_daemon(std::move(daemon)),
      m_reset(m_state.ResetAnswer()) {}

void Simulator::Init() {
  static constexpr Route<Simulator> kRoutes[] = {
      {.id = BOARDSIM_TICK_IND_MSG, .handler = &Simulator::HandleTick},
      {.id = BOARDSIM_TEMP_REQ_MSG, .handler = &Simulator::HandleTempReq},
      {.id = BOARDSIM_FAN_REQ_MSG, .handler = &Simulator::HandleFanReq},
      {.id = BOARDSIM_RESET_REQ_MSG, .handler = &Simulator::HandleResetReq},
      {.id = BOARDSIM_STATUS_REQ_MSG, .handler = &Simulator::HandleStatusReq},
  };
  AddRoutes(*this, this, kRoutes);
  m_hardware = std::make_unique<SimulatedHardware>(hwapi::board::OwnBoard());
  if (const int error = m_hardware->Start(); error != 0) {
    throw InitFailedException("the simulated hardware does not start: " + DriverText(error), __FILE__, __LINE__);
  }
  m_units = std::make_unique<UnitControl>(*this, hwapi::board::OwnBoard(), *m_hardware, m_slots, m_autodet);
  StartTicks();
  m_reset.GoOnline(*this);
  m_autodet.GoOnline(*this);
  m_swdl.GoOnline(*this);
  if (m_daemon.empty()) return;
  m_keeper = std::make_unique<DaemonKeeper>(m_state, m_daemon, [this] {
    m_boardRefused = true;
    kill(getpid(), SIGTERM);  // the orderly end
  });
}

void Simulator::Exit() {
  // The daemon first: it says good-bye to neighbours that are still there.
  m_keeper.reset();
  if (m_hardware) {
    m_reset.GoOffline();
    m_autodet.GoOffline();
    m_swdl.GoOffline();
    m_hardware.reset();
  }
  Service::Exit();
}

void Simulator::StartTicks() {
  // A clock that stands still, of speed 0, is set forward.
  const unsigned speed = std::max(hwapi::board::OwnBoard().clock.speed, 1U);
  const unsigned tickMs = std::min(kShortestTickMs * speed, kLongestTickMs);
  m_stepMs = std::max(kStepMs, tickMs / kMostSteps);
  m_stepsPerTick = (tickMs + m_stepMs - 1) / m_stepMs;
  const u32 periodUs = m_stepsPerTick * m_stepMs * 1000;
  const TAaSysComSicad self = AaSysComSicadGet(BOARDSIM_TASK, AaSysComGetOwnNid());
  void* msg = AaSysComMsgCreate(BOARDSIM_TICK_IND_MSG, 0, self);
  TAaSysTimerId timer = 0;
  if (msg == nullptr || AaSysTimermCreate(&timer, periodUs, periodUs, msg) != 0) {
    AaSysComMsgDestroy(&msg);
    throw InitFailedException("the timer of the simulated hardware does not start", __FILE__, __LINE__);
  }
}

void Simulator::HandleTick(void* /*msg*/) { m_hardware->Advance(m_stepsPerTick, m_stepMs); }

void Simulator::HandleTempReq(void* msg) {
  const Msg<TempReq, BOARDSIM_TEMP_REQ_MSG> request(msg);
  const TempReq wanted = request.Record();
  auto response = request.CreateReply<Msg<ChangeResp, BOARDSIM_TEMP_RESP_MSG>>(0);
  if (response.payload == nullptr) return;
  response->error = m_hardware->SetSensor(wanted.device, wanted.mode, wanted.value);
  response.Send();
}

void Simulator::HandleFanReq(void* msg) {
  const Msg<FanReq, BOARDSIM_FAN_REQ_MSG> request(msg);
  const FanReq wanted = request.Record();
  auto response = request.CreateReply<Msg<ChangeResp, BOARDSIM_FAN_RESP_MSG>>(0);
  if (response.payload == nullptr) return;
  response->error = m_hardware->SetFan(wanted.fan, wanted.change, wanted.value);
  response.Send();
}

void Simulator::HandleResetReq(void* msg) {
  const Msg<ResetReq, BOARDSIM_RESET_REQ_MSG> request(msg);
  const ResetReq wanted = request.Record();
  auto response = request.CreateReply<Msg<ChangeResp, BOARDSIM_RESET_RESP_MSG>>(0);
  if (response.payload == nullptr) return;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 0, "the board is reset");
  const auto change = [this, &wanted, &response] { response->error = ChangeForReset(wanted); };
  if (m_keeper) {
    m_keeper->Reset(change);
  } else {
    change();
  }
  response.Send();
}

i32 Simulator::ChangeForReset(const ResetReq& wanted) const {
  if (wanted.setsCounter != 0) ddal_sim_reset_loop_count_set(wanted.counter);
  if (wanted.fileSystem != 0) {
    if (const int error = RunFileSystem(wanted.fileSystem); error != DDAL_OK) return error;
  }
  return wanted.setsClock != 0 && AaUtcTimeSet(&wanted.clock) != 0 ? DDAL_ERR_INVALID : DDAL_OK;
}

i32 Simulator::RunFileSystem(u32 running) const {
  if (running > 2) return DDAL_ERR_NO_DEVICE;
  // Which one runs follows from the active one, and from whether the active image runs.
  const bool passiveRuns = hwapi::board::OwnBoard().boot.image.value_or(0) != 0;
  const int error = ddal_sim_linux_active_set((running == 2) != passiveRuns ? DDAL_FFS_FS2 : DDAL_FFS_FS1);
  if (error != DDAL_OK) return error;
  try {
    LinkRunningFileSystem(m_state, running);
  } catch (const SimError& failure) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, 0, "%s", failure.what());
    return DDAL_ERR_IO;
  }
  return DDAL_OK;
}

void Simulator::HandleStatusReq(void* msg) {
  const std::vector<SensorStatus> sensors = m_hardware->Sensors();
  const std::vector<FanStatus> fans = m_hardware->Fans();
  const std::size_t size = sizeof(StatusResp) + sensors.size() * sizeof(SensorStatus) + fans.size() * sizeof(FanStatus);
  void* response = AaSysComMsgCreateReply(BOARDSIM_STATUS_RESP_MSG, static_cast<u32>(size), msg);
  if (response == nullptr) return;
  const StatusResp header{.simulatorPid = getpid(),
                          .daemonPid = m_keeper ? m_keeper->Pid() : 0,
                          .daemonStarts = m_keeper ? m_keeper->Starts() : 0,
                          .sensorCount = static_cast<u32>(sensors.size()),
                          .fanCount = static_cast<u32>(fans.size())};
  PayloadView payload(response);
  std::size_t offset = sizeof header;
  payload.Put(0, header);
  PutRecords(payload, offset, sensors);
  PutRecords(payload, offset, fans);
  AaSysComMsgSend(&response);
}

void Simulate(const StateDirectory& state, const std::string& daemon) {
  Simulator simulator(state, daemon);
  char name[] = "boardsim";
  char* arguments[] = {name, nullptr};
  try {
    simulator.Startup(1, arguments);
  } catch (const Service::InitFailedException& error) {
    simulator.Exit();
    throw SimError(ExitCode::Unreachable, "the simulator does not start: " + error.getDescription());
  }
  if (simulator.BoardRefused()) throw SimError(ExitCode::Usage, "the daemon cannot use the board");
}

}  // namespace boardsim
