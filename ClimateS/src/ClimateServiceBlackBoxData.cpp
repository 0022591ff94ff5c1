#include "ClimateServiceBlackBoxData.h"

#include "AaConfig.h"
#include "AaSysLog.h"
#include "BlackBoxData.h"
#include "Endpoints.h"
#include "HwapiException.h"
#include "Log.h"
#include "Msg.h"
#include "OwnedMsg.h"
#include "PayloadView.h"
#include "ResetEntry.h"
#include "ResetTexts.h"
#include "TextField.h"
#include "messages/BlackBox.h"
#include "messages/MessageIds.h"
#include "messages/Reset.h"
#include "messages/TagNotification.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace ps::hwapi::common::climate {
namespace {

using StoreFileReq = Msg<SApiBlackboxStoreFileReq, API_BLACKBOX_STORE_FILE_REQ_MSG>;
using StoreFileResp = Msg<SApiBlackboxStoreFileResp, API_BLACKBOX_STORE_FILE_RESP_MSG>;

using TagNotification = Msg<SAaConfigTagPublicSetNotifMsg, AACONFIG_TAG_PUBLIC_SET_NOTIF_MSG>;
using ResetInfoReq = Msg<SApiGetBlackboxResetInfoReq, API_GET_BLACKBOX_RESET_INFO_REQ_MSG>;
using ResetInfoResp = Msg<SApiGetBlackboxResetInfoResp, API_GET_BLACKBOX_RESET_INFO_RESP_MSG>;

constexpr const char* kBootImageLinkTag = "sys.hwapi.bootimage.link.created";

/// Puts work on the service's own thread: the notification goes through its queue.
void NotifyOwnService() {
  const TAaSysComSicad service = AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, AaSysComGetOwnNid());
  OwnedMsg notification(TagNotification(service, sizeof(SAaConfigTagPublicSetNotifMsg)));
  if (notification.payload == nullptr) AaErrorAssertion("notifPayload != GLO_NULL", __FILE_NAME__, __LINE__);
  notification.SendS(service);
}

/// @return category of the newest reset
EResetCategory CategoryOf(const char* text) {
  EResetCategory category = EResetCategory_Unknown;
  if (!FindResetCategory(text, category)) {
    CLM_LOG(Info, "HandleApiBlackboxResetInfoReqMsg(): unknown reset category '%s'", text);
  }
  return category;
}

/// @return why the board was last reset; all zero without a board file
SResetReason LastResetReason() {
  SResetReason reason{};
  const BlackBoxData* const blackBox = BlackBoxData::getInstance();
  if (blackBox->blackBoxFileExists() == 0) return reason;
  char category[ResetEntry::kCategorySize] = {};
  char extended[ResetEntry::kExtendedSize] = {};
  blackBox->ResetStateInfo(category, extended);
  reason.category = CategoryOf(category);
  static_assert(sizeof(extended) == sizeof(reason.extended_info));
  std::memcpy(reason.extended_info, extended, sizeof(extended));
  return reason;
}

/// Converts the counters of a request of the other byte order, in place.
/// @return the request
SApiBlackboxStoreFileReq InHostOrder(const StoreFileReq& req) {
  if (AaSysComIsHostAndMsgEndianSame(req.msg) == GLO_FALSE) {
    PayloadView payload(req.msg);
    payload.Swap32(offsetof(SApiBlackboxStoreFileReq, transactionId));
    payload.Swap32(offsetof(SApiBlackboxStoreFileReq, numOfPreviousFiles));
  }
  return req.Record();
}

}  // namespace

ClimateServiceBlackBoxData::ClimateServiceBlackBoxData(EUnitVersion unitVersion, EUnitType unitType)
    : m_unitVersion(unitVersion), m_unitType(unitType) {}

bool ClimateServiceBlackBoxData::HasBlackBox() const {
  return (m_unitType == EUnitType_Kel && m_unitVersion != EUnitVersion_Kele) || m_unitType == EUnitType_Pivo ||
         m_unitType == EUnitType_Zun;
}

u32 ClimateServiceBlackBoxData::InitBlackBoxData(const std::string* fanNames, u32 numberOfFans) {
  if (!HasBlackBox()) return 0;
  if (BlackBoxData::getInstance()->init(m_unitType) != 1) {
    CLM_LOG(Error, "BlackBox should be used in this HW, but there was some problem when initializing it");
    return 0;
  }
  CLM_LOG(Debug, "BlackBox data collecting initialized");
  AddFansToBlackBox(fanNames, numberOfFans);
  RegisterTagObserver();
  return 1;
}

void ClimateServiceBlackBoxData::AddFansToBlackBox(const std::string* fanNames, u32 numberOfFans) {
  for (u32 i = 0; i < numberOfFans; ++i) BlackBoxData::getInstance()->addFan(fanNames[i]);
}

void ClimateServiceBlackBoxData::RegisterTagObserver() {
  const i32 ret = AaConfigTagRegister(kBootImageLinkTag, TagObserver);
  if (ret != 0) {
    CLM_LOG(Error, "AaConfigTagRegister %s failed, ret=%d", kBootImageLinkTag, ret);
  } else {
    CLM_LOG(Info, "Registered observer for tag %s", kBootImageLinkTag);
  }
}

void ClimateServiceBlackBoxData::TagObserver(const char* name, const void* value, u32 size) {
  u32 number = 0;
  if (value != nullptr) std::memcpy(&number, value, std::min<std::size_t>(size, sizeof(number)));
  if (number == 0) return;
  CLM_LOG(Debug, "TagObserver: tag %s has been set, value = %d", name, static_cast<int>(number));
  NotifyOwnService();
}

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

void ClimateServiceBlackBoxData::HandleApiBlackboxResetInfoReqMsg(void* msg) {
  CLM_LOG(Info, "HandleApiBlackboxResetInfoReqMsg called");
  const ResetInfoReq reqMsg(msg);
  if (reqMsg.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_GET_BLACKBOX_RESET_INFO_REQ_MSG", __FILE_NAME__, __LINE__);
  }
  const SApiGetBlackboxResetInfoReq req = reqMsg.Record();
  const SResetReason reason = LastResetReason();
  CLM_LOG(Debug, "HandleApiBlackboxResetInfoReqMsg(): reset category: %i and reset extra '%s'",
          static_cast<int>(reason.category), reason.extended_info);

  OwnedMsg resp(reqMsg.CreateReply<ResetInfoResp>(sizeof(SApiGetBlackboxResetInfoResp)));
  if (resp.payload == nullptr) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, ERadHwapi_PrintResetTask,
                   "Failed to allocate memory for API_GET_BLACKBOX_RESET_INFO_RESP_MSG");
    return;
  }
  *resp.payload = {.transactionId = req.transactionId,
                   .target_board = req.target_board,
                   .target_cpu = req.target_cpu,
                   .reset_reason = reason,
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
  const u32 stored =
      BlackBoxData::getInstance()->copyFile(record.numOfPreviousFiles, sourceFile.c_str(), targetFile.c_str());

  OwnedMsg resp(StoreFileResp(req.GetSender(), sizeof(SApiBlackboxStoreFileResp)));
  if (resp.payload == nullptr) {
    throw MsgHandlingException("Creation of API_BLACKBOX_STORE_FILE_RESP_MSG failed", __FILE_NAME__, __LINE__);
  }
  resp->transactionId = record.transactionId;
  resp->status = stored == 1 ? EStatus_NoError : EStatus_InvalidParam;
  resp.SendS(AaSysComSicadGet(HWAPI_BLACKBOX, AaSysComGetOwnNid()));
}

}  // namespace ps::hwapi::common::climate
