/// @file
/// Payloads of raw messages, as `clmctl send --hex` takes them and prints them.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

namespace boardtest {

inline std::string Hex(const std::vector<unsigned char>& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

/// @return 32-bit fields in this host's byte order
inline std::string Words(std::initializer_list<std::uint32_t> words) {
  std::vector<unsigned char> bytes(words.size() * sizeof(std::uint32_t));
  std::memcpy(bytes.data(), words.begin(), bytes.size());
  return Hex(bytes);
}

/// @return 32-bit fields in the other byte order
inline std::string SwappedWords(std::initializer_list<std::uint32_t> words) {
  std::string text;
  for (const std::uint32_t word : words) {
    std::vector<unsigned char> bytes(sizeof word);
    std::memcpy(bytes.data(), &word, sizeof word);
    text += Hex({bytes.rbegin(), bytes.rend()});
  }
  return text;
}

/// @return the message ids of what `clmctl send` printed, in order
inline std::vector<std::string> MessageIds(const std::string& output) {
  std::vector<std::string> ids;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) ids.push_back(line.substr(0, line.find(' ')));
  return ids;
}

}  // namespace boardtest
