#include "ClimateServiceBlackBoxData.h"

#include "AaConfig.h"
#include "BlackBoxData.h"
#include "Endpoints.h"
#include "HwapiException.h"
#include "Log.h"
#include "Msg.h"
#include "MsgGuard.h"
#include "messages/BlackBox.h"
#include "messages/MessageIds.h"
#include "messages/Reset.h"

#include <cstring>
#include <utility>

namespace ps::hwapi::common::climate {
namespace {

using StoreFileReq = Msg<SApiBlackboxStoreFileReq, API_BLACKBOX_STORE_FILE_REQ_MSG>;
using StoreFileResp = Msg<SApiBlackboxStoreFileResp, API_BLACKBOX_STORE_FILE_RESP_MSG>;

using ResetReq = Msg<SApi2ResetReq, API2_RESET_REQ_MSG>;
using ResetResp = Msg<SApiResetResp, API_RESET_RESP_MSG>;
using ResetInfoReq = Msg<SApiGetBlackboxResetInfoReq, API_GET_BLACKBOX_RESET_INFO_REQ_MSG>;
using ResetInfoResp = Msg<SApiGetBlackboxResetInfoResp, API_GET_BLACKBOX_RESET_INFO_RESP_MSG>;

constexpr const char* kBootImageLinkTag = "sys.hwapi.bootimage.link.created";

/// @return the text of a field, whether or not it has its terminating zero
template <std::size_t N>
std::string TextOf(const char (&field)[N]) {
  return std::string(field, strnlen(field, N));
}

/// @return the request, its counters in this host's byte order
SApiBlackboxStoreFileReq InHostOrder(const StoreFileReq& req) {
  SApiBlackboxStoreFileReq record = req.Record();
  if (AaSysComIsHostAndMsgEndianSame(req.msg) == GLO_FALSE) {
    record.transactionId = AaSysComEnd32Swap(record.transactionId);
    record.numOfPreviousFiles = AaSysComEnd32Swap(record.numOfPreviousFiles);
  }
  return record;
}

}  // namespace

ClimateServiceBlackBoxData::ClimateServiceBlackBoxData(EUnitVersion unitVersion, EUnitType unitType)
    : m_unitVersion(unitVersion), m_unitType(unitType) {}

u32 ClimateServiceBlackBoxData::InitBlackBoxData(const std::string* /*fanNames*/, u32 /*numberOfFans*/) { return 0; }

void ClimateServiceBlackBoxData::EnableTemperatureTrace() { BlackBoxData::getInstance()->enableTemperatureTrace(); }

void ClimateServiceBlackBoxData::AddFanSpeed(std::string name, int speed) {
  BlackBoxData::getInstance()->addFanSpeed(std::move(name), speed);
}

void ClimateServiceBlackBoxData::AddFanSpeedError(std::string name) {
  BlackBoxData::getInstance()->addFanSpeedError(std::move(name));
}

void ClimateServiceBlackBoxData::createDataFiles() { BlackBoxData::getInstance()->createDataFiles(); }

void ClimateServiceBlackBoxData::HandleConfigTagSetNotif() {
  createDataFiles();
  const u32 value = 0;
  const i32 ret = AaConfigTagPublicSet(kBootImageLinkTag, &value, sizeof(value));
  if (ret != 0) {
    CLM_LOG(Warning, "AaConfigTagPublicSet() returned an error: %d when setting tag %s", ret, kBootImageLinkTag);
  }
}

void ClimateServiceBlackBoxData::HandleApi2ResetReqMsg(void* msg) {
  const ResetReq reqMsg(msg);
  if (reqMsg.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API2_RESET_REQ_MSG", __FILE_NAME__, __LINE__);
  }
  const SApi2ResetReq req = reqMsg.Record();
  CLM_LOG(Debug,
          "HandleApi2ResetReqMsg(): Received API2_RESET_REQ_MSG { board=0x%X, cpu=0x%X, state=0x%x, extra=0x%X, "
          "Category=0x%X, extended_info='%s' }",
          req.target_board, req.target_cpu, u32{req.reset_state}, req.reset_extra, u32{req.reset_reason.category},
          TextOf(req.reset_reason.extended_info).c_str());

  ResetResp resp = reqMsg.CreateReply<ResetResp>(sizeof(SApiResetResp));
  const MsgGuard guard(resp.msg);
  if (resp.payload == nullptr) {
    throw MsgHandlingException("Creation of API_RESET_RESP_MSG failed", __FILE_NAME__, __LINE__);
  }
  *resp.payload = {.success_code = 0,
                   .target_board = req.target_board,
                   .target_cpu = req.target_cpu,
                   .reset_state = req.reset_state,
                   .reset_extra = req.reset_extra};
  CLM_LOG(Debug, "Sending API_RESET_RESP_MSG to HWAPI_RESET_SERVICE");
  resp.Send();
}

void ClimateServiceBlackBoxData::HandleApiBlackboxResetInfoReqMsg(void* msg) {
  CLM_LOG(Info, "HandleApiBlackboxResetInfoReqMsg called");
  const ResetInfoReq reqMsg(msg);
  if (reqMsg.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_GET_BLACKBOX_RESET_INFO_REQ_MSG", __FILE_NAME__, __LINE__);
  }
  const SApiGetBlackboxResetInfoReq req = reqMsg.Record();
  CLM_LOG(Debug, "HandleApiBlackboxResetInfoReqMsg(): reset category: %i and reset extra '%s'", 0, "");

  ResetInfoResp resp = reqMsg.CreateReply<ResetInfoResp>(sizeof(SApiGetBlackboxResetInfoResp));
  const MsgGuard guard(resp.msg);
  if (resp.payload == nullptr) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, ERadHwapi_PrintResetTask,
                   "Failed to allocate memory for API_GET_BLACKBOX_RESET_INFO_RESP_MSG");
    return;
  }
  *resp.payload = {.transactionId = req.transactionId,
                   .target_board = req.target_board,
                   .target_cpu = req.target_cpu,
                   .reset_reason = {},
                   .status = EStatus_NoError};
  resp.Send();
}

