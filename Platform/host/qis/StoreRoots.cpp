#include "StoreRoots.h"

#include "BoardDescription.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <memory>

namespace hwapi::qis {
namespace {

constexpr const char* kOwnFiles = "/ffs";

struct CFree {
  void operator()(void* memory) const { std::free(memory); }
};

/// @return where an open file is; "" when that is not known
std::string PathOf(int file) {
  std::array<char, PATH_MAX> path;
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t size = ::readlink(link.c_str(), path.data(), path.size());
  return {path.data(), size < 0 ? 0 : static_cast<std::size_t>(size)};
}

/// @return whether a file is in a folder or below it; links to the folder are followed
bool IsBelow(const std::string& path, const std::string& folder) {
  const std::unique_ptr<char, CFree> real(::realpath(folder.c_str(), nullptr));
  std::string begin = real ? real.get() : folder;
  if (!begin.ends_with('/')) {
    begin += '/';
  }
  return path.starts_with(begin);
}

}  // namespace

std::optional<std::string> WhyNotToStore(int file) {
  const board::BoardDescription& board = board::OwnBoard();
  const auto& roots = board.access.store;
  if (roots.empty()) {
    return std::nullopt;
  }
  const std::string path = PathOf(file);
  const auto isBelow = [&](const std::string& folder) { return IsBelow(path, folder); };
  if (isBelow(kOwnFiles) || std::ranges::any_of(roots, isBelow)) {
    return std::nullopt;
  }
  return "it is " + path + ", which is in none of the folders that access.store of " + board.path + " names";
}

}  // namespace hwapi::qis
