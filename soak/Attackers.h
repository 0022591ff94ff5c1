/// @file
/// Senders that send as fast as they can.
#pragma once

#include "Child.h"

#include <atomic>
#include <span>
#include <vector>

namespace soak {

/// What a sender floods the daemon with.
struct Flood {
  const char* name;
  /// Sends one message, the @p number th one with random bits.
  void (*send)(unsigned number, unsigned random);
  /// Whether it goes on at full speed while its room is full, which only costs its own processor time.
  bool insists;
};
extern const std::span<const Flood> kFloods;

/// Several processes with the same flood, which end with this object.
class Attackers {
 public:
  Attackers(const Flood& flood, unsigned count, unsigned seed);
  /// Stops them. @return how many did not end well
  unsigned Stop();
  /// @return messages sent so far, the lost ones too
  unsigned long Sent() const { return m_shared->sent; }

 private:
  struct State {
    std::atomic<bool> stop{false};
    std::atomic<unsigned long> sent{0};
  };
  Shared<State> m_shared;
  std::vector<Child> m_processes;
};

}  // namespace soak
