/// The reset service and the autodetection service: the second half of the start-up, and what they send.
#include "ClimateService.h"

#include "Endpoints.h"
#include "Log.h"
#include "Msg.h"
#include "OnlineTag.h"
#include "OwnedMsg.h"
#include "messages/Autodet.h"
#include "messages/MessageIds.h"
#include "messages/ResetEvent.h"

namespace ps::hwapi::common::climate {
namespace {

using SubscribeReq = Msg<SApiResetEventNotifSubscribeReq, API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG>;
using SubscribeResp = Msg<SApiResetEventNotifSubscribeResp, API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG>;
using AutodetReq = Msg<SApiAutodetReq, API_AUTODET_REQ_MSG>;
using AutodetUnitInd = Msg<SApiAutodetUnitInd, API_AUTODET_UNIT_IND_MSG>;

/// Transactions of this service carry its endpoint's number.
constexpr u32 kTransactionId = HWAPI_TEMPERATURE_SERVICE;
constexpr int kDefaultSize = 0;

}  // namespace

void ClimateService::PostInit(const char* /*tagName*/, const void* /*value*/, u32 /*size*/) {
  m_climateService.WaitingForResetsToInit();
  m_climateService.SubscribeToResetService();
  m_climateService.RegisterAutodetMsgDelegates();
}

void ClimateService::WaitingForResetsToInit() {
  CLM_LOG(Debug, "Waiting for ResetS to initialize");
  WaitForConfigTag(OnlineTagName(HWAPI_RESET_SERVICE), EStatus_Initialized);
}

void ClimateService::WaitingForAdetSToInit() {
  CLM_LOG(Debug, "Waiting for AdetS to initialize");
  WaitForConfigTag(OnlineTagName(HWAPI_AUTODET_SERVICE), EStatus_Initialized);
}

void ClimateService::SubscribeToResetService() {
  const TAaSysComSicad destination = AaSysComSicadGet(HWAPI_RESET_SERVICE, AaSysComGetOwnNid());
  OwnedMsg req(SubscribeReq(destination, kDefaultSize));
  if (req.payload == nullptr) {
    throw MsgHandlingException("Creation of API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG failed", __FILE_NAME__, __LINE__);
  }
  *req.payload = {.transactionId = kTransactionId,
                  .clientAddress = 0,
                  .resetState = EHwapiResetServiceResetState_ON,
                  .trigger = EEventNotifTrigger_Pre,
                  .waitResp = GLO_TRUE,
                  .board = AaSysComNmapGetBoard(destination),
                  .cpu = AaSysComNmapGetCpu(destination)};
  req.SetSender(AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, AaSysComGetOwnNid()));
  CLM_LOG(Info, "Reset event register request send to HWAPI_RESET_SERVICE");
  req.Send();
}

void ClimateService::RegisterAutodetMsgDelegates() {
  RegisterRoutes(kAutodetRoutes);
  const TAaSysComSicad own = AaSysComSicadGet(0, AaSysComGetOwnNid());
  const TAaSysComSicad destination =
      AaSysComNmapGetSicad(AaSysComNmapGetBoard(own), AaSysComNmapGetCpu(own), HWAPI_AUTODET_SERVICE);
  OwnedMsg req(AutodetReq(destination, kDefaultSize));
  if (req.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_AUTODET_REQ_MSG", __FILE_NAME__, __LINE__);
  }
  req.SetSender(AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, AaSysComGetOwnNid()));
  *req.payload = {.transactionId = kTransactionId,
                  .operation = 0,
                  .provideUnitInd = GLO_TRUE,
                  .unitIndClientAddress = 0,
                  .provideCpuInd = GLO_FALSE,
                  .cpuIndClientAddress = 0};
  CLM_LOG(Info, "RegisterAutodetMsgDelegate request send to HWAPI_AUTODET_SERVICE");
  req.Send();
}

void ClimateService::HandleResetEventNotifSubscribeRespMsg(void* msg) {
  const SubscribeResp resp(msg);
  if (resp.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG", __FILE_NAME__,
                               __LINE__);
  }
  const EHwapiResetServiceStatus status = resp.Record().status;
  if (status != EHwapiResetServiceStatus_Ok) {
    CLM_LOG(Error, "Reset event registering failed (status=%d), blackbox data storing before reset not done",
            static_cast<int>(status));
  } else {
    CLM_LOG(Info, "Reset event notifications are registered");
  }
}

void ClimateService::HandleAutodetResp(void* /*msg*/) { CLM_LOG(Debug, "API_AUTODET_RESP_MSG received"); }

void ClimateService::HandleAutodetUnitInd(void* msg) {
  CLM_LOG(Info, "API_AUTODET_UNIT_IND_MSG received");
  const AutodetUnitInd ind(msg);
  if (ind.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_AUTODET_UNIT_IND_MSG", __FILE_NAME__, __LINE__);
  }
  if (m_daxSensorGroup == nullptr) return;
  const SApiAutodetUnitInd record = ind.Record();
  m_daxSensorGroup->HandleAutodetUnitInd(record.unitInformation.hw_sw_id, record.unitInformation.unit_id,
                                         record.autodetectionState);
}

}  // namespace ps::hwapi::common::climate
