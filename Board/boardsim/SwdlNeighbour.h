/// @file
/// The software-download service.
#pragma once

#include "Endpoints.h"
#include "Neighbour.h"

namespace boardsim {

/// Is told when the black-box data is stored, whoever asked for that.
class SwdlNeighbour : public Neighbour {
 public:
  SwdlNeighbour() : Neighbour(HWAPI_SWDL_SERVICE) {}

 private:
  void AddRoutesTo(ps::hwapi::common::Service& service) override;
  void HandleStoreBlackboxDataResp(void* msg);
};

}  // namespace boardsim
