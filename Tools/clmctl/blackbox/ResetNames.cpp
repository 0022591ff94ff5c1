#include "ResetNames.h"

#include "Arguments.h"
#include "CommandError.h"

#include <strings.h>

namespace clmctl {
namespace {

constexpr ResetName kTypes[] = {
    {.number = EHwapiResetServiceMCUResetType_CoreReset, .name = "CoreReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_ChipReset, .name = "ChipReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_SystemReset, .name = "SystemReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_ColdReset, .name = "ColdReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_ConfigurationReset, .name = "ConfigurationReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_SystemModuleReset, .name = "SystemModuleReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_WarmReset, .name = "WarmReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_RemoteColdReset, .name = "RemoteColdReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_RemoteWarmReset, .name = "RemoteWarmReset", .historyText = {}},
    {.number = EHwapiResetServiceZUNResetType_Soft, .name = "Soft", .historyText = {}},
    {.number = EHwapiResetServiceZUNResetType_SoftFailure, .name = "SoftFailure", .historyText = {}},
    {.number = EHwapiResetServiceZUNResetType_Hard, .name = "Hard", .historyText = {}},
    {.number = EHwapiResetServiceZUNResetType_HardFailure, .name = "HardFailure", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_SystemModuleDiagnosticReset,
     .name = "SystemModuleDiagnosticReset",
     .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_SystemModuleSiteReset,
     .name = "SystemModuleSiteReset",
     .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_SystemModuleBtsReset, .name = "SystemModuleBtsReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_RatReset, .name = "RatReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_UPlaneReset, .name = "UPlaneReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_SystemModuleSiteResetRapid,
     .name = "SystemModuleSiteResetRapid",
     .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_LocalWarmReset, .name = "LocalWarmReset", .historyText = {}},
    {.number = EHwapiResetServiceMCUResetType_SystemModuleSelfDiagnosticReset,
     .name = "SystemModuleSelfDiagnosticReset",
     .historyText = {}},
};

constexpr ResetName kCategories[] = {
    {.number = EResetCategory_Unknown, .name = "Unknown", .historyText = "Unknown"},
    {.number = EResetCategory_User, .name = "User", .historyText = "User"},
    {.number = EResetCategory_Network, .name = "Network", .historyText = "Network"},
    {.number = EResetCategory_SwActivation, .name = "SwActivation", .historyText = "SwActivation"},
    {.number = EResetCategory_Recovery, .name = "Recovery", .historyText = "Recovery"},
    {.number = EResetCategory_CommissioningChange,
     .name = "CommissioningChange",
     .historyText = "Commissioning change"},
    {.number = EResetCategory_Reconfiguration, .name = "Reconfiguration", .historyText = "Reconfiguration"},
    {.number = EResetCategory_SelfDiagnostic, .name = "SelfDiagnostic", .historyText = "Selfdiagnostic"},
    {.number = EResetCategory_SelfDiagnosticReady, .name = "SelfDiagnosticReady", .historyText = "Selfdiagnosticready"},
};

}  // namespace

std::span<const ResetName> ResetTypes() { return kTypes; }
std::span<const ResetName> ResetCategories() { return kCategories; }

u32 ParseResetName(std::span<const ResetName> names, std::string_view text, std::string_view what) {
  const std::string given(text);
  for (const ResetName& row : names) {
    if (strcasecmp(given.c_str(), row.name.data()) == 0) return row.number;
  }
  if (const std::optional<u32> number = commandline::NumberFrom(text)) return *number;
  std::string known;
  for (const ResetName& row : names) known += (known.empty() ? "" : ", ") + std::string(row.name);
  throw CommandError(ExitCode::Usage,
                     "'" + given + "' is no " + std::string(what) + ": give a number or one of " + known);
}

std::string ResetNameText(std::span<const ResetName> names, u32 number) {
  for (const ResetName& row : names) {
    if (row.number == number) return std::string(row.name);
  }
  return std::to_string(number);
}

}  // namespace clmctl
