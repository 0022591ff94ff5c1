/// @file
/// What a power cut can leave on a flash file system.
///
/// Nothing lasts but what was synced: the content and the mode of a file with the file, the names in a folder with the
/// folder. Of everything else each part may or may not have reached the flash, in any order. A rename happens whole or
/// not at all. Content that was not synced may be missing, cut at a block, zeros in one block or from one on, or new up
/// to a block and old behind it.
#pragma once

#include "Operation.h"
#include "Tree.h"

#include <functional>

namespace flash {

/// All states in which a power cut during some operations can leave the flash.
class FlashModel {
 public:
  /// How many states were looked at, and how many of them differ.
  struct Count {
    std::size_t states = 0;
    std::size_t different = 0;
  };
  /// @param atEnd whether all operations had been done
  /// @return whether to go on
  using Visitor = std::function<bool(const Tree& state, bool atEnd)>;

  /// @param before     the flash before the operations, everything on it lasting
  /// @param mostBlocks into how many blocks at most the content of a file is cut
  FlashModel(Tree before, Operations operations, std::size_t mostBlocks = 96)
      : m_before(std::move(before)), m_operations(std::move(operations)), m_mostBlocks(mostBlocks) {}

  /// Visits every different state once, for a power cut before the first operation, between each two, and after the
  /// last one. Of more than 2048 states between two operations so many samples are taken, always the same.
  Count ForEachState(const Visitor& visit) const;

 private:
  struct Loss;
  Loss LossAfter(std::size_t count) const;
  Tree StateWith(const Loss& loss, const std::vector<std::size_t>& choices) const;

  Tree m_before;
  Operations m_operations;
  std::size_t m_mostBlocks;
};

}  // namespace flash
