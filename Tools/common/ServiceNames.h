/// @file
/// The services of a board as its people know them, and the tags that announce them.
#pragma once

#include "Endpoints.h"

#include <array>
#include <string>
#include <string_view>

namespace commandline {

struct NamedService {
  u32 task;
  std::string_view name;
  bool ofDaemon;  ///< served by the daemon, else by a neighbour of it
};

inline constexpr std::array kServices = {
    NamedService{.task = HWAPI_TEMPERATURE_SERVICE, .name = "temperature", .ofDaemon = true},
    NamedService{.task = HWAPI_FAN_SERVICE, .name = "fan", .ofDaemon = true},
    NamedService{.task = HWAPI_BLACKBOX, .name = "blackbox", .ofDaemon = true},
    NamedService{.task = HWAPI_RESET_SERVICE, .name = "reset", .ofDaemon = false},
    NamedService{.task = HWAPI_AUTODET_SERVICE, .name = "autodet", .ofDaemon = false},
    NamedService{.task = HWAPI_SWDL_SERVICE, .name = "swdl", .ofDaemon = false},
};

/// @return the name of a task's service; "" for a task without one
constexpr std::string_view ServiceName(u32 task) {
  for (const NamedService& service : kServices) {
    if (service.task == task) return service.name;
  }
  return {};
}

/// @return "app.hwapi.online.4b6"
std::string OnlineTagName(u32 task);

}  // namespace commandline
