/// @file
/// What stands above the rows of a live table.
#pragma once

#include "Screen.h"

#include <string>
#include <vector>

namespace clmctl {

/// @return what a table says about its indications: how many there were, and when the last one came
std::string CountText(unsigned count, const std::string& lastTime);
/// @return the lines above a table's rows: title, status, blank line, header
std::vector<std::string> TableHead(const std::string& title, const std::string& status, const std::string& header,
                                   const Screen& screen);

}  // namespace clmctl
