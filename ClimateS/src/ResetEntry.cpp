#include "ResetEntry.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace ps::hwapi::common::climate {

ResetEntry::ResetEntry(const std::string& entry) {
  constexpr std::size_t kTimeLength = 25;  // "2016-03-07T14:05:09.042Z ", which has colons of its own
  const bool timed = std::strtol(entry.c_str(), nullptr, 10) != 0;
  const char* const reason = entry.c_str() + (timed ? std::min(kTimeLength, entry.size()) : 0);
  std::sscanf(reason, "%89[^:]:%39s %59s", text, category, extended);
}

}  // namespace ps::hwapi::common::climate
