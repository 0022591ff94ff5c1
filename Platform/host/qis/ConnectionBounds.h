/// @file
/// How many connections to other processes a process keeps.
#pragma once

#include <cstddef>
#include <cstdint>

namespace hwapi::qis {

/// Numbers of connections.
struct ConnectionBounds {
  std::size_t all;      ///< from senders of all users; as many again may lead to receivers
  std::size_t perUser;  ///< from senders of one user
};

/// @return bounds under which a process that may have @p descriptors open keeps some for everything else
ConnectionBounds BoundsOf(std::uint64_t descriptors);
/// @return those of this process, by its limit at the first call
const ConnectionBounds& OwnBounds();

}  // namespace hwapi::qis
