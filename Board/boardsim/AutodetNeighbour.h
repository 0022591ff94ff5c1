/// @file
/// The autodetection service.
#pragma once

#include "Endpoints.h"
#include "Neighbour.h"
#include "UnitSlots.h"

#include <cstddef>
#include <vector>

namespace boardsim {

/// Tells its clients about plug-in units.
class AutodetNeighbour : public Neighbour {
 public:
  /// @param slots what it finds when it looks; outlives it
  explicit AutodetNeighbour(const UnitSlots& slots) : Neighbour(HWAPI_AUTODET_SERVICE), m_slots(slots) {}

  /// Tells all clients what is in a slot, and forgets those that are gone. @return how many were told
  u32 TellClients(std::size_t slot);

 private:
  void AddRoutesTo(ps::hwapi::common::Service& service) override;
  /// Who wants to be told must ask again when the service has come back.
  void Leave() override { m_clients.clear(); }

  void HandleAutodetReq(void* msg);
  void Register(TAaSysComSicad client, bool wanted);
  /// @return false when nobody serves the client's address
  bool Tell(TAaSysComSicad client, std::size_t slot) const;

  const UnitSlots& m_slots;
  std::vector<TAaSysComSicad> m_clients;
};

}  // namespace boardsim
