/// @file
/// The autodetection service.
#pragma once

#include "Endpoints.h"
#include "Neighbour.h"

namespace boardsim {

/// Accepts requests to be told about plug-in units.
class AutodetNeighbour : public Neighbour {
 public:
  AutodetNeighbour() : Neighbour(HWAPI_AUTODET_SERVICE) {}

 private:
  void AddRoutesTo(ps::hwapi::common::Service& service) override;
  void HandleAutodetReq(void* msg);
};

}  // namespace boardsim
