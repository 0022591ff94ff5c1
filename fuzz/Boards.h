/// @file
/// The boards that services are started on.
#pragma once

#include "ClimateService.h"

#include <cstdint>
#include <memory>

namespace fuzz {

/// Brings the platform back to its first state and starts a service on a board: one with no, two or three fans, with or
/// without a black box.
/// @param choice any number
std::unique_ptr<ps::hwapi::common::climate::ClimateService> StartOnBoard(std::uint8_t choice);

}  // namespace fuzz
