/// @file
/// Files as the black box uses them.
#pragma once

#include "AaFile.h"
#include "Published.h"

#include <memory>
#include <string>

namespace ps::hwapi::common::climate {

struct CloseFile {
  void operator()(TAaFile* file) const { AaFileClose(file); }
};
/// A file that is read. Files that are written are closed by hand: closing puts what is there in place of the old
/// content, so one that could not be finished is better left open.
using ReadFile = std::unique_ptr<TAaFile, CloseFile>;

inline ReadFile OpenToRead(const std::string& path) { return ReadFile(AaFileOpen(path.c_str(), "r")); }

/// @return whether the file can be opened
inline bool CanBeRead(const std::string& path) { return OpenToRead(path) != nullptr; }

inline void WriteText(const std::string& text, TAaFile* file) {
  AaFileWrite(text.data(), 1, static_cast<u32>(text.size()), file);
}

/// @return the path as it is now
inline std::string PathIn(const Published<std::string>& location) { return *location.Read(); }

/// The log line of an operation that lost its record.
void LogOutOfMemory(const char* operation);

}  // namespace ps::hwapi::common::climate
