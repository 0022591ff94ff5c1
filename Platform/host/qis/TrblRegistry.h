/// @file
/// The troubleshooting files of this process.
#pragma once

#include "AaTrbl.h"

#include <mutex>
#include <optional>
#include <string>
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
  std::mutex m_mutex;
  std::vector<TrblFile> m_files;
};

}  // namespace hwapi::qis
