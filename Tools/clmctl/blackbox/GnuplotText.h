/// @file
/// Text and numbers as gnuplot reads them.
#pragma once

#include <string>
#include <string_view>

namespace clmctl {

/// @return a gnuplot string constant that is drawn as @p text, whatever is in it: every byte that could mean something
///         to gnuplot is written by its code, so that text of a file never becomes a command, a macro or a shell's
std::string GnuplotString(std::string_view text);
/// @return a number with so many decimals
std::string GnuplotNumber(double value, int decimals = 3);

}  // namespace clmctl
