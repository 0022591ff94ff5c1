/// Exempts what the handlers of requests call beyond the black box.
#include "AaSysCom.h"
#include "AaSysTime.h"
#include "Exempt.h"
#include "HwapiUnit.h"
#include "Service.h"
#include "ddal_error.h"
#include "ddal_fan.h"
#include "ddal_rf.h"
#include "ddal_temp.h"

using ps::hwapi::common::Service;

EXEMPT(void*, AaSysComMsgCreateReply, (u32 id, u32 size, void* request), (id, size, request))
EXEMPT(TAaSysComSicad, AaSysComMsgGetSender, (void* msg), (msg))
EXEMPT(void, AaSysComMsgSetSender, (void* msg, TAaSysComSicad sender), (msg, sender))
EXEMPT(void, AaSysComMsgSend, (void** msg), (msg))
EXEMPT(TBoolean, AaSysComIsHostAndMsgEndianSame, (void* msg), (msg))
EXEMPT(u16, AaSysComEnd16Swap, (u16 value), (value))
EXEMPT(u32, AaSysComEnd32Swap, (u32 value), (value))
EXEMPT(TAaSysComSicad, AaSysComNmapGetSicad, (u8 board, u8 cpu, u16 task), (board, cpu, task))
EXEMPT(i32, AaSysTimermCreate, (TAaSysTimerId * id, u32 first, u32 period, void* msg), (id, first, period, msg))
EXEMPT(i32, AaSysTimerDelete, (TAaSysTimerId id), (id))

EXEMPT(EUnitVersion, ApiGetLocalUnitVersion, (), ())
EXEMPT(char*, ddal_strerror, (int code, char* buffer, u32 size), (code, buffer, size))
EXEMPT(int, ddal_temp_get_curr, (u32 device, int* thousandths), (device, thousandths))
EXEMPT(int, ddal_rf_asic_read_reg, (ddal_rf_asic_id_t asic, u32 reg, u32* value), (asic, reg, value))
EXEMPT(int, ddal_rf_chain_status_get, (ddal_rf_chain_id_t chain, u32* status), (chain, status))
EXEMPT(int, ddal_fan_set_fan_pwm_freq, (ddal_fan_id_t fan, int hertz), (fan, hertz))
EXEMPT(int, ddal_fan_get_fan_pwm_freq, (ddal_fan_id_t fan, int* hertz), (fan, hertz))
EXEMPT(int, ddal_fan_set_pwm, (ddal_fan_id_t fan, u32 control), (fan, control))
EXEMPT(int, ddal_fan_get_pwm, (ddal_fan_id_t fan, int* control), (fan, control))
EXEMPT(int, ddal_fan_get_rpm, (ddal_fan_id_t fan, int* rpm), (fan, rpm))
// void Service::SetUseCommonServiceState(u32)
EXEMPT(void, _ZN2ps5hwapi6common7Service24SetUseCommonServiceStateEj, (Service * service, u32 common),
       (service, common))
