/// Announced resets: what the history says of them, and what the next start is told.
#include "AaConfig.h"
#include "AaSysTime.h"
#include "BlackBoxData.h"
#include "ClimateServiceBlackBoxData.h"
#include "HwapiException.h"
#include "Log.h"
#include "Msg.h"
#include "OwnedMsg.h"
#include "ResetEntry.h"
#include "ResetTexts.h"
#include "TextField.h"
#include "messages/MessageIds.h"
#include "messages/Reset.h"

#include <cstdlib>
#include <sstream>

namespace ps::hwapi::common::climate {
namespace {

using ResetReq = Msg<SApi2ResetReq, API2_RESET_REQ_MSG>;
using ResetResp = Msg<SApiResetResp, API_RESET_RESP_MSG>;

constexpr const char* kUnknownReset = "Unknown reset reason";
constexpr const char* kUnknownCategory = "Unknown value";
constexpr const char* kOneshotFile = "/rom/swconfig_oneshot.txt";

/// @return whether the request is for this board and switches the reset on
bool ConcernsThisBoard(const SApi2ResetReq& req) {
  const TAaSysComSicad own = AaSysComSicadGet(0, AaSysComGetOwnNid());
  return req.target_board == AaSysComNmapGetBoard(own) &&
         (req.target_cpu == AaSysComNmapGetCpu(own) || req.target_cpu == kFpgaCpu) &&
         req.reset_state == EHwapiResetServiceResetState_ON;
}

const char* TypeTextOf(const SApi2ResetReq& req) {
  const char* const text = ResetTypeText(req.reset_extra, req.target_cpu);
  if (text != nullptr) return text;
  CLM_LOG(Error, "HandleApi2ResetReqMsg(): unknown reset reason %d", static_cast<int>(req.reset_extra));
  return kUnknownReset;
}

const char* CategoryTextOf(u32 category) {
  const char* const text = ResetCategoryText(category);
  if (text != nullptr) return text;
  CLM_LOG(Error, "HandleApi2ResetReqMsg(): reset category %d out of range", static_cast<int>(category));
  return kUnknownCategory;
}

/// One setting of the one-shot configuration.
struct Setting {
  u32 key;
  u32 value;
};

/// Reads the time at which the diagnosis was asked for.
/// @param date out: e.g. 20240131; untouched when the clock cannot be read, as is @p time
/// @param time out: e.g. 93005
void DiagnosisTime(u32& date, u32& time) {
  SAaTime now{};
  if (const i32 error = AaUtcTimeGet(&now); error != 0) {
    CLM_LOG(Debug, "HandleApi2ResetReqMsg(): Failed to save time for diagnostic mode (error: %d)", error);
    return;
  }
  date = now.year * 10000 + now.month * 100 + now.day;
  time = now.hour * 10000 + now.minute * 100 + now.second;
  CLM_LOG(Debug, "HandleApi2ResetReqMsg(): Saving time for diagnostic mode: %u - %u", date, time);
}

std::ostream& operator<<(std::ostream& out, const Setting& setting) {
  return out << "0x" << std::hex << setting.key << "=" << std::dec << setting.value << "\n";
}

}  // namespace

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
  if (ConcernsThisBoard(req)) StoreReset(req);

  OwnedMsg resp(reqMsg.CreateReply<ResetResp>(sizeof(SApiResetResp)));
  if (resp.payload == nullptr) {
    throw MsgHandlingException("Creation of API_RESET_RESP_MSG failed", __FILE_NAME__, __LINE__);
  }
  resp->target_board = req.target_board;
  resp->target_cpu = req.target_cpu;
  resp->reset_state = req.reset_state;
  resp->reset_extra = req.reset_extra;
  CLM_LOG(Debug, "Sending API_RESET_RESP_MSG to HWAPI_RESET_SERVICE");
  resp.Send();
}

void ClimateServiceBlackBoxData::StoreReset(const SApi2ResetReq& req) {
  std::string reason = TypeTextOf(req);
  const u32 category = req.reset_reason.category;
  const char* const categoryText = CategoryTextOf(category);
  if (category == EResetCategory_SelfDiagnostic) CreateDiagnosticModeOneshotSwconfig();
  reason = reason + ResetEntry::kCategoryMark + categoryText;
  const std::string extended = TextOf(req.reset_reason.extended_info);
  if (!extended.empty()) reason += " (" + extended + ")";
  BlackBoxData* const blackBox = BlackBoxData::getInstance();
  blackBox->addResetReasonWithTimestamp(reason);
  blackBox->createDataFilesBeforeReset();
  blackBox->CopyFileToNonRunningFS();
}

void ClimateServiceBlackBoxData::CreateDiagnosticModeOneshotSwconfig() const {
  CLM_LOG(Info, "HandleApi2ResetReqMsg(): Creating oneshot swconfig for SelfDiagnostic mode");
  u32 date = 0;
  u32 time = 0;
  DiagnosisTime(date, time);
  const u32 disableRp441 = AaConfigRadGetValue(ERadHwapi_SelfDiagnosticModeDisableRP441);
  CLM_LOG(Debug, "HandleApi2ResetReqMsg(): ERadHwapi_SelfDiagnosticModeDisableRP441 = %u", disableRp441);

  // Numbers of this service only; no text of a client ever comes here.
  std::ostringstream command;
  command << "echo -e \"";
  command << Setting{.key = ERadHwapi_SelfDiagnosticModeDate, .value = date};
  command << Setting{.key = ERadHwapi_SelfDiagnosticModeTime, .value = time};
  if (disableRp441 != 0) {
    command << Setting{.key = ERadHwapi_SelfDiagnosticMode, .value = 1};
    command << Setting{.key = ERadHwapi_EnableRP441, .value = 0};
  }
  command << "\" > " << kOneshotFile;
  if (std::system(command.str().c_str()) != 0) {
    CLM_LOG(Warning, "HandleApi2ResetReqMsg(): Failed to create oneshot swconfig for SelfDiagnostic mode");
  }
}

}  // namespace ps::hwapi::common::climate
