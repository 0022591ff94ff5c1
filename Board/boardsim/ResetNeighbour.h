/// @file
/// The reset service.
#pragma once

#include "Endpoints.h"
#include "Neighbour.h"

namespace boardsim {

/// Accepts subscriptions to reset events.
class ResetNeighbour : public Neighbour {
 public:
  ResetNeighbour() : Neighbour(HWAPI_RESET_SERVICE) {}

 private:
  void AddRoutesTo(ps::hwapi::common::Service& service) override;
  void HandleSubscribeReq(void* msg);
};

}  // namespace boardsim
