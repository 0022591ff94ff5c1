/// @file
/// The recording platform as a whole.
#pragma once

#include <string>
#include <vector>

namespace fake {

/// Brings the platform back to its first state: no calls, messages, tags, files, devices or threads; the virtual clock
/// at its start. Service objects and semaphores live on; delegates of the services are freed.
/// Only one thread may use the platform meanwhile.
void Reset();

/// @return what was done against the contract since the last Reset: use of a handle that is no longer the caller's,
///         writing behind a payload or into one of a message that has gone, waiting without end, ... One sentence each.
std::vector<std::string> Violations();
/// Forgets the violations so far.
void ClearViolations();

}  // namespace fake
