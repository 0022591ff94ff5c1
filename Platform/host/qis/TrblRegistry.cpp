#include "TrblRegistry.h"

#include <algorithm>

namespace hwapi::qis {

TrblRegistry& TrblRegistry::Own() {
  static auto* const registry = new TrblRegistry;  // the collector's thread outlives the end of main
  return *registry;
}

bool TrblRegistry::Add(TrblFile file) {
  const std::lock_guard lock(m_mutex);
  if (std::ranges::find(m_files, file.name, &TrblFile::name) != m_files.end()) {
    return false;
  }
  m_files.push_back(std::move(file));
  return true;
}

bool TrblRegistry::Remove(const std::string& name) {
  const std::lock_guard lock(m_mutex);
  return std::erase_if(m_files, [&](const TrblFile& file) { return file.name == name; }) != 0;
}

std::optional<TrblFile> TrblRegistry::Find(const std::string& name) {
  const std::lock_guard lock(m_mutex);
  const auto found = std::ranges::find(m_files, name, &TrblFile::name);
  return found != m_files.end() ? std::optional(*found) : std::nullopt;
}

std::vector<TrblFile> TrblRegistry::Files() {
  const std::lock_guard lock(m_mutex);
  std::vector<TrblFile> files = m_files;
  std::ranges::stable_sort(files, std::ranges::greater{}, &TrblFile::priority);
  return files;
}

}  // namespace hwapi::qis
