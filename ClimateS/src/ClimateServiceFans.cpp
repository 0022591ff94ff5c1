/// Fans: what the board has, and the requests that set their PWM frequency and speed.
#include "ClimateService.h"

#include "DdalText.h"
#include "FanMessages.h"
#include "FanTables.h"
#include "Log.h"
#include "Msg.h"
#include "OwnedMsg.h"
#include "ddal_board.h"
#include "messages/MessageIds.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace ps::hwapi::common::climate {
namespace {

using PwmFreqReq = Msg<SApiSetFanPwmFreqReq, API_SET_FAN_PWM_FREQ_REQ_MSG>;
using PwmFreqResp = Msg<SApiSetFanPwmFreqResp, API_SET_FAN_PWM_FREQ_RESP_MSG>;

constexpr std::size_t kInfoSize = sizeof(SHwapiOpResp::info);
constexpr int kHertzPerKilohertz = 1000;
/// Outcome of the driver call that stops the operating system's own climate control: this build does not make it.
constexpr unsigned kStopOutcome = 0;

}  // namespace

const FanAddress ClimateService::m_fanAddr[3] = {
    {.unit = EFanUnit_GarFan1, .id = 0},
    {.unit = EFanUnit_GarFan2, .id = 1},
    {.unit = EFanUnit_GarFan3, .id = 2},
};

const FanPwmFrequency ClimateService::m_fanPwmFregRate[3] = {
    {.param = EFanParam_PwmFreq1k, .hertz = 1000},
    {.param = EFanParam_PwmFreq5k, .hertz = 5000},
    {.param = EFanParam_PwmFreq25k, .hertz = 25000},
};

EStatus ClimateService::MapUnitVersionToFans(u32* count) {
  if (std::find(std::begin(kVersionsByCabinet), std::end(kVersionsByCabinet), m_unitVersion) !=
      std::end(kVersionsByCabinet)) {
    return CountFansOfCabinet(count);
  }
  const auto* row = std::find_if(std::begin(kFansOfVersion), std::end(kFansOfVersion),
                                 [this](const FansOfVersion& fans) { return fans.version == m_unitVersion; });
  if (row == std::end(kFansOfVersion)) return EStatus_InvalidParam;
  *count = row->fans;
  return EStatus_NoError;
}

EStatus ClimateService::CountFansOfCabinet(u32* count) {
  int type = 0;
  if (ddal_bp_3hu_backplane_type_get(&type) != 0) {
    CLM_LOG(Error, "Indoor backplane type reading failed!");
    return EStatus_InvalidParam;
  }
  if (type == kBackplane2Hu) {
    CLM_LOG(Info, "Climate Service is running in 2HU indoor cabinet");
    *count = kFansIn2HuCabinet;
  } else {
    CLM_LOG(Info, "Climate Service is running in 3HU indoor cabinet");
    *count = kFansIn3HuCabinet;
  }
  return EStatus_NoError;
}

EStatus ClimateService::GetFanId(EFanUnit unit, ddal_fan_id_t* id) {
  for (const FanAddress& fan : m_fanAddr) {
    if (fan.unit != unit) continue;
    *id = fan.id;
    return EStatus_NoError;
  }
  CLM_LOG(Warning, "Invalid EFanUnit: 0x%x", static_cast<u32>(unit));
  return EStatus_InvalidParam;
}

EStatus ClimateService::GetPwmFreqInHz(EFanParam param, int* hz) {
  for (const FanPwmFrequency& frequency : m_fanPwmFregRate) {
    if (frequency.param != param) continue;
    *hz = frequency.hertz;
    return EStatus_NoError;
  }
  CLM_LOG(Warning, "Invalid EFanParam: %d", static_cast<int>(param));
  return EStatus_InvalidParam;
}

EStatus ClimateService::ConvertPwmFreqToEFanParam(int hz, EFanParam* param) {
  for (const FanPwmFrequency& frequency : m_fanPwmFregRate) {
    if (frequency.hertz != hz) continue;
    *param = frequency.param;
    return EStatus_NoError;
  }
  CLM_LOG(Warning, "Invalid frequency rate %d kHz to be converted", hz / kHertzPerKilohertz);
  return EStatus_InvalidParam;
}

void ClimateService::ClearAndFillInfotext(unsigned char* info, const char* text) {
  std::memset(info, 0, kInfoSize);
  const std::size_t length = std::strlen(text);
  std::memcpy(info, text, length <= kInfoSize ? length : kInfoSize - 1);
}

