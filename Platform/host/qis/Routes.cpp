#include "Routes.h"

#include "ConnectionBounds.h"

#include <algorithm>

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

void Routes::DropOldest() {
  ByUse byUse;
  for (const auto& [receiver, kept] : m_routes) {
    byUse.emplace_back(kept.lastUse, receiver);
  }
  std::ranges::sort(byUse);
  if (!DropThoseThat(&Route::EndIfIdle, byUse)) {
    DropThoseThat(&Route::GiveUp, byUse);
  }
}

/// Drops a quarter at a time, so that a new route costs the same however many there are. One that is in use stays.
/// @return whether any went
bool Routes::DropThoseThat(bool (Route::*end)(), const ByUse& byUse) {
  const std::size_t most = byUse.size() / 4 + 1;
  std::size_t dropped = 0;
  for (auto next = byUse.begin(); next != byUse.end() && dropped < most; ++next) {
    const auto kept = m_routes.find(next->second);
    Route& route = *kept->second.route;
    // The platform's thread for connections holds each route that is connected.
    const long idleHolders = route.IsConnected() ? 2 : 1;
    if (kept->second.route.use_count() == idleHolders && (route.*end)()) {
      m_routes.erase(kept);
      ++dropped;
    }
  }
  return dropped != 0;
}

}  // namespace hwapi::qis
