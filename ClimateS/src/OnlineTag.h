/// @file
/// The tags that announce endpoints.
#pragma once

#include "messages/Status.h"

#include <string>

namespace ps::hwapi::common::climate {

/// @return name of the tag that announces an endpoint: "app.hwapi.online." and its number in lower-case hexadecimal
std::string OnlineTagName(u32 endpoint);
/// Announces an endpoint as online (EStatus_Initialized) or gone (EStatus_NotInitialized).
void SetOnlineTag(u32 endpoint, EStatus status);

}  // namespace ps::hwapi::common::climate
