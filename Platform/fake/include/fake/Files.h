/// @file
/// The file system: in memory, with "/" only after a Reset. Nothing of this is recorded.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace fake {

/// Puts a file there; missing directories above it are created.
void SetFile(const std::string& path, const std::string& content);
/// @return the content; nothing when there is no such file. What is being written shows after its close only.
std::optional<std::string> FileContent(const std::string& path);
/// Creates a directory and the missing ones above it.
void MakeDir(const std::string& path);
/// Removes a file, or a directory with all that is in it.
void RemoveAll(const std::string& path);
/// @return the paths of all files, in byte order
std::vector<std::string> FilePaths();
/// Refuses (EROFS) or allows again every change below a directory.
void SetReadOnly(const std::string& directory, bool readOnly = true);

/// @return number of files that are open
std::size_t OpenFiles();

}  // namespace fake
