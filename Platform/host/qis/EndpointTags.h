/// @file
/// Announcements of endpoints that this process has given back: they are no longer its own to make.
#pragma once

#include "AaSysCom.h"

#include <string>

namespace hwapi::qis {

/// Says that this process has served a task and gives it back: to be called with each deregistration, before the name
/// of the task is free for others.
void EndpointGivenBack(TAaSysComSicad task);

/// @param tag name of a tag that this process wants to set
/// @return whether the tag announces an endpoint ("app.hwapi.online." and its task in hexadecimal) which this process
/// gave back and another one serves now. Whoever ends late would announce its successor as gone.
bool AnnouncesAnothersEndpoint(const std::string& tag);

}  // namespace hwapi::qis