void ClimateServiceBlackBoxData::HandleApiBlackboxStoreFileReqMsg(void* msg) {
  CLM_LOG(Debug, "Received API_BLACKBOX_STORE_FILE_REQ_MSG message");
  const StoreFileReq req(msg);
  if (req.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_BLACKBOX_STORE_FILE_REQ_MSG", __FILE_NAME__, __LINE__);
  }
  const SApiBlackboxStoreFileReq record = InHostOrder(req);
  const std::string sourceFile = TextOf(record.sourceFile);
  const std::string targetFile = TextOf(record.targetFile);
  CLM_LOG(Debug, "HandleApiBlackboxStoreFileReqMsg() sourceFile %s numOfPrevFiles %d", sourceFile.c_str(),
          static_cast<int>(record.numOfPreviousFiles));
  const u32 stored = BlackBoxData::getInstance()->copyFile(record.numOfPreviousFiles, sourceFile, targetFile);

  StoreFileResp resp(req.GetSender(), sizeof(SApiBlackboxStoreFileResp));
  const MsgGuard guard(resp.msg);
  if (resp.payload == nullptr) {
    throw MsgHandlingException("Creation of API_BLACKBOX_STORE_FILE_RESP_MSG failed", __FILE_NAME__, __LINE__);
  }
  resp->transactionId = record.transactionId;
  resp->status = stored == 1 ? EStatus_NoError : EStatus_InvalidParam;
  AaSysComMsgSendS(&resp.msg, AaSysComSicadGet(HWAPI_BLACKBOX, AaSysComGetOwnNid()));
}

}  // namespace ps::hwapi::common::climate
