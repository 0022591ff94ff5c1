#include "ByteRecord.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <fstream>

namespace boardtest {
namespace {

/// FNV-1a, 64 bits: its offset basis and its prime.
std::uint64_t HashOf(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}

}  // namespace

void ByteRecord::ExpectOnRecord(const Hashes& expected) const {
  for (const auto& [kind, hash] : expected) EXPECT_TRUE(m_texts.contains(kind)) << "nothing of " << kind;
  for (const auto& [kind, text] : m_texts) {
    const auto found = expected.find(kind);
    if (found != expected.end() && found->second == HashOf(text)) continue;
    const std::string file = "same-bytes-of-a-board-" + kind + ".txt";
    std::ofstream(file, std::ios::binary) << text;
    char hash[32];
    std::snprintf(hash, sizeof hash, "0x%016" PRIX64, HashOf(text));
    ADD_FAILURE() << kind << " has the hash " << hash << " and is in " << file
                  << ": compare it with that of another machine, or of the change before. It is\n"
                  << text;
  }
}

}  // namespace boardtest
