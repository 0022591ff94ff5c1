/// @file
/// The registry of troubleshooting files.
#pragma once

#include "AaTrbl.h"

#include <string>
#include <vector>

namespace fake {

/// A registered file.
struct TrblFile {
  std::string name;
  std::string path;
  EAaTrblFilePriority priority = EAaTrblFilePriority_Low;
  u32 flags = 0;
  int (*prepare)(const char*, const void*) = nullptr;
  int (*store)(const char*, const void*) = nullptr;
  void (*remove)(const char*, const void*) = nullptr;
  const void* context = nullptr;
};

/// @return the registered files, in order
std::vector<TrblFile> TrblFiles();
/// Calls the prepare call-back of a file as the collector does: with the file's name and its context.
/// @throw std::invalid_argument when the name is unknown
int PrepareTrblFile(const std::string& name);

}  // namespace fake
