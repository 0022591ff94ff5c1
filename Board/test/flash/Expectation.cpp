#include "Expectation.h"

#include <algorithm>
#include <cctype>

namespace flash {
namespace {

bool Has(const Tree& tree, const std::string& path, const Node& node) {
  const auto found = tree.find(path);
  return found != tree.end() && found->second == node;
}

/// @return whether a path is that of a stored copy: its name has the time
bool IsStoredCopy(const std::string& path) {
  constexpr std::string_view kPrefix = "blackbox_";
  const std::string name = path.substr(path.rfind('/') + 1);
  return name.starts_with(kPrefix) && name.size() > kPrefix.size() &&
         std::isdigit(static_cast<unsigned char>(name[kPrefix.size()])) != 0;
}

std::ptrdiff_t StoredCopies(const Tree& tree) {
  return std::count_if(tree.begin(), tree.end(), [](const auto& entry) { return IsStoredCopy(entry.first); });
}

}  // namespace

bool Expectation::IsWhole(const std::string& path, const Node& node) const {
  const bool known = m_before.contains(path) || m_after.contains(path);
  return !known || Has(m_before, path, node) || Has(m_after, path, node);
}

bool Expectation::MayBeMissing(const std::string& path, const Tree& state) const {
  if (IsStoredCopy(path)) return true;  // they are counted
  if (m_after.contains(path)) return false;
  const std::string& content = m_before.at(path).content;
  return std::any_of(state.begin(), state.end(), [&](const auto& entry) {
    return m_after.contains(entry.first) && !entry.second.isFolder && entry.second.content == content;
  });
}

Faults Expectation::FaultsOf(const Tree& state) const {
  Faults faults;
  for (const auto& [path, node] : state) {
    if (!IsWhole(path, node)) faults.push_back(path + " is neither the old nor the new one");
  }
  for (const auto& [path, node] : m_before) {
    if (!state.contains(path) && !MayBeMissing(path, state)) faults.push_back(path + " is gone");
  }
  if (StoredCopies(state) < StoredCopies(m_before) - 1) faults.push_back("more than one stored copy is gone");
  return faults;
}

Faults Expectation::FaultsOfDone(const Tree& state) const {
  Faults faults = FaultsOf(state);
  for (const auto& [path, node] : m_after) {
    if (!Has(state, path, node) && !(IsStoredCopy(path) && m_before.contains(path))) {
      faults.push_back(path + " is not the new one");
    }
  }
  return faults;
}

Faults Expectation::StraysOf(const Tree& state) const {
  Faults faults;
  for (const auto& [path, node] : state) {
    if (!m_before.contains(path) && !m_after.contains(path)) faults.push_back(path + " was left behind");
  }
  return faults;
}

}  // namespace flash
