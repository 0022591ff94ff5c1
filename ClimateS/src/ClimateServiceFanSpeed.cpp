/// Fans: the two versions of the speed request, and the indications that follow.
#include "AaSysCom.h"
#include "ClimateService.h"
#include "DdalText.h"
#include "Endpoints.h"
#include "FanMessages.h"
#include "Log.h"
#include "Msg.h"
#include "OwnedMsg.h"
#include "PayloadView.h"
#include "RadIds.h"
#include "messages/MessageIds.h"

#include <cstddef>
#include <cstdint>

namespace ps::hwapi::common::climate {
namespace {

using SpeedReq = Msg<SApiSetFanSpeedReq, API_SET_FAN_SPEED_REQ_MSG>;
using SpeedResp = Msg<SApiSetFanSpeedResp, API_SET_FAN_SPEED_RESP_MSG>;
using Speed2Req = Msg<SApi2SetFanSpeedReq, API2_SET_FAN_SPEED_REQ_MSG>;
using Speed2Resp = Msg<SApi2SetFanSpeedResp, API2_SET_FAN_SPEED_RESP_MSG>;
using PollTimerInd = Msg<SApiFanSpeedPollTimerInd, API_FAN_SPEED_POLL_TIMER_IND_MSG>;
using SpeedInd = Msg<SApiFanSpeedInd, API_FAN_SPEED_IND_MSG>;

constexpr u32 kUsPerSecond = 1000000;
constexpr u32 kFirstDelaySeconds = 20;
constexpr u32 kMinPeriodSeconds = 8;
constexpr u32 kMaxPeriodSeconds = 120;
constexpr u32 kPollSeconds = 60;
constexpr u32 kOnce = 0;
constexpr int kHertzPerKilohertz = 1000;

[[noreturn]] void Fail(const char* description, std::size_t line) {
  throw MsgHandlingException(description, __FILE_NAME__, line);
}

TAaSysComSicad OwnFanEndpoint() { return AaSysComSicadGet(HWAPI_FAN_SERVICE, AaSysComGetOwnNid()); }

/// Converts a request of the other byte order.
FanRequest InHostOrder(void* msg, PayloadView payload, const FanRequestLayout& layout) {
  FanRequest req(payload, layout);
  if (AaSysComIsHostAndMsgEndianSame(msg) == GLO_FALSE) req.SwapBytes();
  return req;
}

/// @return whom the speed indications go to
TAaSysComSicad RecipientOf(const FanRequest& req, TAaSysComSicad sender) {
  const SMessageAddress receiver = req.Receiver();
  if (receiver.task != 0) return AaSysComNmapGetSicad(receiver.board, receiver.cpu, receiver.task);
  CLM_LOG(Info, "Recipient for API_FAN_SPEED_IND_MSG not given, request sender: 0x%x is used instead", sender);
  return sender;
}

using PollTimerMsg = OwnedMsg<PollTimerInd>;

/// @return the poll timer's message, from and to the fan endpoint; without a payload when it cannot be created
PollTimerInd CreatePollTimerMsg() {
  PollTimerInd timerMsg(OwnFanEndpoint(), sizeof(SApiFanSpeedPollTimerInd));
  if (timerMsg.payload != nullptr) timerMsg.SetSender(OwnFanEndpoint());
  return timerMsg;
}

/// Starts a timer that expires once; it takes the message over.
/// @return whether it runs
bool StartTimer(TAaSysTimerId& timer, PollTimerMsg& timerMsg, u32 delaySeconds) {
  if (AaSysTimermCreate(&timer, delaySeconds * kUsPerSecond, kOnce, timerMsg.msg) != 0) return false;
  timerMsg.Release();
  return true;
}

/// Size of an indication in the 16 bits that the platform's message size has.
constexpr int IndicationSize(u32 fans) {
  const int more = static_cast<std::int16_t>(fans - 1);
  return (more * static_cast<int>(sizeof(SHwapiFanUnitInfo)) + static_cast<int>(sizeof(SApiFanSpeedInd))) & 0xFFFF;
}
static_assert(IndicationSize(1) == 24);
static_assert(IndicationSize(3) == 56);

}  // namespace

void ClimateService::HandleApiSetFanSpeedReqMsg(void* msg) {
  const u32 size = BeginFanRequest(msg);
  const SpeedReq reqMsg(msg);
  if (reqMsg.payload == nullptr) Fail("Payload missing from API_SET_FAN_SPEED_REQ_MSG", __LINE__);
  const FanRequest req = InHostOrder(msg, {reqMsg.payload, size}, kSpeedRequest);
  CLM_LOG(Debug, "ApiSetFanSpeedReqMsg message arrived  0x%x %d 0x%x %d 0x%x %d 0x%x %d 0x%x %d", reqMsg.GetSender(),
          static_cast<int>(req.TransactionId()), u32{req.Receiver().task}, static_cast<int>(req.NumOfItems()),
          u32{req.Fan(0)}, static_cast<int>(req.Value(0)), u32{req.Fan(1)}, static_cast<int>(req.Value(1)),
          u32{req.Fan(2)}, static_cast<int>(req.Value(2)));

  bool failed = false;
  const u32 items = req.CheckedNumOfItems(&failed);
  OwnedMsg respMsg(reqMsg.CreateReply<SpeedResp>(FanResponse::SizeFor(kSpeedResponse, items)));
  if (respMsg.payload == nullptr) Fail("Payload missing from API_SET_FAN_SPEED_RESP_MSG", __LINE__);
  FanResponse resp(respMsg.msg, kSpeedResponse);
  failed = SetFanSpeeds(req, items, resp) || failed;

  EStatus outcome = failed ? EStatus_InvalidParam : EStatus_NoError;
  if (StartFanPolling(req, reqMsg.GetSender(), kFirstDelaySeconds)) {
    resp.SetOutcome(outcome, "Fan speed polling started.");
    SetUseCommonServiceState(0);
    SetServiceStateRad(GetServiceStateRad() == ERadHwapiState_ClimateState_Polling_Temp
                           ? ERadHwapiState_ClimateState_Polling_Temp_And_Fan
                           : ERadHwapiState_ClimateState_Polling_Fan);
  } else {
    outcome = EStatus_UndefinedError;
    resp.SetOutcome(outcome, "Couldn't start speed polling!");
  }
  m_blackBoxData->EnableTemperatureTrace();
  CLM_LOG(Debug, "ApiSetFanSpeedReqMsg message handled, status: 0x%x", u32{outcome});
  respMsg.Send();
}

void ClimateService::HandleApi2SetFanSpeedReqMsg(void* msg) {
  const u32 size = BeginFanRequest(msg);
  const Speed2Req reqMsg(msg);
  if (reqMsg.payload == nullptr) Fail("Payload missing from API2_SET_FAN_SPEED_REQ_MSG", __LINE__);
  const FanRequest req = InHostOrder(msg, {reqMsg.payload, size}, kSpeedRequest2);
  CLM_LOG(Debug, "Api2SetFanSpeedReqMsg message arrived  0x%x %d 0x%x %d 0x%x %d 0x%x %d 0x%x %d %d",
          reqMsg.GetSender(), static_cast<int>(req.TransactionId()), u32{req.Receiver().task},
          static_cast<int>(req.TimePeriod()), req.NumOfItems(), static_cast<int>(req.Fan(0)), req.Value(0),
          static_cast<int>(req.Fan(1)), req.Value(1), static_cast<int>(req.Fan(2)), static_cast<int>(req.Value(2)));

  bool failed = false;
  const u32 items = req.CheckedNumOfItems(&failed);
  OwnedMsg respMsg(reqMsg.CreateReply<Speed2Resp>(FanResponse::SizeFor(kSpeedResponse2, items)));
  if (respMsg.payload == nullptr) Fail("Payload missing from API2_SET_FAN_SPEED_RESP_MSG", __LINE__);
  FanResponse resp(respMsg.msg, kSpeedResponse2);
  failed = SetFanSpeeds(req, items, resp) || failed;

  EStatus outcome = failed ? EStatus_InvalidParam : EStatus_NoError;
  const u32 delaySeconds = FirstDelaySeconds(req.TimePeriod(), &outcome);
  resp.SetTimePeriod(delaySeconds);
  if (StartFanPolling(req, reqMsg.GetSender(), delaySeconds)) {
    // Unlike the first version, this one leaves the service state alone.
    resp.SetOutcome(outcome, "Fan speed polling started.");
  } else {
    outcome = EStatus_UndefinedError;
    resp.SetOutcome(outcome, "Couldn't start speed polling!");
  }
  m_blackBoxData->EnableTemperatureTrace();
  CLM_LOG(Debug, "Api2SetFanSpeedReqMsg message handled, status: 0x%x", u32{outcome});
  respMsg.Send();
}

bool ClimateService::SetFanSpeeds(const FanRequest& req, u32 items, FanResponse& resp) {
  bool failed = false;
  resp.SetHead(req.TransactionId(), items);
  for (u32 i = 0; i < items; ++i) {
    const EStatus status = SetFanSpeed(req.Fan(i), req.Value(i));
    resp.SetItem(i, req.Fan(i), req.Value(i), status);
    failed = failed || status != EStatus_NoError;
  }
  return failed;
}

u32 ClimateService::FirstDelaySeconds(u32 timePeriod, EStatus* outcome) {
  if (timePeriod >= kMinPeriodSeconds && timePeriod <= kMaxPeriodSeconds) return timePeriod;
  CLM_LOG(Warning,
          "req->timePeriod %d is not within the acceptable range %d-%d seconds, default time %d seconds is used",
          static_cast<int>(timePeriod), static_cast<int>(kMinPeriodSeconds), static_cast<int>(kMaxPeriodSeconds),
          static_cast<int>(kFirstDelaySeconds));
  *outcome = EStatus_InvalidParam;
  return kFirstDelaySeconds;
}

bool ClimateService::StartFanPolling(const FanRequest& req, TAaSysComSicad sender, u32 delaySeconds) {
  if (m_tmoKelFanSpeedPolling != 0) AaSysTimerDelete(m_tmoKelFanSpeedPolling);
  m_tmoKelFanSpeedPolling = 0;
  PollTimerMsg timerMsg(CreatePollTimerMsg());
  if (timerMsg.payload != nullptr) {
    timerMsg->transactionId = req.TransactionId();
    timerMsg->clientAddr = RecipientOf(req, sender);
    if (StartTimer(m_tmoKelFanSpeedPolling, timerMsg, delaySeconds)) return true;
  }
  CLM_LOG(Warning, "Could not start Fan speed polling!");
  return false;
}

void ClimateService::ContinueFanPolling(const SApiFanSpeedPollTimerInd& record) {
  AaSysTimerDelete(m_tmoKelFanSpeedPolling);
  m_tmoKelFanSpeedPolling = 0;
  PollTimerMsg timerMsg(CreatePollTimerMsg());
  if (timerMsg.payload != nullptr) {
    *timerMsg.payload = record;
    if (StartTimer(m_tmoKelFanSpeedPolling, timerMsg, kPollSeconds)) return;
  }
  CLM_LOG(Warning, "Could not start 60s Fan speed polling timer!");
}

void ClimateService::HandleFanSpeedPollTimerIndMsg(void* msg) {
  const PollTimerInd timerInd(msg);
  if (timerInd.payload == nullptr) Fail("Payload missing from API_FAN_SPEED_POLL_TIMER_IND_MSG", __LINE__);
  const SApiFanSpeedPollTimerInd record = timerInd.Record();
  CLM_LOG(Debug, "ApiFanSpeedPollTimerIndMsg message arrived %d 0x%x 0x%x", static_cast<int>(record.transactionId),
          record.clientAddr, timerInd.GetSender());
  ContinueFanPolling(record);

  OwnedMsg ind(SpeedInd(record.clientAddr, IndicationSize(m_numberOfFans)));
  if (ind.payload == nullptr) Fail("Creation of API_FAN_SPEED_IND_MSG failed", __LINE__);
  PayloadView payload(ind.msg);
  payload.Put(offsetof(SApiFanSpeedInd, transactionId), record.transactionId);
  payload.Put(offsetof(SApiFanSpeedInd, numOfItems), m_numberOfFans);
  for (u32 i = 0; i < m_numberOfFans; ++i) {
    payload.Put(offsetof(SApiFanSpeedInd, unit) + i * sizeof(SHwapiFanUnitInfo), ReadFan(i));
  }
  ind.SendS(OwnFanEndpoint());
}

SHwapiFanUnitInfo ClimateService::ReadFan(u32 index) {
  const FanAddress& fan = m_fanAddr[index];
  const char* const name = m_kelFanNamesStr[index].c_str();
  int rpm = 0;
  if (const int code = ddal_fan_get_rpm(fan.id, &rpm); code != 0) {
    rpm = 0;
    CLM_LOG(Warning, "Failed to read %s RPM. DDAL ecode %i, %s", name, code, DdalText(code).c_str());
    m_blackBoxData->AddFanSpeedError(name);
  } else {
    m_blackBoxData->AddFanSpeed(name, rpm);
  }
  int hertz = 0;
  EFanParam pwmFreq{};
  if (const int code = ddal_fan_get_fan_pwm_freq(fan.id, &hertz); code != 0) {
    CLM_LOG(Warning, "Failed to read %s PWM frequency. DDAL ecode %i, %s", name, code, DdalText(code).c_str());
  } else if (ConvertPwmFreqToEFanParam(hertz, &pwmFreq) != EStatus_NoError) {
    pwmFreq = EFanParam{};
  }
  int control = 0;
  if (const int code = ddal_fan_get_pwm(fan.id, &control); code != 0) {
    control = 0;
    CLM_LOG(Warning, "Failed to read %s PWM control word. DDAL ecode %i, %s", name, code, DdalText(code).c_str());
  }
  CLM_LOG(Info, "%s: rotating speed: %d (RPM), control value: %d, PWM frequency: %dkHz", name, rpm, control,
          hertz / kHertzPerKilohertz);
  return {.fanId = fan.unit, .manId = 0, .speed = static_cast<u32>(rpm), .pwmFreq = pwmFreq};
}

}  // namespace ps::hwapi::common::climate
