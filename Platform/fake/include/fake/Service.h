/// @file
/// The service base class of the tests. Of several Service objects the functions mean the newest one.
///
/// Service::Run handles what is queued until nothing is left; it neither waits nor lets time pass.
#pragma once

#include "GloTypes.h"
#include "fake/Messages.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace fake {

/// Hands a message to the newest delegate of its id as the receive loop does, on the calling thread, and destroys it
/// afterwards. What the handler throws is not caught; the message is destroyed also then.
/// @return whether there was a delegate
bool Dispatch(const Message& message);
/// Dispatches what is queued for the calling thread, one after the other, until nothing is left. A MsgHandlingException
/// that leaves a handler is logged, as is a message without a delegate.
/// @return number of messages taken
unsigned DispatchQueued();
/// @return the ids of the registered delegates, in the order in which they were added
std::vector<u32> RegisteredIds();

/// What a service was constructed with.
struct ServiceArguments {
  std::string name;
  u32 endpoint = 0;
  u32 printFeature = 0;
  u32 serviceState = 0;

  bool operator==(const ServiceArguments&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const ServiceArguments& arguments);
};
/// @return what the service was constructed with; stays as it is over a Reset
ServiceArguments ConstructedWith();

/// Puts the service into a state of its own, which GetServiceStateRad returns. A new service, and each after a Reset,
/// is in the state that all services share: 0.
void SetServiceState(u32 state);
/// @return whether the service said that it is in the state that all services share
bool UsesCommonServiceState();
/// @return whether verbose logging is on
bool IsVerbose();

}  // namespace fake
