/// @file
/// What a file is, for people.
#pragma once

#include <sys/stat.h>

#include <string>

namespace hwapi::board {

/// @param mode as stat reports it
/// @return e.g. "a FIFO"
inline std::string KindOfFile(mode_t mode) {
  switch (mode & S_IFMT) {
    case S_IFREG:
      return "a file";
    case S_IFDIR:
      return "a folder";
    case S_IFIFO:
      return "a FIFO";
    case S_IFSOCK:
      return "a socket";
    case S_IFLNK:
      return "a symbolic link";
    default:
      return "a device";
  }
}

}  // namespace hwapi::board
