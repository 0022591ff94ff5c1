/// @file
/// The plotting program.
#pragma once

#include <string>

namespace clmctl {

/// Runs gnuplot on @p script, without a shell and without the user's own settings.
/// @return what it wrote to its standard output
/// @throw CommandError (unreachable) when gnuplot is not installed or does not draw; with what it said then
std::string RunGnuplot(const std::string& script);

}  // namespace clmctl
