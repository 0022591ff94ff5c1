#include "TrblRegistry.h"

#include <algorithm>
#include <utility>

namespace hwapi::qis {

TrblRegistry& TrblRegistry::Own() {
  static auto* const registry = new TrblRegistry;  // the collector's thread outlives the end of main
  return *registry;
}

bool TrblRegistry::Add(TrblFile file) {
  const std::lock_guard lock(m_mutex);
  const std::string name = file.name;
  const bool added = m_entries.try_emplace(name, Entry{.file = std::move(file), .number = m_registrations}).second;
  if (added) ++m_registrations;
  return added;
}

bool TrblRegistry::Remove(const std::string& name) {
  const std::lock_guard lock(m_mutex);
  return m_entries.erase(name) != 0;
}

std::optional<TrblFile> TrblRegistry::Find(const std::string& name) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_entries.find(name);
  return found != m_entries.end() ? std::optional(found->second.file) : std::nullopt;
}

std::vector<TrblFile> TrblRegistry::Files() {
  std::vector<const Entry*> entries;
  const std::lock_guard lock(m_mutex);
  for (const auto& [name, entry] : m_entries) entries.push_back(&entry);
  std::ranges::sort(entries, {}, &Entry::number);
  std::ranges::stable_sort(entries, std::ranges::greater{}, [](const Entry* entry) { return entry->file.priority; });
  std::vector<TrblFile> files;
  for (const Entry* const entry : entries) files.push_back(entry->file);
  return files;
}

}  // namespace hwapi::qis
