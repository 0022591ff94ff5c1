#include "ResetTexts.h"

namespace ps::hwapi::common::climate {
namespace {

struct ResetTypeRow {
  EHwapiResetServiceResetType type;
  const char* text;
};

constexpr ResetTypeRow kResetTypes[] = {
    {.type = EHwapiResetServiceMCUResetType_CoreReset, .text = "Core reset"},
    {.type = EHwapiResetServiceMCUResetType_ChipReset, .text = "Chip reset"},
    {.type = EHwapiResetServiceMCUResetType_SystemReset, .text = "System reset"},
    {.type = EHwapiResetServiceMCUResetType_ColdReset, .text = "Cold reset"},
    {.type = EHwapiResetServiceMCUResetType_ConfigurationReset, .text = "Configuration reset"},
    {.type = EHwapiResetServiceMCUResetType_SystemModuleReset, .text = "System module reset"},
    {.type = EHwapiResetServiceMCUResetType_WarmReset, .text = "Warm reset"},
    {.type = EHwapiResetServiceMCUResetType_RemoteColdReset, .text = "Remote cold reset"},
    {.type = EHwapiResetServiceMCUResetType_RemoteWarmReset, .text = "Remote warm reset"},
    {.type = EHwapiResetServiceZUNResetType_Soft, .text = "Software reset requested"},
    {.type = EHwapiResetServiceZUNResetType_SoftFailure, .text = "Software failure reset requested"},
    {.type = EHwapiResetServiceZUNResetType_Hard, .text = "Hardware reset requested"},
    {.type = EHwapiResetServiceZUNResetType_HardFailure, .text = "Hardware failure reset requested"},
    {.type = EHwapiResetServiceMCUResetType_SystemModuleDiagnosticReset, .text = "System module diagnostic reset"},
    {.type = EHwapiResetServiceMCUResetType_SystemModuleSiteReset, .text = "System module site reset"},
    {.type = EHwapiResetServiceMCUResetType_SystemModuleBtsReset, .text = "System module BTS reset"},
    {.type = EHwapiResetServiceMCUResetType_RatReset, .text = "Rat reset"},
    {.type = EHwapiResetServiceMCUResetType_SystemModuleSiteResetRapid, .text = "System module site reset rapid"},
    {.type = EHwapiResetServiceMCUResetType_SystemModuleSelfDiagnosticReset,
     .text = "System module self diagnostic reset"},
};

/// A category. The history is later read word by word: a text of two words is not recognised again.
struct CategoryRow {
  EResetCategory category;
  const char* text;
};

constexpr CategoryRow kCategories[] = {
    {.category = EResetCategory_Unknown, .text = "Unknown"},
    {.category = EResetCategory_User, .text = "User"},
    {.category = EResetCategory_Network, .text = "Network"},
    {.category = EResetCategory_SwActivation, .text = "SwActivation"},
    {.category = EResetCategory_Recovery, .text = "Recovery"},
    {.category = EResetCategory_CommissioningChange, .text = "Commissioning change"},
    {.category = EResetCategory_Reconfiguration, .text = "Reconfiguration"},
    {.category = EResetCategory_SelfDiagnostic, .text = "Selfdiagnostic"},
    {.category = EResetCategory_SelfDiagnosticReady, .text = "Selfdiagnosticready"},
};

}  // namespace

const char* ResetTypeText(u32 resetType, u32 targetCpu) {
  if (resetType == EHwapiResetServiceMCUResetType_ColdReset && targetCpu == kFpgaCpu) {
    return "FPGA reconfiguration / Cold reset";
  }
  for (const ResetTypeRow& row : kResetTypes) {
    if (row.type == resetType) return row.text;
  }
  return nullptr;
}

const char* ResetCategoryText(u32 category) {
  for (const CategoryRow& row : kCategories) {
    if (row.category == category) return row.text;
  }
  return nullptr;
}

bool FindResetCategory(const std::string& text, EResetCategory& category) {
  for (const CategoryRow& row : kCategories) {
    if (row.category == EResetCategory_Unknown || text != row.text) continue;
    category = row.category;
    return true;
  }
  return false;
}

}  // namespace ps::hwapi::common::climate
