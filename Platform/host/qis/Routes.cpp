#include "Routes.h"

#include "ConnectionBounds.h"

#include <algorithm>
#include <vector>

namespace hwapi::qis {

Routes& Routes::Own() {
  static auto* const routes = new Routes;  // threads may send after the end of main
  return *routes;
}

std::shared_ptr<Route> Routes::To(TAaSysComSicad receiver) {
  const std::lock_guard lock(m_mutex);
  ++m_uses;
  if (const auto found = m_routes.find(receiver); found != m_routes.end()) {
    found->second.lastUse = m_uses;
    return found->second.route;
  }
  if (m_routes.size() >= OwnBounds().all) {
    DropOldest();
  }
  return m_routes.emplace(receiver, Kept{.route = std::make_shared<Route>(receiver), .lastUse = m_uses})
      .first->second.route;
}

/// Drops a quarter at a time, so that a new route costs the same however many there are. One that is in use stays.
void Routes::DropOldest() {
  std::vector<std::pair<std::uint64_t, TAaSysComSicad>> byUse;
  for (const auto& [receiver, kept] : m_routes) {
    byUse.emplace_back(kept.lastUse, receiver);
  }
  std::ranges::sort(byUse);
  std::size_t left = byUse.size() / 4 + 1;
  for (const auto& [lastUse, receiver] : byUse) {
    const auto kept = m_routes.find(receiver);
    // The platform's thread for connections holds each route that is connected.
    const long idleHolders = kept->second.route->IsConnected() ? 2 : 1;
    if (kept->second.route.use_count() == idleHolders && kept->second.route->EndIfIdle()) {
      m_routes.erase(kept);
      if (--left == 0) {
        return;
      }
    }
  }
}

}  // namespace hwapi::qis
