/// @file
/// What is on the flash at one moment.
#pragma once

#include "Operation.h"

#include <map>
#include <string>

namespace flash {

/// A file or a folder.
struct Node {
  bool isFolder = false;
  mode_t mode = 0;
  std::string content{};
  FileId id = 0;

  /// Whether a reader sees the same; the identity is not seen.
  friend bool operator==(const Node& a, const Node& b) {
    return a.isFolder == b.isFolder && a.mode == b.mode && a.content == b.content;
  }
};

/// Files and folders by absolute path. Symbolic links are no part of it.
using Tree = std::map<std::string, Node>;

/// @return what is below "/ffs"
Tree ReadFlash();
/// Makes that what is below "/ffs", with the links of a board whose first file system runs.
void LayOutFlash(const Tree& tree);

}  // namespace flash
