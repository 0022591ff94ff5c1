/// Why the board was last reset: asked of the reset service at start-up, stored once the clock is set.
#include "AaConfig.h"
#include "AaSysCom.h"
#include "AaSysLog.h"
#include "AaSysTime.h"
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "Endpoints.h"
#include "HwapiUnit.h"
#include "Log.h"
#include "Msg.h"
#include "OnlineTag.h"
#include "OwnedMsg.h"
#include "ResetEntry.h"
#include "messages/MessageIds.h"
#include "messages/ResetProofRam.h"
#include "messages/Status.h"

#include <new>

namespace ps::hwapi::common::climate {
namespace {

using RpRamReq = Msg<SApiOmGetRPRamReq, API_OM_GET_RP_RAM_REQ_MSG>;
using RpRamResp = Msg<SApiOmGetRPRamResp, API_OM_GET_RP_RAM_RESP_MSG>;

constexpr u32 kNoResetType = 0xFFFFFFFF;
constexpr u32 kOnlinePollMs = 500;
constexpr u32 kResponseTimeoutUs = 10'000'000;
constexpr u32 kClockPollSec = 10;
/// A clock that was never set shows an earlier year.
constexpr u32 kLastYearOfUnsetClock = 2009;

constexpr const char* kThreadName = "BlackBoxDataNtp";
constexpr u32 kStackSize = 1024;
constexpr u32 kPriority = 5;

/// What the history says of a reset type.
struct ResetText {
  u32 type;
  const char* text;
  bool mayBeRequested = false;  ///< when the newest entry is a request for it, that entry stands for it
};

/// The types that are left out have no text on purpose: they count as unknown. Power-on is decided from the history.
constexpr ResetText kResetTexts[] = {
    {.type = ERPresetTypeWdog, .text = "Watchdog reset"},
    {.type = ERPresetTypeSpuriousReset, .text = "Spurious reset (probably SW crash)"},
    {.type = ERPresetTypeAppHard, .text = "App Hard reset", .mayBeRequested = true},
    {.type = ERPresetTypeAppFull, .text = "Application full reset"},
    {.type = ERPresetTypeAppPOR, .text = "App POR reset", .mayBeRequested = true},
    {.type = ERPresetTypeAppSoft, .text = "Application soft reset"},
    {.type = ERPresetTypeFrontPanel, .text = "Front panel reset"},
    {.type = ERPresetTypeTemp, .text = "Temperature reset"},
    {.type = ERPresetTypeConfig, .text = "Configuration reset"},
    {.type = ERPresetTypeEmulator, .text = "Emulator reset"},
    {.type = ERPresetTypeSpuriousResetBts, .text = "Spurious BTS reset"},
};

/// A user of the message service for as long as an answer is waited for.
class TemporaryUser {
 public:
  TemporaryUser() : m_task(AaSysComUserRegister(0, AaProEuCurrent())) {}
  TemporaryUser(const TemporaryUser&) = delete;
  TemporaryUser& operator=(const TemporaryUser&) = delete;
  ~TemporaryUser() { AaSysComUserDeregister(m_task); }
  TAaSysComSicad Address() const { return AaSysComSicadGet(m_task, AaSysComGetOwnNid()); }

