/// Black-box requests: what the service answers itself, and what it hands to the adapter.
#include "AaSysCom.h"
#include "ClimateService.h"
#include "Endpoints.h"
#include "Log.h"
#include "Msg.h"
#include "OwnedMsg.h"
#include "messages/BlackBox.h"
#include "messages/MessageIds.h"

namespace ps::hwapi::common::climate {
namespace {

using StoreDataReq = Msg<SApiStoreBlackboxDataReq, API_STORE_BLACKBOX_DATA_REQ_MSG>;
using StoreDataResp = Msg<SApiStoreBlackboxDataResp, API_STORE_BLACKBOX_DATA_RESP_MSG>;

}  // namespace

void ClimateService::HandleApiStoreBlackboxDataReqMsg(void* msg) {
  CLM_LOG(Debug, "Received API_STORE_BLACKBOX_DATA_REQ_MSG message");
  const StoreDataReq req(msg);
  if (req.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_STORE_BLACKBOX_DATA_REQ_MSG", __FILE_NAME__, __LINE__);
  }
  m_blackBoxData->createDataFiles();
  CLM_LOG(Info, "Blackbox data storing is ready");

  // The software-download service waits for the answer, whoever asked.
  OwnedMsg resp(
      StoreDataResp(AaSysComSicadGet(HWAPI_SWDL_SERVICE, AaSysComGetOwnNid()), sizeof(SApiStoreBlackboxDataResp)));
  if (resp.payload == nullptr) {
    throw MsgHandlingException("Creation of API_STORE_BLACKBOX_DATA_RESP_MSG failed", __FILE_NAME__, __LINE__);
  }
  resp->transactionId = req.Record().transactionId;
  resp->status = EStatus_NoError;
  resp.SendS(AaSysComSicadGet(HWAPI_BLACKBOX, AaSysComGetOwnNid()));
}

void ClimateService::HandleApiBlackboxStoreFileReqMsg(void* msg) {
  m_blackBoxData->HandleApiBlackboxStoreFileReqMsg(msg);
}

void ClimateService::HandleApiBlackboxResetInfoReqMsg(void* msg) {
  CLM_LOG(Debug, "HandleApiBlackboxResetInfoReqMsg received");
  m_blackBoxData->HandleApiBlackboxResetInfoReqMsg(msg);
}

void ClimateService::HandleApi2ResetReqMsg(void* msg) { m_blackBoxData->HandleApi2ResetReqMsg(msg); }

void ClimateService::HandleConfigTagSetNotif(void* /*msg*/) { m_blackBoxData->HandleConfigTagSetNotif(); }

}  // namespace ps::hwapi::common::climate
