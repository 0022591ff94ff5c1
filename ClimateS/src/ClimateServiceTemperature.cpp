/// Temperature: the board's sensor groups, measurement requests, and the poll timer's indications.
#include "ClimateService.h"

#include "Endpoints.h"
#include "FixedSensorGroup.h"
#include "KelDaxSensorGroup.h"
#include "Log.h"
#include "Msg.h"
#include "OwnedMsg.h"
#include "RadIds.h"
#include "SensorGroupsOfBoard.h"
#include "messages/MessageIds.h"

#include <exception>

namespace ps::hwapi::common::climate {
namespace {

using TempMeasReq = Msg<SApiTempMeasReq, API_TEMP_MEAS_REQ_MSG>;
using TempMeasResp = Msg<SApiTempMeasResp, API_TEMP_MEAS_RESP_MSG>;
using TempMeasInd = Msg<SApiTempMeasInd, API_TEMP_MEAS_IND_MSG>;
using PollTimerInd = Msg<SApiTemperaturePollTimerInd, API_TEMPERATURE_POLL_TIMER_IND_MSG>;

/// Size of an indication in the 16 bits that the platform's message size has.
constexpr u16 IndicationSize(u32 numberOfSensors) {
  return static_cast<u16>(sizeof(SApiTempMeasInd) + sizeof(STempMeasInfo) * (numberOfSensors - 1));
}
static_assert(IndicationSize(0) == 8);
static_assert(IndicationSize(1) == 40);
static_assert(IndicationSize(KelDaxSensorGroup::MAX_NUMBER_OF_ALL_DAX_SENSORS) == 1064);

constexpr std::size_t SlotIndex(GroupSlot slot) { return static_cast<std::size_t>(slot); }

ClimateService::SensorGroupPtr MakeGroup(const GroupOfBoard& group) {
  if (group.sensors.empty()) return std::make_unique<KelDaxSensorGroup>();
  return std::make_unique<FixedSensorGroup>(group.sensors);
}

[[noreturn]] void Fail(const char* description, std::size_t line) {
  throw MsgHandlingException(description, __FILE_NAME__, line);
}

}  // namespace

void ClimateService::MapUnitVersionToSensorGroups() {
  const BoardGroups* const board = FindBoardGroups(m_unitVersion);
  if (board == nullptr) {
    CLM_LOG(
        Error,
        "HWAPI_TEMPERATURE_SERVICE is running on a unsupported unit version: %d (0x%x). Sensors are not initialized",
        static_cast<int>(m_unitVersion), static_cast<u32>(m_unitVersion));
    return;
  }
  if (board->feedPsuSpi) StartOrboLitePsuSpiPoller();
  for (const GroupOfBoard& group : board->groups) this->*kSensorGroups[SlotIndex(group.slot)] = MakeGroup(group);
  if (!board->registerWithBlackBox) return;
  for (const GroupOfBoard& group : board->groups) {
    (this->*kSensorGroups[SlotIndex(group.slot)])->AddSensorsToBlackBox();
  }
}

SensorGroup* ClimateService::SelectSensorGroup(ETempSensorType sensorType) const {
  for (const SlotOfType& row : kSlotOfType) {
    if (row.sensorType == sensorType) return (this->*kSensorGroups[SlotIndex(row.slot)]).get();
  }
  return nullptr;
}

void ClimateService::HandleApiTempMeasReqMsg(void* msg) try {
  const TempMeasReq reqMsg(msg);
  OwnedMsg resp(reqMsg.CreateReply<TempMeasResp>(sizeof(SApiTempMeasResp)));
  if (resp.payload == nullptr) Fail("Creation of API_TEMP_MEAS_RESP_MSG failed", __LINE__);
  if (reqMsg.payload == nullptr) Fail("Payload missing from API_TEMP_MEAS_REQ_MSG", __LINE__);

  const SApiTempMeasReq req = reqMsg.Record();
  resp->command = req.command;
  resp->sensorType = req.sensorType;
  resp->error = HandleMeasurementCommand(req, req.clientAddr != 0 ? req.clientAddr : reqMsg.GetSender());
  CLM_LOG(Debug, "ApiTempMeasReq message arrived %d %d %d %d 0x%X. Responded with status %d",
          static_cast<int>(req.command), static_cast<int>(req.sensorType), static_cast<int>(req.interval),
          static_cast<int>(req.resolution), req.clientAddr, static_cast<int>(resp->error));
  resp.Send();
} catch (const MsgHandlingException&) {
  throw;
} catch (...) {
  std::terminate();
}

ETempMeasError ClimateService::HandleMeasurementCommand(const SApiTempMeasReq& req, TAaSysComSicad client) {
  SensorGroup* const group = SelectSensorGroup(req.sensorType);
  if (group == nullptr) return ETempMeasError_SensorType;
  if (req.command == ETempMeasCommand_Start) return StartMeasurement(*group, req, client);
  if (req.command == ETempMeasCommand_Stop) return StopMeasurement(*group, req);
  return ETempMeasError_Command;
}

ETempMeasError ClimateService::StartMeasurement(SensorGroup& group, const SApiTempMeasReq& req, TAaSysComSicad client) {
  int error = ETempMeasError_NoError;
  try {
    error = group.ActivateTimer(req.sensorType, client, req.interval);
  } catch (const SensorGroup::MsgCreationFailedException& e) {
    throw MsgHandlingException(e);
  }
  // A refused start sets the trace and the state, too.
  m_blackBoxData->EnableTemperatureTrace();
  SetUseCommonServiceState(0);
  SetServiceStateRad(GetServiceStateRad() == ERadHwapiState_ClimateState_Polling_Fan
                         ? ERadHwapiState_ClimateState_Polling_Temp_And_Fan
                         : ERadHwapiState_ClimateState_Polling_Temp);
  return static_cast<ETempMeasError>(error);
}

ETempMeasError ClimateService::StopMeasurement(SensorGroup& group, const SApiTempMeasReq& req) {
  const int error = group.DeactivateTimer(req.sensorType);
  switch (GetServiceStateRad()) {
    case ERadHwapiState_ClimateState_Polling_Fan:
      break;
    case ERadHwapiState_ClimateState_Polling_Temp_And_Fan:
      SetServiceStateRad(ERadHwapiState_ClimateState_Polling_Fan);
      break;
    default:
      SetUseCommonServiceState(1);
      break;
  }
  return static_cast<ETempMeasError>(error);
}

void ClimateService::HandleApiTemperaturePollTimerIndMsg(void* msg) {
  const PollTimerInd timerInd(msg);
  if (timerInd.payload == nullptr) Fail("Payload missing from API_TEMPERATURE_POLL_TIMER_IND_MSG", __LINE__);
  const ETempSensorType sensorType = timerInd.Record().sensorType;
  SensorGroup* const group = SelectSensorGroup(sensorType);
  if (group == nullptr) return;

  const u32 numberOfSensors = group->GetNumberOfSensors(sensorType);
  OwnedMsg ind(TempMeasInd(timerInd.GetSender(), IndicationSize(numberOfSensors)));
  if (ind.payload == nullptr) Fail("Creation of API_TEMP_MEAS_IND_MSG failed", __LINE__);
  ind->sensorType = sensorType;
  ind->numberOfSensors = numberOfSensors;
  group->Read(ind->tempMeasurementInfo);
  ind.SendS(AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, AaSysComGetOwnNid()));
}

}  // namespace ps::hwapi::common::climate
