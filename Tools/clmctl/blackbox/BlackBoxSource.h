/// @file
/// Which file of a black box is looked at, and its text.
#pragma once

#include "FileLines.h"

#include <string>
#include <vector>

namespace clmctl {

/// A text to look at.
struct BlackBoxSource {
  std::string path;
  std::string text;
};

/// @param file a file of this machine; empty: that of the running board, whose path the public tag @p tag tells
/// @throw CommandError: the file cannot be read (usage); there is no board (unreachable), or it has no such file
///        (refused)
BlackBoxSource ReadBlackBoxFile(const std::string& file, const char* tag);

/// Tells on standard error what is wrong with a file.
void Diagnose(const std::string& path, const std::vector<FileProblem>& problems);
/// @throw CommandError (refused) when there are problems
void RequireNone(const std::string& path, const std::vector<FileProblem>& problems);

inline constexpr const char* kBoardFileTag = "app.hwapi.blackbox.file";
inline constexpr const char* kTraceFileTag = "app.hwapi.blackbox.temperature.file";
inline constexpr const char* kConfigFileTag = "app.hwapi.blackbox.config.file";

}  // namespace clmctl
