/// @file
/// All routes of this process.
#pragma once

#include "Route.h"

#include <memory>
#include <mutex>
#include <unordered_map>

namespace hwapi::qis {

class Routes {
 public:
  static Routes& Own();
  /// @return the route to a task, made when there is none
  std::shared_ptr<Route> To(TAaSysComSicad receiver);

 private:
  void DropIdle();

  std::mutex m_mutex;
  std::unordered_map<TAaSysComSicad, std::shared_ptr<Route>> m_routes;
};

}  // namespace hwapi::qis
