/// @file
/// Fan control: PWM frequency, speed, and speed indications. Arrays hold numOfItems elements.
#pragma once

#include "AaSysCom.h"
#include "messages/Status.h"

#include <cstddef>

/// Fans by their unit number.
enum EFanUnit : u32 {
  EFanUnit_GarFan4 = 155,
  EFanUnit_GarFan5 = 156,
  EFanUnit_GarFan6 = 157,
  EFanUnit_GarFan7 = 158,
  EFanUnit_GarFan8 = 159,
  EFanUnit_GarFan1 = 201,
  EFanUnit_GarFan2 = 202,
  EFanUnit_GarFan3 = 203
};

/// PWM frequencies; 0 is unknown.
enum EFanParam : u32 { EFanParam_PwmFreq5k = 1, EFanParam_PwmFreq25k = 2, EFanParam_PwmFreq1k = 3 };

/// A task of some node.
struct SMessageAddress {
  u8 board;
  u8 cpu;
  u16 task;  ///< 0: none given
};
static_assert(sizeof(SMessageAddress) == 4);
static_assert(offsetof(SMessageAddress, cpu) == 1);
static_assert(offsetof(SMessageAddress, task) == 2);

/// Outcome of a request as a whole.
struct SHwapiOpResp {
  EStatus status;
  u8 info[32];  ///< text; not zero-terminated when it fills the field
};
static_assert(sizeof(SHwapiOpResp) == 36);
static_assert(offsetof(SHwapiOpResp, info) == 4);

struct SFanPwmFreqParam {
  EFanUnit fanId;
  EFanParam pwmFreq;
};
static_assert(sizeof(SFanPwmFreqParam) == 8);

struct SFanPwmFreqResp {
  SFanPwmFreqParam param;
  EStatus status;
};
static_assert(sizeof(SFanPwmFreqResp) == 12);

struct SFanSpeedParam {
  EFanUnit fanId;
  u32 speed;  ///< PWM control value, per cent
};
static_assert(sizeof(SFanSpeedParam) == 8);

struct SFanSpeedResp {
  SFanSpeedParam param;
  EStatus status;
};
static_assert(sizeof(SFanSpeedResp) == 12);

/// API_SET_FAN_PWM_FREQ_REQ_MSG.
struct SApiSetFanPwmFreqReq {
  u32 transactionId;
  u32 numOfItems;
  SFanPwmFreqParam unit[1];
};
static_assert(sizeof(SApiSetFanPwmFreqReq) == 16);
static_assert(offsetof(SApiSetFanPwmFreqReq, unit) == 8);

/// API_SET_FAN_PWM_FREQ_RESP_MSG.
struct SApiSetFanPwmFreqResp {
  u32 transactionId;
  SHwapiOpResp response;
  u32 numOfItems;
  SFanPwmFreqResp unit[1];
};
static_assert(sizeof(SApiSetFanPwmFreqResp) == 56);
static_assert(offsetof(SApiSetFanPwmFreqResp, response) == 4);
static_assert(offsetof(SApiSetFanPwmFreqResp, numOfItems) == 40);
static_assert(offsetof(SApiSetFanPwmFreqResp, unit) == 44);

/// API_SET_FAN_SPEED_REQ_MSG.
struct SApiSetFanSpeedReq {
  u32 transactionId;
  SMessageAddress receiver;  ///< of the speed indications
  u32 numOfItems;
  SFanSpeedParam unit[1];
};
static_assert(sizeof(SApiSetFanSpeedReq) == 20);
static_assert(offsetof(SApiSetFanSpeedReq, receiver) == 4);
static_assert(offsetof(SApiSetFanSpeedReq, numOfItems) == 8);
static_assert(offsetof(SApiSetFanSpeedReq, unit) == 12);

/// API_SET_FAN_SPEED_RESP_MSG.
struct SApiSetFanSpeedResp {
  u32 transactionId;
  SHwapiOpResp response;
  u32 numOfItems;
  SFanSpeedResp unit[1];
};
static_assert(sizeof(SApiSetFanSpeedResp) == 56);
static_assert(offsetof(SApiSetFanSpeedResp, response) == 4);
static_assert(offsetof(SApiSetFanSpeedResp, numOfItems) == 40);
static_assert(offsetof(SApiSetFanSpeedResp, unit) == 44);

/// API2_SET_FAN_SPEED_REQ_MSG.
struct SApi2SetFanSpeedReq {
  u32 transactionId;
  SMessageAddress receiver;  ///< of the speed indications
  u32 timePeriod;            ///< seconds to the first indication
  u32 numOfItems;
  SFanSpeedParam unit[1];
};
static_assert(sizeof(SApi2SetFanSpeedReq) == 24);
static_assert(offsetof(SApi2SetFanSpeedReq, receiver) == 4);
static_assert(offsetof(SApi2SetFanSpeedReq, timePeriod) == 8);
static_assert(offsetof(SApi2SetFanSpeedReq, numOfItems) == 12);
static_assert(offsetof(SApi2SetFanSpeedReq, unit) == 16);

/// API2_SET_FAN_SPEED_RESP_MSG.
struct SApi2SetFanSpeedResp {
  u32 transactionId;
  SHwapiOpResp response;
  u32 timePeriod;  ///< seconds to the first indication
  u32 numOfItems;
  SFanSpeedResp unit[1];
};
static_assert(sizeof(SApi2SetFanSpeedResp) == 60);
static_assert(offsetof(SApi2SetFanSpeedResp, response) == 4);
static_assert(offsetof(SApi2SetFanSpeedResp, timePeriod) == 40);
static_assert(offsetof(SApi2SetFanSpeedResp, numOfItems) == 44);
static_assert(offsetof(SApi2SetFanSpeedResp, unit) == 48);

/// API_FAN_SPEED_POLL_TIMER_IND_MSG: the service's own timer message.
struct SApiFanSpeedPollTimerInd {
  u32 transactionId;
  TAaSysComSicad clientAddr;  ///< recipient of the speed indications
};
static_assert(sizeof(SApiFanSpeedPollTimerInd) == 8);
static_assert(offsetof(SApiFanSpeedPollTimerInd, clientAddr) == 4);

/// One fan of an indication.
struct SHwapiFanUnitInfo {
  EFanUnit fanId;
  u32 manId;  ///< manufacturer, always 0
  u32 speed;  ///< revolutions a minute
  EFanParam pwmFreq;
};
static_assert(sizeof(SHwapiFanUnitInfo) == 16);
static_assert(offsetof(SHwapiFanUnitInfo, manId) == 4);
static_assert(offsetof(SHwapiFanUnitInfo, speed) == 8);
static_assert(offsetof(SHwapiFanUnitInfo, pwmFreq) == 12);

/// API_FAN_SPEED_IND_MSG.
struct SApiFanSpeedInd {
  u32 transactionId;
  u32 numOfItems;
  SHwapiFanUnitInfo unit[1];
};
static_assert(sizeof(SApiFanSpeedInd) == 24);
static_assert(offsetof(SApiFanSpeedInd, numOfItems) == 4);
static_assert(offsetof(SApiFanSpeedInd, unit) == 8);
