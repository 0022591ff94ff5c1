/// @file
/// The tags that announce endpoints.
#pragma once

#include "ServiceNames.h"
#include "messages/Status.h"

#include <string>

namespace boardsim {

using commandline::OnlineTagName;
void SetOnlineTag(u32 task, EStatus status);
/// @return "online", "gone", or "never seen"
std::string OnlineTagText(u32 task);

}  // namespace boardsim
