/// @file
/// What must be on the flash, whatever happened while it was changed.
#pragma once

#include "Tree.h"

#include <string>
#include <vector>

namespace flash {

/// What is wrong, a sentence each.
using Faults = std::vector<std::string>;

/// Judges by the flash before a change and after it: every file is the old or the new one, whole; what was there is
/// there, but for a stored copy that made room for a newer one; what was moved is in one of its places.
class Expectation {
 public:
  Expectation(Tree before, Tree after) : m_before(std::move(before)), m_after(std::move(after)) {}

  const Tree& Before() const { return m_before; }
  /// Judges the flash as the change left it. Unfinished files beside the others do not matter yet.
  Faults FaultsOf(const Tree& state) const;
  /// Judges likewise once the change was reported as done: every new file must be there.
  Faults FaultsOfDone(const Tree& state) const;
  /// @return what is there, but neither was there before nor belongs to the change
  Faults StraysOf(const Tree& state) const;

 private:
  bool IsWhole(const std::string& path, const Node& node) const;
  bool MayBeMissing(const std::string& path, const Tree& state) const;

  Tree m_before;
  Tree m_after;
};

}  // namespace flash
