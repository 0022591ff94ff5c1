/// @file
/// Files of the board, as its daemon sees them.
#pragma once

#include "FileDescriptor.h"

#include <string>

namespace clmctl {

/// Opens a file for reading below another root directory: absolute links and ".." stay inside it.
/// @return negative on failure, errno says why
UniqueFd OpenInRoot(int root, const std::string& path);
/// The same without the kernel's help, for kernels that have no such call.
UniqueFd OpenInRootByHand(int root, const std::string& path);

/// Reads a file of the running board. The daemon of a simulated board has a root of its own, which the link "root" in
/// the board's run directory names; without that link the path is taken as it is.
/// @throw CommandError (refused) when there is no such file or it cannot be read
std::string ReadBoardsFile(const std::string& path);
/// Reads a file of this machine.
/// @throw CommandError (usage) when it cannot be read
std::string ReadLocalFile(const std::string& path);

}  // namespace clmctl
