/// @file
/// All routes of this process.
#pragma once

#include "Route.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace hwapi::qis {

/// Routes are kept for their connections and for what they know of losses. When there are many, those that were used
/// longest ago are dropped; one that is needed again is made again.
class Routes {
 public:
  static Routes& Own();
  /// @return the route to a task, made when there is none
  std::shared_ptr<Route> To(TAaSysComSicad receiver);

 private:
  struct Kept {
    std::shared_ptr<Route> route;
    std::uint64_t lastUse = 0;
  };

  void DropOldest();

  std::mutex m_mutex;
  std::unordered_map<TAaSysComSicad, Kept> m_routes;
  std::uint64_t m_uses = 0;
};

}  // namespace hwapi::qis
