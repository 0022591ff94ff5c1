/// @file
/// What a board answered and wrote, by kind, and the comparison with what is on record.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace boardtest {

/// Hashes by the name of a kind.
using Hashes = std::map<std::string, std::uint64_t>;

class ByteRecord {
 public:
  /// Appends to what is known of a kind.
  void Add(const std::string& kind, const std::string& text) { m_texts[kind] += text; }
  const std::string& Of(const std::string& kind) { return m_texts[kind]; }
  /// Fails the test for each kind that differs, and tells its text, which is also left in a file.
  void ExpectOnRecord(const Hashes& expected) const;

 private:
  std::map<std::string, std::string> m_texts;
};

}  // namespace boardtest
