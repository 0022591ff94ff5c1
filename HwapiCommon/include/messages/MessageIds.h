/// @file
/// Message ids of the climate service and of the services it speaks with.
#pragma once

#include "GloTypes.h"

inline constexpr u32 AACONFIG_TAG_PUBLIC_SET_NOTIF_MSG = 0x08E6;
inline constexpr u32 API_AUTODET_REQ_MSG = 0x0BBC;
inline constexpr u32 API_AUTODET_RESP_MSG = 0x0BBD;
inline constexpr u32 API_AUTODET_UNIT_IND_MSG = 0x0BBE;
inline constexpr u32 API2_RESET_REQ_MSG = 0x1134;
inline constexpr u32 API_GET_BLACKBOX_RESET_INFO_REQ_MSG = 0x1177;
inline constexpr u32 API_GET_BLACKBOX_RESET_INFO_RESP_MSG = 0x1178;
inline constexpr u32 API_BLACKBOX_STORE_FILE_REQ_MSG = 0x1302;
inline constexpr u32 API_BLACKBOX_STORE_FILE_RESP_MSG = 0x1303;
inline constexpr u32 API_TEMPERATURE_POLL_TIMER_IND_MSG = 0x203F;
inline constexpr u32 API_TEMP_MEAS_REQ_MSG = 0x2B29;
inline constexpr u32 API_TEMP_MEAS_RESP_MSG = 0x2B2A;
inline constexpr u32 API_TEMP_MEAS_IND_MSG = 0x2B2B;
inline constexpr u32 API_RESET_RESP_MSG = 0x2B82;
inline constexpr u32 API_OM_GET_RP_RAM_REQ_MSG = 0x2BC5;
inline constexpr u32 API_OM_GET_RP_RAM_RESP_MSG = 0x2BC6;
inline constexpr u32 API_SET_FAN_PWM_FREQ_REQ_MSG = 0x2C13;
inline constexpr u32 API_SET_FAN_PWM_FREQ_RESP_MSG = 0x2C14;
inline constexpr u32 API_SET_FAN_SPEED_REQ_MSG = 0x2C15;
inline constexpr u32 API_SET_FAN_SPEED_RESP_MSG = 0x2C16;
inline constexpr u32 API_FAN_SPEED_IND_MSG = 0x2C17;
inline constexpr u32 API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG = 0x2C61;
inline constexpr u32 API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG = 0x2C62;
inline constexpr u32 API_FAN_SPEED_POLL_TIMER_IND_MSG = 0x2C78;
inline constexpr u32 API2_SET_FAN_SPEED_REQ_MSG = 0x2CF1;
inline constexpr u32 API2_SET_FAN_SPEED_RESP_MSG = 0x2CF2;
inline constexpr u32 API_STORE_BLACKBOX_DATA_REQ_MSG = 0x43A2;
inline constexpr u32 API_STORE_BLACKBOX_DATA_RESP_MSG = 0x43A3;
