/// @file
/// The endpoints of a board as its people know them.
#pragma once

#include "Endpoints.h"

#include <array>
#include <string_view>

namespace boardsim {

struct KnownEndpoint {
  u32 task;
  std::string_view name;
  bool ofDaemon;  ///< served by the daemon, else by the simulator
};

inline constexpr std::array kKnownEndpoints = {
    KnownEndpoint{.task = HWAPI_TEMPERATURE_SERVICE, .name = "temperature", .ofDaemon = true},
    KnownEndpoint{.task = HWAPI_FAN_SERVICE, .name = "fan", .ofDaemon = true},
    KnownEndpoint{.task = HWAPI_BLACKBOX, .name = "blackbox", .ofDaemon = true},
    KnownEndpoint{.task = HWAPI_RESET_SERVICE, .name = "reset", .ofDaemon = false},
    KnownEndpoint{.task = HWAPI_AUTODET_SERVICE, .name = "autodet", .ofDaemon = false},
    KnownEndpoint{.task = HWAPI_SWDL_SERVICE, .name = "swdl", .ofDaemon = false},
};

}  // namespace boardsim