u32 ClimateService::BeginFanRequest(void* msg) {
  const u32 size = AaSysComMsgGetPayloadSize(msg);
  if (!m_tempManagementKilled && KillTempManagement() == EStatus_NoError) m_tempManagementKilled = true;
  return size;
}

EStatus ClimateService::KillTempManagement() {
  CLM_LOG(Info, "ddal_temp_set_autonomous_climate_ctrl(DDAL_TEMP_AUTONOMOUS_CLIMATE_CTRL_STOP)");
  if (const unsigned status = kStopOutcome; status != 0) {
    CLM_LOG(Warning, "ROQ temperature management not killed, status: 0x%x", status);
    return EStatus_InvalidParam;
  }
  CLM_LOG(Info, "ROQ temperature management succesfully killed");
  return EStatus_NoError;
}

void ClimateService::HandleApiSetFanPwmFreqReqMsg(void* msg) {
  const u32 size = BeginFanRequest(msg);
  const PwmFreqReq reqMsg(msg);
  if (reqMsg.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_SET_FAN_PWM_FREQ_REQ_MSG", __FILE_NAME__, __LINE__);
  }
  const FanRequest req({reqMsg.payload, size}, kPwmFreqRequest);
  CLM_LOG(Debug, "ApiSetFanPwmFreqReqMsg message arrived %d %d 0x%x %d 0x%x %d 0x%x %d",
          static_cast<int>(req.TransactionId()), static_cast<int>(req.NumOfItems()), u32{req.Fan(0)},
          static_cast<int>(req.Value(0)), u32{req.Fan(1)}, static_cast<int>(req.Value(1)), u32{req.Fan(2)},
          static_cast<int>(req.Value(2)));

  bool failed = false;
  const u32 items = req.CheckedNumOfItems(&failed);
  OwnedMsg respMsg(reqMsg.CreateReply<PwmFreqResp>(FanResponse::SizeFor(kPwmFreqResponse, items)));
  if (respMsg.payload == nullptr) {
    throw MsgHandlingException("Payload missing from API_SET_FAN_PWM_FREQ_RESP_MSG", __FILE_NAME__, __LINE__);
  }
  FanResponse resp(respMsg.msg, kPwmFreqResponse);
  resp.SetHead(req.TransactionId(), items);
  for (u32 i = 0; i < items; ++i) {
    const EStatus status = SetPwmFrequency(req.Fan(i), static_cast<EFanParam>(req.Value(i)));
    resp.SetItem(i, req.Fan(i), req.Value(i), status);
    failed = failed || status != EStatus_NoError;
  }
  const EStatus outcome = failed ? EStatus_InvalidParam : EStatus_NoError;
  resp.SetOutcome(outcome, failed ? "Set Fan PWM FREQ failed." : "Set Fan PWM FREQ passed.");
  CLM_LOG(Debug, "ApiSetFanPwmFreqReqMsg message handled, status: 0x%x", u32{outcome});
  respMsg.Send();
}

EStatus ClimateService::SetPwmFrequency(EFanUnit fan, EFanParam param) {
  ddal_fan_id_t id = 0;
  int hertz = 0;
  if (GetFanId(fan, &id) != EStatus_NoError) return EStatus_InvalidParam;
  if (GetPwmFreqInHz(param, &hertz) != EStatus_NoError) return EStatus_InvalidParam;
  const int code = ddal_fan_set_fan_pwm_freq(id, hertz);
  if (code == 0) return EStatus_NoError;
  CLM_LOG(Error, "Setting pwm freq %dkHz for 0x%x failed. DDAL ecode %i, %s", hertz / kHertzPerKilohertz, u32{fan},
          code, DdalText(code).c_str());
  return EStatus_InvalidParam;
}

EStatus ClimateService::SetFanSpeed(EFanUnit fan, u32 speed) {
  ddal_fan_id_t id = 0;
  if (GetFanId(fan, &id) != EStatus_NoError) return EStatus_InvalidParam;
  const int code = ddal_fan_set_pwm(id, speed);
  if (code == 0) return EStatus_NoError;
  CLM_LOG(Error, "Setting speed value %d for 0x%x failed. DDAL ecode %i, %s", static_cast<int>(speed), u32{fan}, code,
          DdalText(code).c_str());
  return EStatus_InvalidParam;
}

}  // namespace ps::hwapi::common::climate
