/// @file
/// All routes of this process.
#pragma once

#include "Route.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace hwapi::qis {

/// Routes are kept for their connections and for what they know of losses. There are never more than OwnBounds().all,
/// but for those that threads are just using: those that were used longest ago are dropped, and one that is needed
/// again is made again. First go those whose receivers owe no acknowledgement. Where all owe one, the oldest go all the
/// same: their receivers have stopped, or never meant to acknowledge anything.
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

  using ByUse = std::vector<std::pair<std::uint64_t, TAaSysComSicad>>;

  void DropOldest();
  bool DropThoseThat(bool (Route::*end)(), const ByUse& byUse);

  std::mutex m_mutex;
  std::unordered_map<TAaSysComSicad, Kept> m_routes;
  std::uint64_t m_uses = 0;
};

}  // namespace hwapi::qis
