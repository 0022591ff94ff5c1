/// @file
/// Whether there is a gnuplot to test with.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace clmctl {

inline bool GnuplotInstalled() {
  const std::string path = std::getenv("PATH") != nullptr ? std::getenv("PATH") : "";
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find(':', begin), path.size());
    if (access((path.substr(begin, end - begin) + "/gnuplot").c_str(), X_OK) == 0) return true;
    begin = end + 1;
  }
  return false;
}

}  // namespace clmctl
