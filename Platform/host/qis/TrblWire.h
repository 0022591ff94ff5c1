/// @file
/// How a collector asks a process for its troubleshooting files: packets over the process's socket in the folder "trbl"
/// of the run directory. Each request has one answer. Both ends are this library on one host.
#pragma once

#include "AaTrbl.h"

#include <array>

namespace hwapi::qis {

inline constexpr const char* kTrblFolder = "trbl";

enum class TrblOperation : u32 {
  List = 1,    ///< tell the file of an index; the list is that of the time when index 0 is asked for
  Hand = 2,    ///< prepare it and hand it over
  Stored = 3,  ///< it was copied
};

/// A request about one file.
struct TrblRequest {
  TrblOperation operation;
  u32 index;
};

/// What an answer to List says.
enum class TrblListed : u32 {
  File = 1,     ///< there is such a file
  End = 2,      ///< the list is shorter
  Refused = 3,  ///< the peer may not ask; comes without a request
};

/// The answer to List.
struct TrblListAnswer {
  TrblListed listed;
  u32 priority;
  std::array<char, AATRBL_MAX_NAME + 1> name;  ///< zero-terminated, as path is
  std::array<char, AATRBL_MAX_PATH + 1> path;
};

/// The answer to Hand, with a descriptor when the result is EAaTrblCollect_Ok, and to Stored.
struct TrblOutcome {
  i32 result;  ///< EAaTrblCollect
  i32 error;   ///< errno value
};

}  // namespace hwapi::qis
