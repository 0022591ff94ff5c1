/// @file
/// The folders whose files may be copied, as the board description names them.
#pragma once

#include <optional>
#include <string>

namespace hwapi::qis {

/// Looks where an open file really is, whatever links led to it. Allowed are the folders of access.store and those of
/// the black box, below /ffs; every folder when the description names none.
/// @return why it may not be copied; none when it may
std::optional<std::string> WhyNotToStore(int file);

}  // namespace hwapi::qis
