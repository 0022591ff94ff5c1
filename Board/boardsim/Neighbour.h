/// @file
/// The other services of the board, as far as the climate service speaks with them.
#pragma once

#include "Service.h"

#include <cstddef>

namespace boardsim {

/// A message id and its handler.
template <typename T>
struct Route {
  u32 id;
  void (T::*handler)(void* msg);
};

/// Lets @p handler answer the messages of its routes, for the life of the service.
template <typename T, std::size_t Count>
void AddRoutes(ps::hwapi::common::Service& service, T* handler, const Route<T> (&routes)[Count]) {
  for (const Route<T>& route : routes) {
    service.AddMsgDelegate(new ps::hwapi::common::MsgMethodDelegate<T>(handler, route.handler, route.id));
  }
}

/// A service of the board that is played. It is served by the thread that takes it into service.
class Neighbour {
 public:
  explicit Neighbour(u32 task) : m_task(task) {}
  Neighbour(const Neighbour&) = delete;
  Neighbour& operator=(const Neighbour&) = delete;
  virtual ~Neighbour() = default;

  /// Registers the task, adds the routes to @p service and announces the endpoint. Harmless when it is online already.
  /// @throw Service::InitFailedException when another process serves the task
  void GoOnline(ps::hwapi::common::Service& service);
  /// Announces that the endpoint has gone and gives the task back. Harmless when it is offline already.
  void GoOffline();
  bool Online() const { return m_online; }

 protected:
  virtual void AddRoutesTo(ps::hwapi::common::Service& service) = 0;
  /// Forgets what ends with the service.
  virtual void Leave() {}

 private:
  const u32 m_task;
  bool m_online = false;
};

}  // namespace boardsim
