#include "Routes.h"

namespace hwapi::qis {
namespace {

/// From here on routes to receivers that are gone are dropped; what they knew is only how much was lost.
constexpr std::size_t kManyRoutes = 256;

}  // namespace

Routes& Routes::Own() {
  static auto* const routes = new Routes;  // threads may send after the end of main
  return *routes;
}

std::shared_ptr<Route> Routes::To(TAaSysComSicad receiver) {
  const std::lock_guard lock(m_mutex);
  if (const auto found = m_routes.find(receiver); found != m_routes.end()) {
    return found->second;
  }
  if (m_routes.size() >= kManyRoutes) {
    DropIdle();
  }
  return m_routes.emplace(receiver, std::make_shared<Route>(receiver)).first->second;
}

void Routes::DropIdle() {
  std::erase_if(m_routes,
                [](const auto& entry) { return entry.second.use_count() == 1 && !entry.second->IsConnected(); });
}

}  // namespace hwapi::qis
