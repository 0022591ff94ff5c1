/// @file
/// The file that a picture goes to.
#pragma once

#include <string>

namespace clmctl {

/// Writes a file whole, or leaves what was there.
/// @throw CommandError (usage) when it cannot be written
void WritePicture(const std::string& path, const std::string& content);

}  // namespace clmctl
