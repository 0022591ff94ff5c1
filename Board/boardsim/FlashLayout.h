/// @file
/// What the flash of a board holds before any service writes there.
#pragma once

#include "BoardDescription.h"
#include "StateDirectory.h"

namespace boardsim {

/// Adds to the flash in the state folder what is missing of
/// - the two file systems /ffs/fs1 and /ffs/fs2, each with config/lifedata, logs and the descriptor of its build,
/// - the links /ffs/run to the one that runs and /ffs/stb to the other, as the description's boot data have it,
/// - the alarm and SFP logs that the description's tags name, with a few lines.
/// Builds that the description names take the place of others; what else is there stays. The state folder's lock must
/// be held.
/// @throw SimError (unreachable) when the folder cannot be used
void LayOutFlash(const StateDirectory& state, const hwapi::board::BoardDescription& board);

/// Lets /ffs/run lead to the file system that runs, 1 or 2, and /ffs/stb to the other.
/// @throw as LayOutFlash
void LinkRunningFileSystem(const StateDirectory& state, unsigned running);

/// @return the file system that runs: 1 or 2. The active one when the active image runs, else the other.
unsigned RunningFileSystem(const hwapi::board::Boot& boot);

}  // namespace boardsim
