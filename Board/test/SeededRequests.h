/// @file
/// Requests of every kind, out of a seed: the same ones on every machine.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace boardtest {

/// A raw message for the service.
struct Request {
  std::string to{};  ///< receiving task, as clmctl names it
  unsigned id = 0;
  std::string hex{};  ///< its payload
  bool otherEndian = false;
  unsigned answers = 1;  ///< how many messages come back
};

class SeededRequests {
 public:
  explicit SeededRequests(std::uint32_t seed) : m_random(seed) {}

  /// @return a random number below @p end; any 32 bits when that is 0. No standard distribution: those differ between
  ///         libraries
  std::uint32_t Below(std::uint32_t end);
  /// @return the next request; one in many is cut short, empty, or in the other byte order
  Request Next();
  /// @return an announcement of a reset of this board
  Request Announcement();

 private:
  std::vector<unsigned char> StoredFile();
  std::vector<unsigned char> Reset(bool forThisBoard);
  std::string Text(std::size_t longest);

  std::mt19937 m_random;
};

}  // namespace boardtest