 private:
  u32 m_task;
};

void WaitForResetService() {
  CLM_LOG(Debug, "Wait that HWAPI_RESET_SERVICE has started");
  const std::string tag = OnlineTagName(HWAPI_RESET_SERVICE);
  u32 state = 0;
  while (AaConfigTagGetU32(tag.c_str(), &state) != 0 || state != EStatus_Initialized) {
    AaSysTimeSleep(kOnlinePollMs, EAaSysTimeScale_Millisec);
  }
}

RpRamReq ResetTypeRequest() {
  RpRamReq request(AaSysComSicadGet(HWAPI_RESET_SERVICE, AaSysComGetOwnNid()), sizeof(SApiOmGetRPRamReq));
  if (request.payload == nullptr) AaErrorAssertion("request != GLO_NULL", __FILE_NAME__, __LINE__);
  request->field = ERP_RAM_field_ResetType;
  return request;
}

/// @return the reset type that an answer tells
u32 ResetTypeIn(const OwnedMsg<RpRamResp>& response) {
  if (response.payload == nullptr) AaErrorAssertion("response != GLO_NULL", __FILE_NAME__, __LINE__);
  CLM_LOG(Debug, "Blackbox::readResetTypeFromRpram(): received API_OM_GET_RP_RAM_RESP_MSG from HWAPI_RESET_SERVICE");
  const SApiOmGetRPRamResp answer = response.Record();
  if (answer.status != ERP_RAM_status_Success) {
    CLM_LOG(Error,
            "Blackbox::readResetTypeFromRpram(): Error %d returned by HWAPI_RESET_SERVICE in "
            "API_OM_GET_RP_RAM_RESP_MSG",
            static_cast<int>(answer.status));
    return kNoResetType;
  }
  // What a short answer lacks reads as zero, which would be a power-on.
  if (AaSysComMsgGetPayloadSize(response.msg) < sizeof(answer)) return kNoResetType;
  CLM_LOG(Debug, "Blackbox::readResetTypeFromRpram(): last reset type was %d", static_cast<int>(answer.value));
  return answer.value;
}

/// @param newest newest entry of the history; empty when there is none
std::string ResetTextAfterPowerOn(const std::string& newest) {
  constexpr const char* kPlain = "PowerOn reset";
  constexpr struct {
    const char* sign;
    const char* text;
  } kSpecial[] = {
      {.sign = "FPGA reconfiguration", .text = "PowerOn reset (probably FPGA reconfiguration reset)"},
      {.sign = "Cold reset", .text = "PowerOn reset (probably same as previous cold reset)"},
  };
  for (const auto& row : kSpecial) {
    if (newest.find(row.sign) == std::string::npos) continue;
    if (newest.find(ResetEntry::kCategoryMark) == std::string::npos) return row.text;
    const ResetEntry parsed(newest);
    return std::string(row.text) + ResetEntry::kCategoryMark + parsed.category + " " + parsed.extended;
  }
  return kPlain;
}

}  // namespace

u32 BlackBoxData::readResetTypeFromRpram() {
  WaitForResetService();
  OwnedMsg request(ResetTypeRequest());
  const TemporaryUser user;
  request.SendS(user.Address());
  CLM_LOG(Debug, "Blackbox::readResetTypeFromRpram(): sending API_OM_GET_RP_RAM_REQ_MSG to HWAPI_RESET_SERVICE");
  constexpr u16 kFilter[] = {1, API_OM_GET_RP_RAM_RESP_MSG};
  const OwnedMsg response(RpRamResp(hwapiMsgQueueReceiveSelective(kResponseTimeoutUs, kFilter)));
  if (response.msg == nullptr) {
    CLM_LOG(Error,
            "Blackbox::readResetTypeFromRpram(): No response to API_OM_GET_RP_RAM_REQ_MSG received from "
            "HWAPI_RESET_SERVICE");
    return kNoResetType;
  }
  return ResetTypeIn(response);
}

bool BlackBoxData::FindResetReason(u32 resetType) {
  if (resetType == ERPresetTypePowerOn) {
    resetReasonReadInStartup = ResetTextAfterPowerOn(NewestReset());
    return true;
  }
  for (const ResetText& row : kResetTexts) {
    if (row.type != resetType) continue;
    if (!row.mayBeRequested || updateLastResetResonIfRequested() == 0) resetReasonReadInStartup = row.text;
    return true;
  }
  return false;
}

void BlackBoxData::checkResetType() try {
  const u32 resetType = readResetTypeFromRpram();
  if (FindResetReason(resetType)) {
    startWaitingForNTPTime(resetType);
  } else {
    CLM_LOG(Info, "Blackbox::checkResetType(): last reset type is unknown (%d)", static_cast<int>(resetType));
  }
} catch (const std::bad_alloc&) {
  LogOutOfMemory("checkResetType");
}

void BlackBoxData::startWaitingForNTPTime(u32 resetType) {
  CLM_LOG(Info,
          "BlackBoxData::startWaitingForNTPTime(): reset reason (%d) needs to be stored to blackbox, wait for NTP time",
          static_cast<int>(resetType));
  resetReasonAndTimestamp.Update([](ResetHistory& history) {
    history.waitingNtpTime = 1;
    return true;
  });
  TAaProEuId euId = 0;
  const i32 ret = AaSysComEuCreateAndStart(&euId, kThreadName, waitingForNTPTime, kStackSize, kPriority, nullptr, 0);
  if (ret != 0) {
    CLM_LOG(Error, "BlackBoxData::startWaitingForNTPTime(): failed to start thread for waiting NTP time, ret = %d\n",
            ret);
  }
}

void* waitingForNTPTime(void* /*argument*/) {
  for (;;) {
    SAaTime now{};
    AaLocalTimeGet(&now);
    if (now.year > kLastYearOfUnsetClock) break;
    CLM_LOG(Debug, "BlackBoxData / waitingForNTPTime: NTP time not available, continue waiting...");
    AaSysTimeSleep(kClockPollSec, EAaSysTimeScale_Sec);
  }
  CLM_LOG(Info, "BlackBoxData / waitingForNTPTime: NTP time available, write reset reason to blackbox file");
  BlackBoxData::getInstance()->writeResetReasonToBlackbox();
  return nullptr;
}

}  // namespace ps::hwapi::common::climate
