/// @file
/// The folder into which troubleshooting files are collected.
#pragma once

#include <string>

namespace clmctl {

/// What became of a file that was to be stored.
struct Stored {
  std::string problem;      ///< why it is not there; "" when it is
  long long sizeBytes = 0;  ///< of the stored file
};

/// A folder that takes files under their logical names, each whole or not at all. Nothing is ever written elsewhere: a
/// name is never followed as a path or a link.
class TechlogFolder {
 public:
  /// Opens the folder; makes it, and those above it, when they are missing.
  /// @throw CommandError (usage) when that is not possible
  explicit TechlogFolder(const std::string& path);
  ~TechlogFolder();
  TechlogFolder(const TechlogFolder&) = delete;
  TechlogFolder& operator=(const TechlogFolder&) = delete;

  /// Copies a file, in place of one that is there.
  /// @param name    logical name; no path
  /// @param content descriptor to read from to its end
  Stored Store(const std::string& name, int content) const;

 private:
  int m_fd;
};

}  // namespace clmctl
