/// @file
/// Subscription to the reset service's reset-event notifications.
#pragma once

#include "AaSysCom.h"

#include <cstddef>

enum EHwapiResetServiceResetState : u32 {
  EHwapiResetServiceResetState_OFF = 0,
  EHwapiResetServiceResetState_ON = 1,
  EHwapiResetServiceResetState_Pulse = 2
};

/// When the notification comes.
enum EEventNotifTrigger : u32 { EEventNotifTrigger_Post = 0, EEventNotifTrigger_Pre = 1 };

enum EHwapiResetServiceStatus : u32 { EHwapiResetServiceStatus_Ok = 0 };

/// API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG.
struct SApiResetEventNotifSubscribeReq {
  u32 transactionId;
  TAaSysComSicad clientAddress;  ///< 0: the sender of the request
  EHwapiResetServiceResetState resetState;
  EEventNotifTrigger trigger;
  TBoolean waitResp;  ///< the reset waits for the subscriber's answer
  u32 board;
  u32 cpu;
};
static_assert(sizeof(SApiResetEventNotifSubscribeReq) == 28);
static_assert(offsetof(SApiResetEventNotifSubscribeReq, clientAddress) == 4);
static_assert(offsetof(SApiResetEventNotifSubscribeReq, resetState) == 8);
static_assert(offsetof(SApiResetEventNotifSubscribeReq, trigger) == 12);
static_assert(offsetof(SApiResetEventNotifSubscribeReq, waitResp) == 16);
static_assert(offsetof(SApiResetEventNotifSubscribeReq, board) == 20);
static_assert(offsetof(SApiResetEventNotifSubscribeReq, cpu) == 24);

/// API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG.
struct SApiResetEventNotifSubscribeResp {
  u32 transactionId;
  EHwapiResetServiceStatus status;
};
static_assert(sizeof(SApiResetEventNotifSubscribeResp) == 8);
static_assert(offsetof(SApiResetEventNotifSubscribeResp, status) == 4);
