/// @file
/// The tags that announce endpoints.
#pragma once

#include "messages/Status.h"

#include <string>

namespace boardsim {

/// @return "app.hwapi.online.4b6"
std::string OnlineTagName(u32 task);
void SetOnlineTag(u32 task, EStatus status);
/// @return "online", "gone", or "never seen"
std::string OnlineTagText(u32 task);

}  // namespace boardsim
