/// @file
/// Notices to the program that supervises the service.
#pragma once

#include "GloTypes.h"

namespace hwapi::nub {

/// The supervisor that NOTIFY_SOCKET names, if any. Used by the service thread.
///
/// The few lines of the protocol are written here because its usual library would cost the process more resident
/// memory than the rest of this library together.
class Supervisor {
 public:
  /// @param printFeature log feature of the service
  explicit Supervisor(u32 printFeature) : m_printFeature(printFeature) {}
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;
  ~Supervisor();

  /// The service is up.
  void Ready();
  /// The service ends; told once, and only after Ready.
  void Stopping();
  /// The service is alive.
  void Alive();
  /// @return microseconds between signs of life: half of what the supervisor expects; 0 when it expects none
  static u32 AlivePeriodUs();

 private:
  void Connect();
  void Tell(const char* state);

  const u32 m_printFeature;
  int m_socket = -1;
};

}  // namespace hwapi::nub
