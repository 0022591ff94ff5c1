/// @file
/// The announcement of a reset, and the question for the last one.
#pragma once

#include "AaSysCom.h"
#include "messages/ResetEvent.h"
#include "messages/Status.h"

#include <cstddef>

/// What is reset, and how (reset_extra of SApi2ResetReq).
enum EHwapiResetServiceResetType : u32 {
  EHwapiResetServiceMCUResetType_CoreReset = 1,
  EHwapiResetServiceMCUResetType_ChipReset = 2,
  EHwapiResetServiceMCUResetType_SystemReset = 3,
  EHwapiResetServiceMCUResetType_ColdReset = 4,
  EHwapiResetServiceMCUResetType_ConfigurationReset = 5,
  EHwapiResetServiceMCUResetType_SystemModuleReset = 6,
  EHwapiResetServiceMCUResetType_WarmReset = 7,
  EHwapiResetServiceMCUResetType_RemoteColdReset = 8,
  EHwapiResetServiceMCUResetType_RemoteWarmReset = 9,
  EHwapiResetServiceZUNResetType_Soft = 10,
  EHwapiResetServiceZUNResetType_SoftFailure = 11,
  EHwapiResetServiceZUNResetType_Hard = 12,
  EHwapiResetServiceZUNResetType_HardFailure = 13,
  EHwapiResetServiceMCUResetType_SystemModuleDiagnosticReset = 14,
  EHwapiResetServiceMCUResetType_SystemModuleSiteReset = 15,
  EHwapiResetServiceMCUResetType_SystemModuleBtsReset = 16,
  EHwapiResetServiceMCUResetType_RatReset = 17,
  EHwapiResetServiceMCUResetType_UPlaneReset = 18,
  EHwapiResetServiceMCUResetType_SystemModuleSiteResetRapid = 19,
  EHwapiResetServiceMCUResetType_LocalWarmReset = 20,
  EHwapiResetServiceMCUResetType_SystemModuleSelfDiagnosticReset = 21
};

/// Why a reset is asked for.
enum EResetCategory : u32 {
  EResetCategory_Unknown = 0,
  EResetCategory_User = 1,
  EResetCategory_Network = 2,
  EResetCategory_SwActivation = 3,
  EResetCategory_Recovery = 4,
  EResetCategory_CommissioningChange = 5,
  EResetCategory_Reconfiguration = 6,
  EResetCategory_SelfDiagnostic = 7,
  EResetCategory_SelfDiagnosticReady = 8
};

struct SResetReason {
  EResetCategory category;
  char extended_info[60];  ///< text; may lack its terminating zero
};
static_assert(sizeof(SResetReason) == 64);
static_assert(offsetof(SResetReason, extended_info) == 4);

/// API2_RESET_REQ_MSG.
struct SApi2ResetReq {
  u32 target_board;
  u32 target_cpu;
  EHwapiResetServiceResetState reset_state;
  u32 reset_extra;  ///< the reset type
  SResetReason reset_reason;
  u32 target_node;
};
static_assert(sizeof(SApi2ResetReq) == 84);
static_assert(offsetof(SApi2ResetReq, target_cpu) == 4);
static_assert(offsetof(SApi2ResetReq, reset_state) == 8);
static_assert(offsetof(SApi2ResetReq, reset_extra) == 12);
static_assert(offsetof(SApi2ResetReq, reset_reason) == 16);
static_assert(offsetof(SApi2ResetReq, target_node) == 80);

/// API_RESET_RESP_MSG.
struct SApiResetResp {
  u32 success_code;
  u32 target_board;
  u32 target_cpu;
  EHwapiResetServiceResetState reset_state;
  u32 reset_extra;
};
static_assert(sizeof(SApiResetResp) == 20);
static_assert(offsetof(SApiResetResp, target_board) == 4);
static_assert(offsetof(SApiResetResp, target_cpu) == 8);
static_assert(offsetof(SApiResetResp, reset_state) == 12);
static_assert(offsetof(SApiResetResp, reset_extra) == 16);

/// API_GET_BLACKBOX_RESET_INFO_REQ_MSG.
struct SApiGetBlackboxResetInfoReq {
  u32 transactionId;
  u32 target_board;
  u32 target_cpu;
};
static_assert(sizeof(SApiGetBlackboxResetInfoReq) == 12);
static_assert(offsetof(SApiGetBlackboxResetInfoReq, target_board) == 4);
static_assert(offsetof(SApiGetBlackboxResetInfoReq, target_cpu) == 8);

/// API_GET_BLACKBOX_RESET_INFO_RESP_MSG.
struct SApiGetBlackboxResetInfoResp {
  u32 transactionId;
  u32 target_board;
  u32 target_cpu;
  SResetReason reset_reason;
  EStatus status;
};
static_assert(sizeof(SApiGetBlackboxResetInfoResp) == 80);
static_assert(offsetof(SApiGetBlackboxResetInfoResp, target_board) == 4);
static_assert(offsetof(SApiGetBlackboxResetInfoResp, target_cpu) == 8);
static_assert(offsetof(SApiGetBlackboxResetInfoResp, reset_reason) == 12);
static_assert(offsetof(SApiGetBlackboxResetInfoResp, status) == 76);
