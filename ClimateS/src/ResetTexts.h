/// @file
/// How the history names reset types and categories.
#pragma once

#include "GloTypes.h"
#include "messages/Reset.h"

#include <string>

namespace ps::hwapi::common::climate {

/// Processor number that stands for the FPGA.
inline constexpr u32 kFpgaCpu = 0xD4;

/// @return text of a reset type (reset_extra of SApi2ResetReq); null for one without a text
const char* ResetTypeText(u32 resetType, u32 targetCpu);
/// @return text of a category; null for an unknown one
const char* ResetCategoryText(u32 category);
/// Finds the category with exactly that text; EResetCategory_Unknown is none.
/// @return whether there is one; otherwise @p category is untouched
bool FindResetCategory(const std::string& text, EResetCategory& category);

}  // namespace ps::hwapi::common::climate
