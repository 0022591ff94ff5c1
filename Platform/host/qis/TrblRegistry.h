/// @file
/// The troubleshooting files of this process.
#pragma once

#include "AaTrbl.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace hwapi::qis {

/// A registered file.
struct TrblFile {
  std::string name;
  std::string path;
  EAaTrblFilePriority priority;
  int (*prepare)(const char*, const void*);
  int (*store)(const char*, const void*);
  void (*remove)(const char*, const void*);
  const void* context;
};

/// Adding, removing and finding take the same time however many files there are.
class TrblRegistry {
 public:
  static TrblRegistry& Own();

  /// @return false when the name is taken
  bool Add(TrblFile file);
  /// @return false when the name is unknown
  bool Remove(const std::string& name);
  /// @return the file of that name; nothing when there is none
  std::optional<TrblFile> Find(const std::string& name);
  /// @return the files, highest priority first, of one priority in the order of their registration
  std::vector<TrblFile> Files();

 private:
  struct Entry {
    TrblFile file;
    std::uint64_t number;  ///< how many were registered before it
  };

  std::mutex m_mutex;
  std::unordered_map<std::string, Entry> m_entries;  ///< by name
  std::uint64_t m_registrations = 0;
};

}  // namespace hwapi::qis
